zrt_add_bench(numberfile zrt_calc)
