zrt_add_test(simulator/simulator unit zrt_simulator)
zrt_add_test(simulator/days unit zrt_analyses zrt_simulator)
add_dependencies(tst_simulator_simulator zrt-simulate)
target_compile_definitions(tst_simulator_simulator PRIVATE
    ZRT_SIMULATE="$<TARGET_FILE:zrt-simulate>")
