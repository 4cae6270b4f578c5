# A machine that fails under the program.
add_executable(torture_machine_faults torture/machine_faults.cpp)
target_compile_definitions(torture_machine_faults PRIVATE ZEMBRASTEL_CLI="$<TARGET_FILE:zembrastel-cli>")
target_link_libraries(torture_machine_faults PRIVATE zembrastel_test_support CLI11::CLI11)
add_dependencies(torture_machine_faults zembrastel-cli)
# A sanitizer's own library has to be the first that is loaded.
if(NOT ZEMBRASTEL_SANITIZE)
  add_library(shifted_clock MODULE torture/shifted_clock.cpp)
  target_compile_definitions(torture_machine_faults PRIVATE ZEMBRASTEL_SHIFTED_CLOCK="$<TARGET_FILE:shifted_clock>")
  add_dependencies(torture_machine_faults shifted_clock)
endif()
add_test(NAME "torture: machine_faults" COMMAND torture_machine_faults)
set_tests_properties("torture: machine_faults" PROPERTIES TIMEOUT 240)
