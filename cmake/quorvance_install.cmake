# What an application team gets: headers, both libraries, and find_package(Quorvance).

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/Quorvance)

install(DIRECTORY include/quorvance DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

# Two export sets: who links the shared library needs no libcurl to build with.
install(TARGETS quorvance EXPORT QuorvanceShared
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS quorvance_static EXPORT QuorvanceStatic
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(set Shared Static)
  install(EXPORT Quorvance${set} NAMESPACE Quorvance:: DESTINATION ${packageFolder}
    FILE Quorvance${set}Targets.cmake)
endforeach()

configure_package_config_file(cmake/QuorvanceConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QuorvanceConfig.cmake INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuorvanceConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/QuorvanceConfig.cmake
  ${PROJECT_BINARY_DIR}/QuorvanceConfigVersion.cmake
  DESTINATION ${packageFolder})
