# Debian's cross compiler for another processor, and its emulation: -DCROSS=arm64, riscv64 or s390x.
# Programs are built for the libraries that the compiler brings, which is also where the emulation
# finds the dynamic loader.
set(CROSS arm64 CACHE STRING "Debian's name of the processor")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CROSS)
set(processors arm64 aarch64 riscv64 riscv64 s390x s390x)
list(FIND processors ${CROSS} place)
if(place EQUAL -1)
  message(FATAL_ERROR "no such processor here: ${CROSS}")
endif()
math(EXPR place "${place} + 1")
list(GET processors ${place} CMAKE_SYSTEM_PROCESSOR)
set(triplet ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_FIND_ROOT_PATH /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR} -L /usr/${triplet})
