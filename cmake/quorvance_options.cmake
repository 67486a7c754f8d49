# The switches of the build. Everything that only a developer of the library wants is off when the
# project is a part of another build.

option(QUORVANCE_WERROR "Warnings of the project's own code are errors" ${PROJECT_IS_TOP_LEVEL})
option(QUORVANCE_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(QUORVANCE_BUILD_APPS "Build the risk server and the demo host" ${PROJECT_IS_TOP_LEVEL})
option(QUORVANCE_INSTALL "Have install rules" ${PROJECT_IS_TOP_LEVEL})
option(QUORVANCE_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(QUORVANCE_BUILD_FUZZERS "Build the fuzzers (clang only)" OFF)

if(PROJECT_IS_TOP_LEVEL)
  set(whereQtIsFound AUTO)
else()
  set(whereQtIsFound OFF)
endif()
set(QUORVANCE_QT ${whereQtIsFound} CACHE STRING
    "Build Quorvance::qt: AUTO (where Qt 6.4 is found), ON or OFF")
set_property(CACHE QUORVANCE_QT PROPERTY STRINGS AUTO ON OFF)

set(QUORVANCE_SANITIZE "" CACHE STRING
    "Sanitizers for everything: empty, \"address,undefined\" or \"thread\"")
set_property(CACHE QUORVANCE_SANITIZE PROPERTY STRINGS "" "address,undefined" "thread")

if(QUORVANCE_SANITIZE)
  # Hosts of an instrumented library must be instrumented too, hence for the whole directory tree.
  add_compile_options(-fsanitize=${QUORVANCE_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QUORVANCE_SANITIZE})
  if(QUORVANCE_SANITIZE MATCHES "undefined")
    # The check of virtual tables opens a pipe each time: without a free descriptor it would stop
    # what is right.
    add_compile_options(-fno-sanitize-recover=all -fno-sanitize=vptr)
    add_link_options(-fno-sanitize-recover=all)
  endif()
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()
