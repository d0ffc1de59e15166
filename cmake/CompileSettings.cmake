# One place for how everything of this project is compiled.
# portinglayer_settings(TARGET): language level and warnings.

set(PORTINGLAYER_SANITIZE "" CACHE STRING "Sanitizers, comma separated: address,undefined or thread")
option(PORTINGLAYER_COVERAGE "Instrument for line coverage" OFF)

function(portinglayer_settings target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
  if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(PORTINGLAYER_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${PORTINGLAYER_SANITIZE}
      -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${PORTINGLAYER_SANITIZE})
  endif()
  if(PORTINGLAYER_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
