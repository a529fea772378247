# Flags that every target of the project is built with.
add_library(geomath_options INTERFACE)
target_compile_features(geomath_options INTERFACE cxx_std_20)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  # A fused multiply-add would make results depend on the machine: contraction stays off everywhere.
  target_compile_options(geomath_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -ffp-contract=off
    $<$<BOOL:${GEOMATH_WERROR}>:-Werror>)
elseif(MSVC)
  target_compile_options(geomath_options INTERFACE
    /W4 /utf-8 /fp:precise $<$<BOOL:${GEOMATH_WERROR}>:/WX>)
endif()
