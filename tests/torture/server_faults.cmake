# A server that breaks at every step of an upload.
add_executable(torture_server_faults torture/server_faults.cpp)
target_link_libraries(torture_server_faults PRIVATE zembrastel_test_support CLI11::CLI11)
add_test(NAME "torture: server_faults" COMMAND torture_server_faults --seed 1 --short)
set_tests_properties("torture: server_faults" PROPERTIES TIMEOUT 120)
