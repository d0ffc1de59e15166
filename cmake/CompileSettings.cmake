# One place for how everything of this project is compiled.
# portinglayer_settings(TARGET): language level, warnings and instrumentation.
# portinglayer_harden(TARGET): what makes a shipped shared object harder to abuse.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release or RelWithDebInfo" FORCE)
endif()

set(PORTINGLAYER_SANITIZE "" CACHE STRING "Sanitizers, comma separated: address,undefined or thread")
option(PORTINGLAYER_COVERAGE "Instrument for line coverage" OFF)
option(PORTINGLAYER_WERROR "Warnings are errors: for those who work on the library" OFF)

# Guards against jumps into the middle of functions: not every processor has them.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection PORTINGLAYER_HAS_CF_PROTECTION)

function(portinglayer_settings target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
  if(PORTINGLAYER_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(PORTINGLAYER_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${PORTINGLAYER_SANITIZE}
      -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${PORTINGLAYER_SANITIZE})
  endif()
  if(PORTINGLAYER_COVERAGE)
    # Threads that count without it make numbers that gcovr cannot read.
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# Sanitizers replace the checked functions and leave symbols undefined until the program is linked,
# so an instrumented library is not hardened.
function(portinglayer_harden target)
  if(PORTINGLAYER_SANITIZE)
    return()
  endif()
  target_compile_options(${target} PRIVATE -fstack-protector-strong -fstack-clash-protection
    $<$<BOOL:${PORTINGLAYER_HAS_CF_PROTECTION}>:-fcf-protection>)
  # The checked functions exist in optimised code only.
  target_compile_options(${target} PRIVATE
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
  target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,defs
    -Wl,--as-needed)
endfunction()
