zrt_add_bench(calculator zrt_forms)
