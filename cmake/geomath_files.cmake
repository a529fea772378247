# geomath_make_files_library(TARGET NAME LINKS...): what the parts of the library of files have in
# common; users know a part as geomath::NAME. Targets of this tree also see the libraries whose types
# stand in headers that are not installed.
function(geomath_make_files_library target name)
  add_library(geomath::${name} ALIAS ${target})
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${GEOMATH_FILES_INCLUDEDIR}>)
  target_link_libraries(${target}
    ${ARGN}
    PUBLIC $<BUILD_INTERFACE:fmt::fmt> $<BUILD_INTERFACE:nlohmann_json::nlohmann_json>
    PRIVATE $<BUILD_INTERFACE:geomath_options>)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name}
    CXX_EXTENSIONS OFF
    POSITION_INDEPENDENT_CODE ON
    VISIBILITY_INLINES_HIDDEN ON
    WINDOWS_EXPORT_ALL_SYMBOLS ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${GEOMATH_SOVERSION}
    INSTALL_RPATH ${GEOMATH_ORIGIN})
  if(BUILD_SHARED_LIBS AND UNIX AND NOT APPLE)
    set(symbols ${PROJECT_SOURCE_DIR}/cmake/geomath_files.map)
    target_link_options(${target} PRIVATE LINKER:--version-script=${symbols})
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${symbols})
  endif()
endfunction()

# geomath_install_files_headers(HEADER...): headers for users, below "files/".
function(geomath_install_files_headers)
  foreach(header IN LISTS ARGN)
    get_filename_component(room ${header} DIRECTORY)
    geomath_install(FILES ${header} DESTINATION ${GEOMATH_FILES_INCLUDEDIR}/files/${room}
      COMPONENT development)
  endforeach()
endfunction()
