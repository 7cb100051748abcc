# zo_library(<target> <alias> <export-base> SOURCES ... PUBLIC_HEADERS ...)
# A shared library with an export header, build/install include paths and install rules.
function(zo_finish_library target alias exportbase)
  add_library(${alias} ALIAS ${target})
  generate_export_header(${target} BASE_NAME ${exportbase}
    EXPORT_FILE_NAME ${CMAKE_CURRENT_BINARY_DIR}/${target}_export.h)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/${target}>)
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  install(TARGETS ${target} EXPORT zoutilsTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${target}_export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${target})
endfunction()
