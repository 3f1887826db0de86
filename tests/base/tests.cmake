zrt_add_test(base/bytetext unit zrt_base)
zrt_add_test(base/typednumber unit zrt_base)
zrt_add_test(base/wholefile unit zrt_base)
zrt_add_test(base/systemmemory unit zrt_base)
