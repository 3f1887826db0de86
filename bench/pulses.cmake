zrt_add_bench(pulses zrt_calc)

# Not a benchmark: what it tells is in docs/cluster.md.
add_executable(bench_pulsetruth pulsetruth.cpp)
target_link_libraries(bench_pulsetruth PRIVATE zrt_analyses zrt_simulator)
