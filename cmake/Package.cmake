# Debian packages: the shared object, named for its SONAME so that two majors can be installed side
# by side, and what is needed to build against it. `cpack --preset package` makes both in dist/.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libtalvl-portinglayer)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "portability layer for C++ programs")
set(CPACK_PACKAGE_VENDOR talvl)
set(CPACK_PACKAGE_CONTACT "The portinglayer maintainers <portinglayer@localhost>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/dist)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtalvl-portinglayer${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "shared library\n Text, binary streams, threads, files and processes for C++ programs on Linux.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtalvl-portinglayer-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "development files\n Headers, CMake package, pkg-config file and gdb printers of the portability layer.")
include(CPack)
