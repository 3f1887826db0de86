zrt_add_bench(channelsum zrt_calc)
zrt_add_bench(approximation zrt_calc)
