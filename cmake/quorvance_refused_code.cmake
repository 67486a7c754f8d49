# Code that must not compile, each for the reason that its first line names ("// refused: ..."), and
# beside it code that must.

get_target_property(jsonFolders nlohmann_json::nlohmann_json INTERFACE_INCLUDE_DIRECTORIES)
# Named again, a folder of the compiler's own would lose its place among them.
list(REMOVE_ITEM jsonFolders ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
set(checkSyntax ${CMAKE_CXX_COMPILER} -std=c++20 -fsyntax-only
  -I${PROJECT_SOURCE_DIR} -I${PROJECT_SOURCE_DIR}/src -I${PROJECT_SOURCE_DIR}/include)
foreach(folder IN LISTS jsonFolders)
  list(APPEND checkSyntax -isystem ${folder})
endforeach()

file(GLOB snippets CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/test/refused_code/*.cpp)
foreach(snippet IN LISTS snippets)
  cmake_path(GET snippet STEM name)
  add_test(NAME refused_code.${name} COMMAND ${checkSyntax} ${snippet})
  set_tests_properties(refused_code.${name} PROPERTIES TIMEOUT 120)
  file(STRINGS ${snippet} reason LIMIT_COUNT 1 REGEX "^// refused: ")
  if(reason)
    string(REPLACE "// refused: " "" reason "${reason}")
    # The word of g++, then that of clang++.
    set_tests_properties(refused_code.${name} PROPERTIES
      PASS_REGULAR_EXPRESSION "error: static(_assert failed| assertion failed)[^\n]*${reason}")
  endif()
endforeach()
