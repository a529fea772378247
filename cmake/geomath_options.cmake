# Flags that every target of the project is built with.
add_library(geomath_options INTERFACE)
target_compile_features(geomath_options INTERFACE cxx_std_20)

# Results are promised to the bit: flags of a parent project that let the compiler rearrange
# arithmetic are taken back, whatever the compiler calls itself. A fused multiply-add would make
# results depend on the machine.
include(CheckCXXCompilerFlag)
foreach(flag IN ITEMS -fno-fast-math -fno-associative-math -fno-reciprocal-math
                      -fno-finite-math-only -fsigned-zeros -ffp-contract=off)
  string(MAKE_C_IDENTIFIER "GEOMATH_HAS_${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    target_compile_options(geomath_options INTERFACE ${flag})
  endif()
endforeach()

# On 32-bit x86 doubles are computed in SSE2 registers: those of the x87 round twice.
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86|x86_64|AMD64)$"
   AND NOT MSVC)
  target_compile_options(geomath_options INTERFACE -msse2 -mfpmath=sse)
endif()

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(geomath_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${GEOMATH_WERROR}>:-Werror>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC bug 105651: a false report for every operator+ of std::string, fixed in 13.
    target_compile_options(geomath_options INTERFACE -Wno-restrict)
  endif()
elseif(MSVC)
  target_compile_options(geomath_options INTERFACE
    /W4 /utf-8 /fp:precise $<$<BOOL:${GEOMATH_WERROR}>:/WX>)
  target_compile_definitions(geomath_options INTERFACE NOMINMAX)
endif()

# GEOMATH_SANITIZE=address,undefined and the like: the sanitizers of every target.
set(GEOMATH_SANITIZE "" CACHE STRING "Sanitizers to build with, as of -fsanitize")
if(GEOMATH_SANITIZE)
  add_compile_options(-fsanitize=${GEOMATH_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${GEOMATH_SANITIZE})
endif()
