# What is installed, in the components that the Debian packages are made of: "library" to run,
# "dev" to build with (headers, both libraries, doubles, find_package, pkg-config), and "tools";
# "qt_library" and "qt_dev" where Quorvance::qt is built.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/Quorvance)
set(documentFolder ${CMAKE_INSTALL_DATAROOTDIR}/doc)

# --- headers and libraries ---------------------------------------------------------------------

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/quorvance ${testingHeaderFolder}/quorvance
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.h"
  PATTERN "quorvance/qt" EXCLUDE)

# Export sets of their own: who links the shared library needs no libcurl to build with.
install(TARGETS quorvance EXPORT QuorvanceShared
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS quorvance_static EXPORT QuorvanceStatic
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS quorvance_testing EXPORT QuorvanceTesting
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(set Shared Static Testing)
  install(EXPORT Quorvance${set} NAMESPACE Quorvance:: DESTINATION ${packageFolder}
    FILE Quorvance${set}Targets.cmake COMPONENT dev)
endforeach()

if(QUORVANCE_HAS_QT)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/quorvance/qt
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quorvance COMPONENT qt_dev)
  install(TARGETS quorvance_qt EXPORT QuorvanceQt
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT qt_library NAMELINK_COMPONENT qt_dev
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT QuorvanceQt NAMESPACE Quorvance:: DESTINATION ${packageFolder}
    FILE QuorvanceQtTargets.cmake COMPONENT qt_dev)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/qt.md
    DESTINATION ${documentFolder}/libquorvance-qt-dev COMPONENT qt_dev)
endif()

# --- how they are found --------------------------------------------------------------------------

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QuorvanceConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QuorvanceConfig.cmake INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuorvanceConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/QuorvanceConfig.cmake
  ${PROJECT_BINARY_DIR}/QuorvanceConfigVersion.cmake
  DESTINATION ${packageFolder} COMPONENT dev)

# The folder may be moved: all is told from where the file lies.
set(pcFolder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pcToPrefix /prefix/${pcFolder} /prefix)
foreach(name quorvance quorvance-static quorvance-qt)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/${name}.pc.in
    ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  set(component dev)
  if(name STREQUAL "quorvance-qt")
    set(component qt_dev)
  endif()
  if(component STREQUAL "dev" OR QUORVANCE_HAS_QT)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${pcFolder} COMPONENT ${component})
  endif()
endforeach()

# --- tools -------------------------------------------------------------------------------------

# quorvance_install_tool(<target> <name>)
#
# Installs the program under a name of its own, with its manual page.
function(quorvance_install_tool target name)
  if(NOT TARGET ${target})
    return()
  endif()
  install(PROGRAMS $<TARGET_FILE:${target}> DESTINATION ${CMAKE_INSTALL_BINDIR} RENAME ${name}
    COMPONENT tools)
  install(CODE "if(CMAKE_INSTALL_DO_STRIP)
      execute_process(COMMAND \"${CMAKE_STRIP}\"
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/${name}\")
    endif()" COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/man/${name}.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endfunction()

quorvance_install_tool(quorvance-reports quorvance-reports)
quorvance_install_tool(risk_server quorvance-risk-server)

# --- papers ------------------------------------------------------------------------------------

install(FILES
  ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  ${PROJECT_SOURCE_DIR}/SECURITY.md ${PROJECT_SOURCE_DIR}/docs/integration.md
  ${PROJECT_SOURCE_DIR}/docs/collected.md
  DESTINATION ${documentFolder}/quorvance COMPONENT dev)
install(FILES
  ${PROJECT_SOURCE_DIR}/examples/first_verdict.cpp ${PROJECT_SOURCE_DIR}/examples/fail_open.cpp
  ${PROJECT_SOURCE_DIR}/examples/fail_closed.cpp
  DESTINATION ${documentFolder}/quorvance/examples COMPONENT dev)

find_package(Python3 QUIET COMPONENTS Interpreter)
if(Python3_FOUND)
  set(bill ${PROJECT_BINARY_DIR}/quorvance.spdx.json)
  set(makeBill ${PROJECT_SOURCE_DIR}/tools/make_sbom.py)
  set(toolLibraries)
  if(TARGET risk_server)
    find_package(OpenSSL QUIET COMPONENTS Crypto)
    set(toolLibraries tools/cpp-httplib=${cpp_httplib_VERSION} tools/openssl=${OPENSSL_VERSION})
  endif()
  set(componentLibraries)
  if(QUORVANCE_HAS_QT)
    set(componentLibraries qt/qtbase=${Qt6_VERSION} qt/qtdeclarative=${Qt6Quick_VERSION})
    if(Qt6Sensors_FOUND)
      list(APPEND componentLibraries qt/qtsensors=${Qt6Sensors_VERSION})
    endif()
  endif()
  set(vendored ${PROJECT_SOURCE_DIR}/apps/risk_server/console/vendor/LICENCES.txt)
  add_custom_command(OUTPUT ${bill} DEPENDS ${makeBill} ${vendored} ${versionSource}
    COMMAND Python3::Interpreter -B ${makeBill} ${bill} ${PROJECT_VERSION} ${vendored}
      libcurl=${CURL_VERSION_STRING} nlohmann-json=${nlohmann_json_VERSION} ${toolLibraries}
      ${componentLibraries}
    VERBATIM)
  add_custom_target(quorvance_sbom ALL DEPENDS ${bill})
  install(FILES ${bill} DESTINATION ${documentFolder}/quorvance COMPONENT dev)
else()
  message(STATUS "Without Python no bill of materials is made")
endif()

# Everything that is installed, and nothing else.
add_custom_target(quorvance_installed DEPENDS quorvance quorvance_static quorvance_testing)
foreach(target quorvance-reports risk_server quorvance_sbom quorvance_qt)
  if(TARGET ${target})
    add_dependencies(quorvance_installed ${target})
  endif()
endforeach()

if(PROJECT_IS_TOP_LEVEL)
  include(quorvance_packages)
endif()
