# The tests that another processor may break and an emulator runs well: text, numbers, JSON, records
# and vocabularies. Threads, signals and sensors are not the emulator's strength.

file(GLOB_RECURSE crossTests CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/src/base/*_test.cpp ${PROJECT_SOURCE_DIR}/src/model/*_test.cpp
  ${PROJECT_SOURCE_DIR}/src/state/*_test.cpp ${PROJECT_SOURCE_DIR}/src/network/*_test.cpp)
quorvance_add_tests(quorvance_cross_tests
  LINK quorvance_testing quorvance_static Threads::Threads CURL::libcurl
  SOURCES ${crossTests})
