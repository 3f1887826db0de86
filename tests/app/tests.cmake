zrt_add_test(app/shell gui zrt_shell)
