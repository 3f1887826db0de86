zrt_add_test(app/shell gui zrt_shell)
zrt_add_test(app/commandline gui zrt_window)
