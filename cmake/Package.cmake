# Debian packages: the shared object, named for its SONAME so that two majors can be installed side
# by side, its debug symbols, and what is needed to build against it. `cpack --preset package` makes them in dist/.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libtalvl-portinglayer)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "portability layer for C++ programs")
set(CPACK_PACKAGE_VENDOR talvl)
set(CPACK_PACKAGE_CONTACT "portinglayer authors <portinglayer@example.org>")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/dist)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development symbols)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtalvl-portinglayer${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "shared library\n Text, binary streams, threads, files and processes for C++ programs on Linux.")

# Which package a program needs that is linked against this one, and the loader's cache after a change.
set(control ${PROJECT_BINARY_DIR}/control)
file(WRITE ${control}/shlibs
  "libtalvl.portinglayer ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (>= ${PROJECT_VERSION})\n")
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtalvl-portinglayer-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "development files\n Headers, CMake package, pkg-config file and gdb printers.")

# Debuggers look for the symbols of a packaged library under its build id.
set(CPACK_DEBIAN_SYMBOLS_PACKAGE_NAME ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME}-dbgsym)
set(CPACK_DEBIAN_SYMBOLS_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_SYMBOLS_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_SYMBOLS_DESCRIPTION
  "debug symbols\n Lets gdb show the lines and variables of the portability layer.")
install(CODE "
  execute_process(COMMAND ${CMAKE_READELF} -n \"$<TARGET_FILE:portinglayer>\" OUTPUT_VARIABLE notes)
  if(NOT notes MATCHES \"Build ID: (..)([0-9a-f]+)\")
    message(FATAL_ERROR \"the library has no build id\")
  endif()
  file(INSTALL \"${PORTINGLAYER_DEBUG_SYMBOLS}\" RENAME \"\${CMAKE_MATCH_2}.debug\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id/\${CMAKE_MATCH_1}\"
    PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)"
  COMPONENT symbols)

# Rights and history stand in each package; the newest entry of the history is that of this version.
set(history ${PROJECT_SOURCE_DIR}/packaging/changelog)
file(STRINGS ${history} newest LIMIT_COUNT 1)
if(NOT newest MATCHES "\\(${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}\\)")
  message(FATAL_ERROR "packaging/changelog begins with '${newest}', the version is ${PROJECT_VERSION}")
endif()
set(compressed ${control}/changelog.Debian.gz)
execute_process(COMMAND gzip -9nc ${history} OUTPUT_FILE ${compressed} COMMAND_ERROR_IS_FATAL ANY)
foreach(component RUNTIME DEVELOPMENT SYMBOLS)
  string(TOLOWER ${component} name)
  set(package ${CPACK_DEBIAN_${component}_PACKAGE_NAME})
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${compressed}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${name})
  set(overrides ${PROJECT_SOURCE_DIR}/packaging/${name}.lintian-overrides)
  if(EXISTS ${overrides})
    install(FILES ${overrides} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
      RENAME ${package} COMPONENT ${name})
  endif()
endforeach()
include(CPack)
