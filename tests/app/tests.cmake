zrt_add_test(app/shell gui zrt_shell)
zrt_add_test(app/commandline gui zrt_window)
target_compile_definitions(tst_app_commandline
    PRIVATE ZRT_ANALYTICS="$<TARGET_FILE:zrt-analytics-2>")
add_dependencies(tst_app_commandline zrt-analytics-2)
