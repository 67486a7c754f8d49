# The Debian packages, made by cpack: the library by the name that its soname asks for, what is built
# with, the tools, and both of Quorvance::qt where it is built. Configured with -DCMAKE_INSTALL_PREFIX=/usr, which gives the folders of
# Debian's architectures.

set(packages library dev tools)
if(QUORVANCE_HAS_QT)
  list(APPEND packages qt_library qt_dev)
endif()
set(packageOf_library libquorvance${PROJECT_VERSION_MAJOR})
set(packageOf_dev libquorvance-dev)
set(packageOf_tools quorvance-tools)
set(packageOf_qt_library libquorvance-qt${PROJECT_VERSION_MAJOR})
set(packageOf_qt_dev libquorvance-qt-dev)
foreach(component IN LISTS packages)
  set(package ${packageOf_${component}})
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright
    DESTINATION ${documentFolder}/${package} COMPONENT ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_FILE_NAME DEB-DEFAULT)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvance)
set(CPACK_PACKAGE_VENDOR "QuorvanceSDK")
set(CPACK_PACKAGE_CONTACT "QuorvanceSDK maintainers <maintainers@quorvance.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL ${packages})
if(NOT TARGET risk_server)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "ca-certificates, libfontconfig1")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "libquorvance${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), nlohmann-json3-dev (>= 3.11)")
# What the static library is linked with.
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS "libcurl4-openssl-dev")
# Its packages know the library's by name: it is in none yet when they are made.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_QT_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_QT_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_QT_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_QT_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_QT_LIBRARY_PACKAGE_DEPENDS
  "libquorvance${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_QT_DEV_PACKAGE_DEPENDS
  "libquorvance-dev (= ${PROJECT_VERSION}), libquorvance-qt${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
# What an application of Qt's is built with.
set(CPACK_DEBIAN_QT_DEV_PACKAGE_RECOMMENDS "qt6-base-dev, qt6-declarative-dev")
set(CPACK_COMPONENT_QT_LIBRARY_DESCRIPTION
  "risk verdicts for banking applications, shared library for Qt
 Screens, touches and verdicts in applications of Qt's.")
set(CPACK_COMPONENT_QT_DEV_DESCRIPTION
  "risk verdicts for banking applications, development files for Qt
 Headers, and the files of CMake and pkg-config.")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
  "risk verdicts for banking applications, shared library
 Asks a risk server for a verdict on the moments of a user's journey.")
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "risk verdicts for banking applications, development files
 Headers, both libraries, doubles for tests, and the files of CMake and pkg-config.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "risk verdicts for banking applications, tools
 A local risk server, and a reader of the reports that wait on a device.")
include(CPack)
