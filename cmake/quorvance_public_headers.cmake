# Each public header must compile alone, under strict warnings, with nothing but include/ and the
# JSON package: one generated source a header, never in a unity build. Of that package the forward
# header is enough, but for classes that are compiled into the host, and what includes them.
set(wholeJsonHeaders
  account_check_points add_payment_method check_point check_point_parser inspection
  platform/face_detection platform/linux_platform platform/platform platform/user_data
  qt/qt qt/qt_platform qt/qt_verdict quorvance quorvance_manager transaction)

file(GLOB_RECURSE publicHeaders CONFIGURE_DEPENDS
  RELATIVE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/include/quorvance/*.h)

set(aloneSources)
foreach(header IN LISTS publicHeaders)
  string(REPLACE "/" "__" name ${header})
  set(aloneSource ${PROJECT_BINARY_DIR}/public_headers_alone/${name}.cpp)
  string(REGEX REPLACE "^quorvance/(.*)\\.h$" "\\1" shortName ${header})
  set(mayIncludeWholeJson 0)
  if(shortName IN_LIST wholeJsonHeaders)
    set(mayIncludeWholeJson 1)
  endif()
  file(CONFIGURE OUTPUT ${aloneSource} @ONLY CONTENT [[
#include "@header@"
#if defined(INCLUDE_NLOHMANN_JSON_HPP_) && !@mayIncludeWholeJson@
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
