# The program left running for long; too slow a proof for every day.
add_executable(torture_endurance torture/endurance.cpp)
target_compile_definitions(torture_endurance PRIVATE ZEMBRASTEL_CLI="$<TARGET_FILE:zembrastel-cli>")
target_link_libraries(torture_endurance PRIVATE zembrastel_test_support CLI11::CLI11)
add_dependencies(torture_endurance zembrastel-cli)
