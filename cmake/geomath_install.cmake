# What `cmake --install` puts where. Components: `library` (to run programs), `development` (to build
# them), `program`, `python`. A project that has this one as a part installs it only when asked.
option(GEOMATH_INSTALL "Install geomath with the project" ${PROJECT_IS_TOP_LEVEL})
macro(geomath_install)
  if(GEOMATH_INSTALL)
    install(${ARGV})
  endif()
endmacro()

# The name that programs are bound to: before 1.0 a minor version may change what they rely on.
set(GEOMATH_SOVERSION ${PROJECT_VERSION_MAJOR})
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(GEOMATH_SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
endif()

# Where an installed binary stands: libraries are sought from there, wherever the prefix is.
set(GEOMATH_ORIGIN $ORIGIN)
if(APPLE)
  set(GEOMATH_ORIGIN @loader_path)
endif()

geomath_install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT library)
set(GEOMATH_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/geomath)
# The headers of the library of files are included as "files/…": they have a folder of their own.
set(GEOMATH_FILES_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/geomath-files)

# geomath_install_library(TARGET NAME): the library with its part NAME-targets.cmake of the package.
function(geomath_install_library target name)
  geomath_install(TARGETS ${target} EXPORT ${name}-targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
  geomath_install(EXPORT ${name}-targets NAMESPACE geomath:: DESTINATION ${GEOMATH_PACKAGE_DIR}
    COMPONENT development)
endfunction()

# geomath_install_pkg_config(NAME): NAME.pc, whose paths count from where it stands.
file(RELATIVE_PATH pc_to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
function(geomath_install_pkg_config name)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    @ONLY)
  geomath_install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()
