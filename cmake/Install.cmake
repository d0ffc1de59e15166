# What is installed, in two components: `runtime` (the shared object) and `development` (the rest).
# Everything found through the CMake package or pkg-config is relative to where those files stand,
# so that an installed tree can be moved. The shared and the static library can stand side by side:
# each has a list of targets of its own, and the package picks one.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(GdbPrinters)

get_target_property(kind portinglayer TYPE)
if(kind STREQUAL SHARED_LIBRARY)
  set(targets portinglayerSharedTargets)
else()
  set(targets portinglayerStaticTargets)
endif()
install(TARGETS portinglayer EXPORT ${targets}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(PORTINGLAYER_DEBUG_SYMBOLS AND NOT PORTINGLAYER_PACKAGE)  # packages have one of their own for them
  install(FILES ${PORTINGLAYER_DEBUG_SYMBOLS} DESTINATION ${CMAKE_INSTALL_LIBDIR}/.debug
    COMPONENT development)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/portinglayer
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/portinglayer)
install(EXPORT ${targets} NAMESPACE talvl:: DESTINATION ${package_dir} COMPONENT development)
export(EXPORT ${targets} NAMESPACE talvl:: FILE ${PROJECT_BINARY_DIR}/${targets}.cmake)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/portinglayerConfig.cmake.in
  ${PROJECT_BINARY_DIR}/portinglayerConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/portinglayerConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/portinglayerConfig.cmake
  ${PROJECT_BINARY_DIR}/portinglayerConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

file(RELATIVE_PATH PORTINGLAYER_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" PORTINGLAYER_PC_TO_PREFIX "${PORTINGLAYER_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/portinglayer.pc.in
  ${PROJECT_BINARY_DIR}/portinglayer.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/portinglayer.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
