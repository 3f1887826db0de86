zrt_add_test(results/formats unit zrt_results zrt_data)
