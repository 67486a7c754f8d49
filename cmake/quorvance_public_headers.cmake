# Each public header must compile alone, under strict warnings, with nothing but include/ and the
# forward header of the JSON package: one generated source a header, never in a unity build.

file(GLOB_RECURSE publicHeaders CONFIGURE_DEPENDS
  RELATIVE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/include/quorvance/*.h)

set(aloneSources)
foreach(header IN LISTS publicHeaders)
  string(REPLACE "/" "__" name ${header})
  set(aloneSource ${PROJECT_BINARY_DIR}/public_headers_alone/${name}.cpp)
  file(CONFIGURE OUTPUT ${aloneSource} @ONLY CONTENT [[
#include "@header@"
#ifdef INCLUDE_NLOHMANN_JSON_HPP_
#error "@header@ includes the full JSON header; nlohmann/json_fwd.hpp must be enough"
#endif
]])
  list(APPEND aloneSources ${aloneSource})
endforeach()

if(aloneSources)
  add_library(public_headers_alone OBJECT ${aloneSources})
  set_target_properties(public_headers_alone PROPERTIES UNITY_BUILD OFF)
  target_include_directories(public_headers_alone PRIVATE ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(public_headers_alone PRIVATE nlohmann_json::nlohmann_json)
  quorvance_warnings(public_headers_alone)
  if(QUORVANCE_SANITIZE)
    # The plain build has said it already.
    set_target_properties(public_headers_alone PROPERTIES EXCLUDE_FROM_ALL ON)
  endif()
else()
  add_custom_target(public_headers_alone)
endif()
