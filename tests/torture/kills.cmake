# The program killed at random moments.
add_executable(torture_kills torture/kills.cpp)
target_compile_definitions(torture_kills PRIVATE ZEMBRASTEL_CLI="$<TARGET_FILE:zembrastel-cli>")
target_link_libraries(torture_kills PRIVATE zembrastel_test_support CLI11::CLI11)
add_dependencies(torture_kills zembrastel-cli)
add_test(NAME "torture: kills" COMMAND torture_kills --seed 1 --rounds 12 --lanes 4)
set_tests_properties("torture: kills" PROPERTIES TIMEOUT 240)
