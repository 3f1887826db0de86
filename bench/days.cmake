zrt_add_bench(days zrt_analyses)
zrt_add_bench(profiles zrt_analyses)
zrt_add_bench(survey zrt_analyses zrt_simulator)
