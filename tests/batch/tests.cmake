zrt_add_test(batch/formats unit zrt_batch)
zrt_add_test(batch/program unit zrt_batch zrt_reader)
add_dependencies(tst_batch_program zrt-batch)
target_compile_definitions(tst_batch_program PRIVATE
    ZRT_BATCH="$<TARGET_FILE:zrt-batch>"
    ZRT_SOURCE="${PROJECT_SOURCE_DIR}")
zrt_add_test(batch/recordings unit zrt_batch zrt_reader)
add_dependencies(tst_batch_recordings zrt-batch)
target_compile_definitions(tst_batch_recordings PRIVATE ZRT_BATCH="$<TARGET_FILE:zrt-batch>")
