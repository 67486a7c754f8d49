# The Debian packages, made by cpack: the library by the name that its soname asks for, what is built
# with, and the tools. Configured with -DCMAKE_INSTALL_PREFIX=/usr, which gives the folders of
# Debian's architectures.

foreach(component library dev tools)
  set(package quorvance-tools)
  if(component STREQUAL "library")
    set(package libquorvance${PROJECT_VERSION_MAJOR})
  elseif(component STREQUAL "dev")
    set(package libquorvance-dev)
  endif()
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
set(CPACK_COMPONENTS_ALL library dev)
if(TARGET risk_server)
  list(APPEND CPACK_COMPONENTS_ALL tools)
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
