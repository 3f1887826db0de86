zrt_add_test(analyses/powerstack unit zrt_analyses)
