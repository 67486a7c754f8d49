# Data files that are built into the program, as functions of a header that return them.

# embedded_literal(<variable> <file>)
#
# Sets the variable to an expression of type std::string with the file's bytes. Edited files are noticed by the next
# build. Literals are kept below the length that every compiler takes; files are ASCII, since one compiler warns where
# a piece splits a character.
function(embedded_literal variable file)
  set(chunkLength 8000)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} text)
  if(text MATCHES "[^\t\n\r -~]")
    message(FATAL_ERROR "${file} holds characters beyond ASCII")
  endif()
  string(LENGTH "${text}" length)
  set(literal "std::string()")
  set(position 0)
  while(position LESS length)
    string(SUBSTRING "${text}" ${position} ${chunkLength} chunk)
    string(APPEND literal "\n      .append(R\"~~~(${chunk})~~~\")")
    math(EXPR position "${position} + ${chunkLength}")
  endwhile()
  set(${variable} "${literal}" PARENT_SCOPE)
endfunction()

# embed_files(<output> <header> <namespace> <function>=<file>...)
#
# Writes a source that defines a function of the header for each file, returning its text.
function(embed_files output header namespace)
  set(source "// Generated from the data files.\n#include \"${header}\"\n\n#include <string>\n\n")
  string(APPEND source "namespace ${namespace} {\n\n")
  foreach(pair IN LISTS ARGN)
    string(REGEX MATCH "^([^=]+)=(.+)$" ignored "${pair}")
    set(name ${CMAKE_MATCH_1})
    get_filename_component(file ${CMAKE_MATCH_2} ABSOLUTE)
    embedded_literal(literal ${file})
    string(APPEND source "std::string_view ${name}() {\n")
    string(APPEND source "  static const std::string kText = ${literal};\n  return kText;\n}\n\n")
  endforeach()
  string(APPEND source "}  // namespace ${namespace}\n")
  file(CONFIGURE OUTPUT ${output} CONTENT "@source@" @ONLY)
endfunction()

# embed_folder(<output> <header> <namespace> <function> <folder> <file>...)
#
# Writes a source that defines the function of the header, which returns every file with its path below the folder.
function(embed_folder output header namespace name folder)
  set(source "// Generated from the data files.\n#include \"${header}\"\n\n#include <string>\n\n")
  string(APPEND source "namespace ${namespace} {\n\n")
  set(entries "")
  set(index 0)
  foreach(file IN LISTS ARGN)
    embedded_literal(literal ${file})
    cmake_path(RELATIVE_PATH file BASE_DIRECTORY ${folder} OUTPUT_VARIABLE path)
    string(APPEND source "static std::string makeFile${index}() {\n  return ${literal};\n}\n\n")
    string(APPEND entries "      {\"${path}\", makeFile${index}()},\n")
    math(EXPR index "${index} + 1")
  endforeach()
  string(APPEND source "const std::vector<EmbeddedFile>& ${name}() {\n")
  string(APPEND source "  static const std::vector<EmbeddedFile> kFiles = {\n${entries}  };\n")
  string(APPEND source "  return kFiles;\n}\n\n}  // namespace ${namespace}\n")
  file(CONFIGURE OUTPUT ${output} CONTENT "@source@" @ONLY)
endfunction()
