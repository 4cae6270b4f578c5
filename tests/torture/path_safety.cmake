# Names that point out of the local folder, and links that are put into it.
add_executable(torture_path_safety torture/path_safety.cpp)
target_link_libraries(torture_path_safety PRIVATE zembrastel_test_support CLI11::CLI11)
add_test(NAME "torture: path_safety" COMMAND torture_path_safety --seed 1 --seconds 2)
set_tests_properties("torture: path_safety" PROPERTIES TIMEOUT 180)
