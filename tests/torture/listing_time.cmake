# The cost of a listing, by its size. A sanitizer's own cost would be measured too.
if(NOT ZEMBRASTEL_SANITIZE)
  add_executable(torture_listing_time torture/listing_time.cpp)
  target_link_libraries(torture_listing_time PRIVATE zembrastel_transport CLI11::CLI11)
  add_test(NAME "torture: listing_time" COMMAND torture_listing_time --megabytes 10)
  set_tests_properties("torture: listing_time" PROPERTIES TIMEOUT 120)
endif()
