zrt_add_test(forms/pulsartexts unit zrt_forms)
zrt_add_test(forms/pulsarform gui zrt_window zrt_forms zrt_test_support_gui)
zrt_add_test(forms/arraysform gui zrt_window zrt_forms zrt_test_support_gui)
