# geomath_add_kernels(SOURCE...): kernel sources of the current folder, compiled for every
# instruction set that geomath/simd/CMakeLists.txt set up.
function(geomath_add_kernels)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ OUTPUT_VARIABLE sources)
  get_property(variants GLOBAL PROPERTY GEOMATH_KERNEL_VARIANTS)
  foreach(variant IN LISTS variants)
    target_sources(geomath_kernels_${variant} PRIVATE ${sources})
  endforeach()
endfunction()
