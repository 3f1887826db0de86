zrt_add_bench(reader zrt_reader)
