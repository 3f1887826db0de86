zrt_add_test(helpdocs/helppdf gui Qt5::Gui)
add_dependencies(tst_helpdocs_helppdf zrt-helppdf)
target_compile_definitions(tst_helpdocs_helppdf PRIVATE ZRT_HELPPDF="$<TARGET_FILE:zrt-helppdf>")
