zrt_add_bench(channelsum zrt_calc)
