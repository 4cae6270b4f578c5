# A colleague and the user who change the same files.
add_executable(torture_two_editors torture/two_editors.cpp)
target_compile_definitions(torture_two_editors PRIVATE ZEMBRASTEL_CLI="$<TARGET_FILE:zembrastel-cli>")
target_link_libraries(torture_two_editors PRIVATE zembrastel_test_support CLI11::CLI11)
add_dependencies(torture_two_editors zembrastel-cli)
add_test(NAME "torture: two editors" COMMAND torture_two_editors --seed 1 --rounds 24 --lanes 8)
set_tests_properties("torture: two editors" PROPERTIES TIMEOUT 240)
