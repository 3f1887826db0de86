zrt_add_test(picture/plotgeometry unit zrt_picture)
# Text needs a platform, though no window is opened.
foreach(unit plotpainter plotexport)
    zrt_add_test(picture/${unit} unit zrt_picture)
    set_property(TEST picture/${unit} PROPERTY ENVIRONMENT QT_QPA_PLATFORM=offscreen)
endforeach()
