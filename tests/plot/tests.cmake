zrt_add_test(plot/plotgeometry unit zrt_plot)
zrt_add_test(plot/plotpainter unit zrt_plot)
# Text needs a platform, though no window is opened.
set_property(TEST plot/plotpainter PROPERTY ENVIRONMENT QT_QPA_PLATFORM=offscreen)
zrt_add_test(plot/pulsargrafik gui zrt_plot)
zrt_add_test(plot/pulsargrafikinfo gui zrt_plot)
zrt_add_test(plot/plotexport unit zrt_plot)
set_property(TEST plot/plotexport PROPERTY ENVIRONMENT QT_QPA_PLATFORM=offscreen)
