# The toolchain of the JavaScript package: Debian's clang 16 with wasi-libc and libc++ for wasm32.
set(CMAKE_SYSTEM_NAME WASI)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_C_COMPILER clang-16)
set(CMAKE_CXX_COMPILER clang++-16)
set(CMAKE_C_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_FLAGS_INIT -fwasm-exceptions)
# Not by ..._INIT, to which CMake appends an -O3 that wins.
set(CMAKE_CXX_FLAGS_RELEASE "-Oz -DNDEBUG" CACHE STRING "")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
