zrt_add_bench(waterfall zrt_calc zrt_picture)
