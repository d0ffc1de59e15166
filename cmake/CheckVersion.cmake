# The version stands twice, for CMake and for the preprocessor: they must agree.
set(header ${PROJECT_SOURCE_DIR}/include/portinglayer/version.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
foreach(part MAJOR MINOR PATCH)
  file(STRINGS ${header} line REGEX "#define PORTINGLAYER_VERSION_${part} ")
  if(NOT line STREQUAL "#define PORTINGLAYER_VERSION_${part} ${PROJECT_VERSION_${part}}")
    message(FATAL_ERROR "version.h says '${line}', CMakeLists.txt says ${PROJECT_VERSION}: "
      "change both together")
  endif()
endforeach()
