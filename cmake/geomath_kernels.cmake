# geomath_add_kernels(SOURCE...): kernel sources of the current folder, compiled for every
# instruction set that geomath/simd/CMakeLists.txt set up.
function(geomath_add_kernels)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ OUTPUT_VARIABLE sources)
  geomath_compile_for_every_set(${sources})
endfunction()

function(geomath_compile_for_every_set)
  get_property(variants GLOBAL PROPERTY GEOMATH_KERNEL_VARIANTS)
  foreach(variant IN LISTS variants)
    target_sources(geomath_kernels_${variant} PRIVATE ${ARGN})
  endforeach()
endfunction()

# The kernels of a header of statements: a source <header>_kernel.cc is written into the build folder
# that instantiates the loops for each of them, and compiled as above.
#   geomath_add_column_kernel(HEADER CONVERSION...)    simd::ColumnKernel over columns of points
#   geomath_add_projection_kernel(HEADER FORMULAS...)  both directions of projections, derivatives
#   geomath_add_grid_kernel(HEADER RULE...)            GridKernel over the nodes of a grid
function(geomath_add_column_kernel header)
  geomath_write_kernel(${header} simd::ColumnKernel geomath/simd/column_kernel_loops.h ${ARGN})
endfunction()

function(geomath_add_projection_kernel header)
  set(directions "")
  foreach(formulas IN LISTS ARGN)
    list(APPEND directions "ForwardOf<${formulas}>" "InverseOf<${formulas}>" "DerivativesBy<${formulas}>")
  endforeach()
  geomath_write_kernel(${header} simd::ColumnKernel
    "geomath/proj/methods/kernels/projection_kernel.h;geomath/simd/column_kernel_loops.h" ${directions})
endfunction()

function(geomath_add_grid_kernel header)
  geomath_write_kernel(${header} GridKernel geomath/geoid/grid/grid_kernel_loops.h ${ARGN})
endfunction()

function(geomath_write_kernel header kernel includes)
  string(JOIN "\n" source "#include \"${header}\"" "")
  foreach(include IN LISTS includes)
    string(APPEND source "#include \"${include}\"\n")
  endforeach()
  string(APPEND source "\nnamespace zel_cs::geomath {\n\n")
  foreach(statements IN LISTS ARGN)
    string(APPEND source "template struct ${kernel}<simd::GEOMATH_KERNEL_TARGET, ${statements}>;\n")
  endforeach()
  string(APPEND source "\n}  // namespace zel_cs::geomath\n")

  get_filename_component(name ${header} NAME_WE)
  set(path ${CMAKE_CURRENT_BINARY_DIR}/${name}_kernel.cc)
  file(CONFIGURE OUTPUT ${path} CONTENT "${source}" @ONLY)
  geomath_compile_for_every_set(${path})
endfunction()
