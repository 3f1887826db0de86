zrt_add_bench(ffa zrt_ffa)
target_sources(bench_ffa PRIVATE ${PROJECT_SOURCE_DIR}/tests/ffa/straightffa.cpp)
target_include_directories(bench_ffa PRIVATE ${PROJECT_SOURCE_DIR}/tests)
