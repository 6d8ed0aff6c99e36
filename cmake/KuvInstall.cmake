# `cmake --install`: programs, libraries, headers, resources, catalogs, documents and a CMake package.
#
#   find_package(KUVDataViz)   gives KUV::KUVDataViz, KUV::Host and KUV::KUVHost
include(CMakePackageConfigHelpers)

set(KUV_RESOURCES_DIR "${CMAKE_INSTALL_DATADIR}/kuvdataviz")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KUVDataViz")

set_target_properties(kuv_host PROPERTIES EXPORT_NAME Host)
set_target_properties(kuv_dataviz_headers PROPERTIES EXPORT_NAME ModuleHeaders)
install(TARGETS kuv_host kuv_dataviz_headers EXPORT KUVDataVizTargets)
foreach(target KUVHost KUVDataViz)
  if(TARGET ${target})
    install(TARGETS ${target} EXPORT KUVDataVizTargets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
  endif()
endforeach()
if(TARGET dataviz)
  install(TARGETS dataviz RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()

install(DIRECTORY "${PROJECT_SOURCE_DIR}/host/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kuv/host"
  FILES_MATCHING PATTERN "*.h")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/VisualizationCommands/include/"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kuv/module" FILES_MATCHING PATTERN "*.h")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/VisualizationCommands/KUVDataViz.m/resources/"
  DESTINATION "${KUV_RESOURCES_DIR}" PATTERN "*.sh" EXCLUDE PATTERN "*.py" EXCLUDE)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/apps/dataviz/schemas" DESTINATION "${KUV_RESOURCES_DIR}" OPTIONAL)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/README.md"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs/" DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  FILES_MATCHING PATTERN "*.md")

install(EXPORT KUVDataVizTargets NAMESPACE KUV:: DESTINATION "${package_dir}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/KUVDataVizConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/KUVDataVizConfig.cmake"
  INSTALL_DESTINATION "${package_dir}" PATH_VARS KUV_RESOURCES_DIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/KUVDataVizConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/KUVDataVizConfig.cmake"
  "${PROJECT_BINARY_DIR}/KUVDataVizConfigVersion.cmake" DESTINATION "${package_dir}")
