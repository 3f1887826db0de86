zrt_add_test(data/passport unit zrt_data)
zrt_add_test(data/reader gui zrt_reader zrt_test_support_gui)
zrt_add_test(data/resulttotext unit zrt_data)
zrt_add_test(data/textarrays unit zrt_data)
