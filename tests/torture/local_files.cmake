# An editor at work in the local folder while server files are installed in it.
add_executable(torture_local_files torture/local_files.cpp)
target_link_libraries(torture_local_files PRIVATE zembrastel_test_support CLI11::CLI11)
add_test(NAME "torture: local_files" COMMAND torture_local_files --seed 1 --rounds 150)
set_tests_properties("torture: local_files" PROPERTIES TIMEOUT 120)
