zrt_add_bench(days zrt_analyses)
