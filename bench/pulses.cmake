zrt_add_bench(pulses zrt_calc)
