zrt_add_test(calc/channelsum unit zrt_calc)
