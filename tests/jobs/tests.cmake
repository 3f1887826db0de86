zrt_add_test(jobs/worker unit zrt_jobs)
zrt_add_test(jobs/items unit zrt_jobs)
