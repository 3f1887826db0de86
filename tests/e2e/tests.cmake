zrt_add_test(e2e/firstanalysis e2e Qt5::Gui)
add_dependencies(tst_e2e_firstanalysis zrt-analytics-2 zrt-simulate)
target_compile_definitions(tst_e2e_firstanalysis PRIVATE
    ZRT_WORKBENCH="$<TARGET_FILE:zrt-analytics-2>"
    ZRT_SIMULATE="$<TARGET_FILE:zrt-simulate>")
# The toolkit's platform plugins leak, and are known by frames of libraries that keep no frame
# pointers: their allocations must be unwound in full.
set_property(TEST e2e/firstanalysis PROPERTY ENVIRONMENT ASAN_OPTIONS=fast_unwind_on_malloc=0)
