# What tests/golden/compare runs besides the programs themselves.
add_executable(zrt-golden-actions golden/goldenactions.cpp)
target_link_libraries(zrt-golden-actions PRIVATE zrt_calc zrt_data)
add_executable(zrt-golden-pixels golden/goldenpixels.cpp)
target_link_libraries(zrt-golden-pixels PRIVATE zrt_options Qt5::Gui)
add_executable(zrt-golden-forms golden/goldenforms.cpp ${PROJECT_SOURCE_DIR}/resources/resources.qrc)
set_target_properties(zrt-golden-forms PROPERTIES AUTORCC ON)
target_link_libraries(zrt-golden-forms PRIVATE zrt_window zrt_forms zrt_test_support_gui)

# Hundreds of calls, of which each would be slow with sanitizers; what they do is tested with
# sanitizers elsewhere.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    add_test(NAME golden/sums
        COMMAND ${CMAKE_CURRENT_LIST_DIR}/check ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    set_tests_properties(golden/sums PROPERTIES LABELS golden)
endif()
