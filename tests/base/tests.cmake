zrt_add_test(base/typednumber unit zrt_base)
