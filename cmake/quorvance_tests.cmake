# All tests: of the subsystems, of what spans them, of the public headers and of the tools.

include(quorvance_public_headers)

file(GLOB_RECURSE unitTests CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*_test.cpp)
quorvance_add_tests(quorvance_tests
  LINK quorvance_testing quorvance_static Threads::Threads CURL::libcurl
  SOURCES ${unitTests})

# No test depends on where it is started.
if(TARGET quorvance_tests)
  set(busMockSource ${PROJECT_BINARY_DIR}/bus_mock_program.cpp)
  file(CONFIGURE OUTPUT ${busMockSource} @ONLY CONTENT [[
namespace quorvance {

extern const char* const kBusMock;
const char* const kBusMock = "@PROJECT_SOURCE_DIR@/test/bus/bus_mock.py";

}  // namespace quorvance
]])
  target_sources(quorvance_tests PRIVATE ${busMockSource})
endif()

file(GLOB_RECURSE integrationTests CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/test/*_test.cpp)
list(FILTER integrationTests EXCLUDE REGEX "/test/qt/")
if(QUORVANCE_SANITIZE)
  list(FILTER integrationTests EXCLUDE REGEX "/test/memory/") # a sanitizer brings its own allocator
endif()
if(integrationTests AND TARGET risk_server_lib)
  quorvance_add_tests(quorvance_integration_tests
    LINK quorvance_testing quorvance_static risk_server_lib
    SOURCES ${integrationTests})
elseif(integrationTests)
  message(STATUS "Tests that span subsystems are left out: they need the apps")
endif()
# For tests that are not GoogleTest cases: packaging, programs that must die.
if(EXISTS ${PROJECT_SOURCE_DIR}/test/CMakeLists.txt)
  add_subdirectory(${PROJECT_SOURCE_DIR}/test ${PROJECT_BINARY_DIR}/test)
endif()

if(QUORVANCE_HAS_QT AND TARGET risk_server_lib)
  add_subdirectory(${PROJECT_SOURCE_DIR}/test/qt ${PROJECT_BINARY_DIR}/test_qt)
endif()

# What only reads the sources is the same in every build.
if(NOT QUORVANCE_SANITIZE)
  include(quorvance_refused_code)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  foreach(check check_includes check_words)
    add_test(NAME tools.${check}
      COMMAND Python3::Interpreter -B ${PROJECT_SOURCE_DIR}/tools/${check}.py)
  endforeach()
  add_test(NAME tools.make_openapi
    COMMAND Python3::Interpreter -B ${PROJECT_SOURCE_DIR}/tools/make_openapi.py --check)
  foreach(tool check_includes check_words compare_logs dev report_sizes test_summary)
    add_test(NAME tools.${tool}_test
      COMMAND Python3::Interpreter -B ${PROJECT_SOURCE_DIR}/tools/${tool}_test.py)
  endforeach()
endif()
