# The doubles of the platform, for our tests and for those of a host.

quorvance_sources(testingSources src/platform/testing/*.cpp)
add_library(quorvance_testing STATIC ${testingSources})
if(NOT QUORVANCE_INSTALL)
  set_target_properties(quorvance_testing PROPERTIES EXCLUDE_FROM_ALL ON)
endif()
add_library(Quorvance::testing ALIAS quorvance_testing)
set_target_properties(quorvance_testing PROPERTIES EXPORT_NAME testing)
quorvance_warnings(quorvance_testing)
target_link_libraries(quorvance_testing PUBLIC quorvance_static)

# A host includes them as <quorvance/testing/...>: the same headers under another name, without what
# only our own tests use.
set(testingHeaderFolder ${PROJECT_BINARY_DIR}/testing_headers)
set(testingHeaders fake_crash_trap fake_device fake_motion fake_view manual_executor
  memory_documents memory_store scripted_http test_world)
foreach(name IN LISTS testingHeaders)
  set(header ${PROJECT_SOURCE_DIR}/src/platform/testing/${name}.h)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  file(READ ${header} text)
  string(REPLACE "#include \"platform/testing/" "#include \"quorvance/testing/" text "${text}")
  string(REPLACE "#include \"base/json.h\"\n"
    "#include \"quorvance/json.h\"\n#include <nlohmann/json.hpp>\n" text "${text}")
  file(CONFIGURE OUTPUT ${testingHeaderFolder}/quorvance/testing/${name}.h
    CONTENT "${text}" @ONLY)
endforeach()
target_include_directories(quorvance_testing PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>
  $<BUILD_INTERFACE:${testingHeaderFolder}>)
