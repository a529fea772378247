# What `cmake --install` puts where. Components: `library` (to run programs), `development` (to build
# them), `program`, `python`.
set(GEOMATH_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/geomath)
# The headers of the library of files are included as "files/…": they have a folder of their own.
set(GEOMATH_FILES_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/geomath-files)

# geomath_install_library(TARGET NAME): the library with its part NAME-targets.cmake of the package.
function(geomath_install_library target name)
  install(TARGETS ${target} EXPORT ${name}-targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
  install(EXPORT ${name}-targets NAMESPACE geomath:: DESTINATION ${GEOMATH_PACKAGE_DIR}
    COMPONENT development)
endfunction()

# geomath_install_pkg_config(NAME): NAME.pc, whose paths count from where it stands.
file(RELATIVE_PATH pc_to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
function(geomath_install_pkg_config name)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()
