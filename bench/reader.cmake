zrt_add_bench(reader zrt_reader)
zrt_add_bench(recordingset zrt_data)
