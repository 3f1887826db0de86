zrt_add_bench(calculator zrt_forms)
zrt_add_bench(dayform zrt_forms)
