# The model asked for everything at any moment.
add_executable(torture_threads torture/threads.cpp)
target_link_libraries(torture_threads PRIVATE zembrastel_test_support CLI11::CLI11)
add_test(NAME "torture: threads" COMMAND torture_threads --seed 1 --seconds 12)
set_tests_properties("torture: threads" PROPERTIES TIMEOUT 120)
