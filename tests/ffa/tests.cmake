add_library(zrt_test_straightffa STATIC ffa/straightffa.cpp ffa/straightffa.h)
target_include_directories(zrt_test_straightffa PUBLIC ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(zrt_test_straightffa PUBLIC zrt_base zrt_ffa)

zrt_add_test(ffa/periodogram unit zrt_ffa zrt_test_straightffa)
