# A machine that fails under the program.
add_executable(torture_machine_faults torture/machine_faults.cpp)
target_compile_definitions(torture_machine_faults PRIVATE ZEMBRASTEL_CLI="$<TARGET_FILE:zembrastel-cli>")
target_link_libraries(torture_machine_faults PRIVATE zembrastel_test_support CLI11::CLI11)
add_dependencies(torture_machine_faults zembrastel-cli)
add_test(NAME "torture: machine_faults" COMMAND torture_machine_faults)
set_tests_properties("torture: machine_faults" PROPERTIES TIMEOUT 240)
