zrt_add_test(plot/pulsargrafik gui zrt_plot)
zrt_add_test(plot/pulsargrafikinfo gui zrt_plot)
