zrt_add_test(simulator/simulator unit zrt_simulator)
