# The toolchain of preset `web`: Debian's clang-19 with wasi-libc and libc++ for WebAssembly.

set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
# There is nothing to run what is compiled while configuring, nor anything to find on this machine.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_EXECUTABLE_SUFFIX .wasm)
set(CMAKE_EXECUTABLE_SUFFIX_C .wasm)
set(CMAKE_EXECUTABLE_SUFFIX_CXX .wasm)
# Libraries that call each other are linked as one group. The linker looks back by itself, so the words
# around a group say nothing.
set(CMAKE_LINK_GROUP_USING_RESCAN_SUPPORTED TRUE)
set(CMAKE_LINK_GROUP_USING_RESCAN "LINKER:--color-diagnostics=never" "LINKER:--color-diagnostics=never")
