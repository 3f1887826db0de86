zrt_add_test(calc/channelsum unit zrt_calc)
zrt_add_test(calc/approximation unit zrt_calc)
