zrt_add_test(batch/program unit zrt_batch zrt_reader)
zrt_add_test(batch/recordings unit zrt_batch zrt_reader)
zrt_add_test(batch/files unit zrt_batch)
zrt_add_test(batch/days unit zrt_batch)
zrt_add_test(batch/period unit zrt_batch)
zrt_add_test(batch/profile unit zrt_batch)
zrt_add_test(batch/pulses unit zrt_batch)
zrt_add_test(batch/sky unit zrt_batch)
foreach(unit program recordings files days period profile pulses sky)
    add_dependencies(tst_batch_${unit} zrt-batch)
    target_compile_definitions(tst_batch_${unit} PRIVATE
        ZRT_BATCH="$<TARGET_FILE:zrt-batch>"
        ZRT_SOURCE="${PROJECT_SOURCE_DIR}")
endforeach()
add_test(NAME batch/windowless
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/windowless $<TARGET_FILE:zrt-batch>)
set_tests_properties(batch/windowless PROPERTIES LABELS unit)
