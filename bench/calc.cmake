zrt_add_bench(channelsum zrt_calc)
pkg_check_modules(FFTW REQUIRED IMPORTED_TARGET fftw3)
zrt_add_bench(fourier zrt_calc PkgConfig::FFTW)
zrt_add_bench(approximation zrt_calc)
