# Flags that every target of the project is built with.
add_library(geomath_options INTERFACE)
target_compile_features(geomath_options INTERFACE cxx_std_20)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  # A fused multiply-add would make results depend on the machine: contraction stays off everywhere.
  target_compile_options(geomath_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -ffp-contract=off
    $<$<BOOL:${GEOMATH_WERROR}>:-Werror>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC bug 105651: a false report for every operator+ of std::string, fixed in 13.
    target_compile_options(geomath_options INTERFACE -Wno-restrict)
  endif()
elseif(MSVC)
  target_compile_options(geomath_options INTERFACE
    /W4 /utf-8 /fp:precise $<$<BOOL:${GEOMATH_WERROR}>:/WX>)
endif()

# GEOMATH_SANITIZE=address,undefined and the like: the sanitizers of every target.
set(GEOMATH_SANITIZE "" CACHE STRING "Sanitizers to build with, as of -fsanitize")
if(GEOMATH_SANITIZE)
  add_compile_options(-fsanitize=${GEOMATH_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${GEOMATH_SANITIZE})
endif()
