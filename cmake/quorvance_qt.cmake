# Quorvance::qt, for applications of Qt's: a shared library of its own over the shared library, so that
# the latter has nothing of Qt. QUORVANCE_QT: AUTO builds it where Qt is found, ON insists on it.

set(QUORVANCE_HAS_QT OFF)
# Debian's Qt is not instrumented: to the thread sanitizer its event loop hands nothing over, and
# everything that two threads share through it looks like a race. Another processor has no Qt here.
if(NOT QUORVANCE_QT STREQUAL "OFF" AND NOT QUORVANCE_SANITIZE MATCHES "thread"
    AND NOT CMAKE_CROSSCOMPILING)
  find_package(Qt6 6.4 QUIET COMPONENTS Core Gui Widgets Qml Quick)
  find_package(Qt6Sensors 6.4 QUIET)
  set(QUORVANCE_HAS_QT ${Qt6_FOUND})
  if(QUORVANCE_QT STREQUAL "ON" AND NOT QUORVANCE_HAS_QT)
    message(FATAL_ERROR "QUORVANCE_QT is ON, but there is no Qt 6.4 with Quick and Widgets here")
  endif()
endif()
if(NOT QUORVANCE_HAS_QT)
  message(STATUS "Without Quorvance::qt")
  return()
endif()

quorvance_sources(qtSources src/qt/*.cpp)
if(Qt6Sensors_FOUND)
  list(FILTER qtSources EXCLUDE REGEX "/without_sensors\\.cpp$")
  set(qtSensors Qt6::Sensors)
else()
  list(FILTER qtSources EXCLUDE REGEX "/qt_motion\\.cpp$")
  set(qtSensors)
endif()

# The only header with a meta-object: named here, it is all that the generator reads.
add_library(quorvance_qt_objects OBJECT ${qtSources} src/qt/risk_screen.h)
set_target_properties(quorvance_qt_objects PROPERTIES
  AUTOMOC ON
  POSITION_INDEPENDENT_CODE ON
  CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON)
set_property(SOURCE ${qtSources} PROPERTY SKIP_AUTOMOC ON)
target_compile_definitions(quorvance_qt_objects PRIVATE QT_NO_KEYWORDS)
target_include_directories(quorvance_qt_objects
  PUBLIC ${PROJECT_SOURCE_DIR}/include
  PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(quorvance_qt_objects
  PUBLIC nlohmann_json::nlohmann_json Threads::Threads
  PRIVATE Qt6::Core Qt6::Gui Qt6::Widgets Qt6::Qml Qt6::Quick ${qtSensors})
quorvance_warnings(quorvance_qt_objects)
quorvance_release_objects(quorvance_qt_objects)
# Asked with every touch.
set_property(SOURCE ${PROJECT_SOURCE_DIR}/src/qt/object_view.cpp
  ${PROJECT_SOURCE_DIR}/src/qt/view_geometry.cpp
  APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-O2>)

add_library(quorvance_qt SHARED $<TARGET_OBJECTS:quorvance_qt_objects>)
# For tests, which link the library's doubles and so its static form. Not installed.
add_library(quorvance_qt_static STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:quorvance_qt_objects>)
add_library(Quorvance::qt ALIAS quorvance_qt)
set_target_properties(quorvance_qt PROPERTIES
  EXPORT_NAME qt
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR})
foreach(library quorvance_qt quorvance_qt_static)
  set_target_properties(${library} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(${library}
    PRIVATE Qt6::Core Qt6::Gui Qt6::Widgets Qt6::Qml Qt6::Quick ${qtSensors})
endforeach()
target_link_libraries(quorvance_qt PUBLIC quorvance)
target_link_libraries(quorvance_qt_static PUBLIC quorvance_static)
quorvance_release_library(quorvance_qt)
if(NOT QUORVANCE_SANITIZE)
  target_link_options(quorvance_qt PRIVATE LINKER:-z,defs)
endif()
