zrt_add_test(simulator/simulator unit zrt_simulator)
zrt_add_test(simulator/days unit zrt_analyses zrt_simulator)
