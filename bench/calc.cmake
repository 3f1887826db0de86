zrt_add_bench(channelsum zrt_calc)
pkg_check_modules(FFTW REQUIRED IMPORTED_TARGET fftw3)
zrt_add_bench(fourier zrt_calc PkgConfig::FFTW)
zrt_add_bench(approximation zrt_calc)
zrt_add_bench(actions zrt_calc zrt_simulator)
zrt_add_bench(localmedian zrt_calc)

# Not a benchmark: it makes the table in src/calc/profilemaxima.h.
add_executable(bench_profilemaxima profilemaxima.cpp)
target_link_libraries(bench_profilemaxima PRIVATE zrt_calc)
