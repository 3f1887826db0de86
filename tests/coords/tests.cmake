zrt_add_test(coords/texts unit zrt_coords)
# The astronomers' own routines are an oracle here.
zrt_add_test(coords/coordinates unit zrt_coords PkgConfig::ERFA)
zrt_add_test(coords/raytables unit zrt_coords)
zrt_add_test(coords/skyclock unit zrt_coords)
