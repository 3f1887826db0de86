# The astronomers' own routines, as an oracle; without them that comparison is skipped.
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
    pkg_check_modules(ERFA QUIET IMPORTED_TARGET erfa)
endif()

zrt_add_test(coords/texts unit zrt_coords)
zrt_add_test(coords/coordinates unit zrt_coords)
zrt_add_test(coords/raytables unit zrt_coords)
if(TARGET PkgConfig::ERFA)
    target_link_libraries(tst_coords_coordinates PRIVATE PkgConfig::ERFA)
    target_compile_definitions(tst_coords_coordinates PRIVATE ZRT_HAS_ERFA)
endif()
