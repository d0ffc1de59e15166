# What debuggers want to know of the library, in a file of its own beside it, which they find by
# themselves. Packages leave that to the packager, who makes a package of it.
#
# portinglayer_debug_symbols(TARGET): sets DEBUG_FILE where the target has such a file.
option(PORTINGLAYER_DEBUG_FILE "Keep the debug symbols of an optimised shared library in a file beside it" ON)

function(portinglayer_debug_symbols target)
  target_compile_options(${target} PRIVATE -g)
  get_target_property(kind ${target} TYPE)
  if(NOT PORTINGLAYER_DEBUG_FILE OR NOT kind STREQUAL SHARED_LIBRARY OR
     NOT CMAKE_BUILD_TYPE STREQUAL Release OR NOT CMAKE_OBJCOPY)
    return()
  endif()

  set(library $<TARGET_FILE:${target}>)
  set(symbols $<TARGET_FILE_NAME:${target}>.debug)
  add_custom_command(TARGET ${target} POST_BUILD VERBATIM
    WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug --compress-debug-sections ${library} ${symbols}
    COMMAND ${CMAKE_OBJCOPY} --strip-debug --add-gnu-debuglink=${symbols} ${library})
  set(DEBUG_FILE $<TARGET_FILE_DIR:${target}>/${symbols} PARENT_SCOPE)
endfunction()
