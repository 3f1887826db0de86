zrt_add_test(analyses/powerstack unit zrt_analyses)
zrt_add_test(analyses/daylist unit zrt_analyses)
zrt_add_test(analyses/dayseries unit zrt_analyses)
