# Hostile names against the real curl.
add_executable(torture_command_injection torture/command_injection.cpp)
target_link_libraries(torture_command_injection PRIVATE zembrastel_test_support CLI11::CLI11)
add_test(NAME "torture: command_injection" COMMAND torture_command_injection --seed 1 --rounds 150)
set_tests_properties("torture: command_injection" PROPERTIES TIMEOUT 120)
