zrt_add_test(picture/axislabels unit zrt_picture)
zrt_add_test(picture/plotgeometry unit zrt_picture)
zrt_add_test(picture/resultplot unit zrt_picture)
zrt_add_test(picture/plotpainter unit zrt_picture)
zrt_add_test(picture/plotexport unit zrt_picture Qt5::Svg)
zrt_add_test(picture/rowpicture unit zrt_picture)
zrt_add_test(picture/mappicture unit zrt_picture)
# Text needs a platform, though no window is opened.
set_property(TEST picture/plotpainter picture/plotexport picture/rowpicture picture/mappicture
    picture/resultplot PROPERTY
    ENVIRONMENT QT_QPA_PLATFORM=offscreen)
zrt_add_test(picture/rowmaxima unit zrt_picture)
