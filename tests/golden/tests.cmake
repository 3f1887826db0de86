# Hundreds of calls, of which each would be slow with sanitizers; what they do is tested with
# sanitizers elsewhere.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    add_test(NAME golden/sums
        COMMAND ${CMAKE_CURRENT_LIST_DIR}/check ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    set_tests_properties(golden/sums PROPERTIES LABELS golden)
endif()
