# Functions to add targets with.

# quorvance_warnings(<target>)
#
# The warnings that the project's own code is free of, with g++ 12 and clang 14. Never seen by who
# links the target. Called once a target has its sources, it also groups them for a unity build.
function(quorvance_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic
    -Wshadow
    -Wconversion -Wsign-conversion
    -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast
    -Wimplicit-fallthrough)
  # With less optimisation, and among the sanitizers' own checks, the compiler sees null on paths
  # that do not exist.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT QUORVANCE_SANITIZE)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Wnull-dereference>)
  endif()
  # The compiler takes a source that a unity build includes for a header.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_UNITY_BUILD)
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
  endif()
  if(QUORVANCE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  quorvance_unity_groups(${target})
endfunction()

# quorvance_unity_groups(<target>)
#
# A unity build compiles the sources of one folder together, twelve at most; those of small folders
# beside each other share a group, since each group reads the same large headers. Names without
# linkage must differ within a group. Sources that are added to the target later are compiled one by
# one.
function(quorvance_unity_groups target)
  set(mostSources 12)
  set(smallFolder 6)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  set(folders)
  foreach(source IN LISTS sources)
    get_filename_component(folder ${source} ABSOLUTE)
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${folder})
    get_filename_component(folder "${folder}" DIRECTORY)
    list(APPEND folders "${folder}")
    list(APPEND sources_${folder} ${source})
  endforeach()
  list(REMOVE_DUPLICATES folders)
  foreach(folder IN LISTS folders)
    list(LENGTH sources_${folder} size)
    set(name "${folder}")
    if(size LESS_EQUAL smallFolder)
      get_filename_component(parent "${folder}" DIRECTORY)
      set(name "${parent}_rooms")
    endif()
    string(MAKE_C_IDENTIFIER "${name}" name)
    foreach(source IN LISTS sources_${folder})
      if(NOT DEFINED count_${name})
        set(count_${name} 0)
      endif()
      math(EXPR group "${count_${name}} / ${mostSources}")
      math(EXPR count_${name} "${count_${name}} + 1")
      set_property(SOURCE ${source} PROPERTY UNITY_GROUP ${name}_${group})
    endforeach()
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()

# quorvance_sources(<variable> <glob>...)
#
# Sets the variable to the sources under the globs that belong into a library: no tests and no
# benchmarks. New files are noticed by the next build.
function(quorvance_sources variable)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${ARGN})
  list(FILTER sources EXCLUDE REGEX "_(test|benchmark)\\.cpp$")
  set(${variable} ${sources} PARENT_SCOPE)
endfunction()

# quorvance_add_tests(<name> LINK <library>... SOURCES <file>...)
#
# An executable of GoogleTest cases, each a test of ctest under its own name. Nothing is added when
# there is no source, or when tests are not built.
function(quorvance_add_tests name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK;SOURCES")
  if(NOT arg_SOURCES OR NOT QUORVANCE_BUILD_TESTS)
    return()
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINK} GTest::gmock_main)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
  quorvance_warnings(${name})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
