# Decisions on reviews at the wrong moment.
add_executable(torture_decisions torture/decisions.cpp)
target_link_libraries(torture_decisions PRIVATE zembrastel_test_support CLI11::CLI11)
add_test(NAME "torture: decisions" COMMAND torture_decisions --seed 1 --seconds 60)
set_tests_properties("torture: decisions" PROPERTIES TIMEOUT 240)
