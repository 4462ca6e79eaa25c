# Installs the tree that the build folder's stage shows, and a package for find_package(norvi).
include(CMakePackageConfigHelpers)

install(TARGETS norvi-host EXPORT norviTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS norvi norvi-kernels LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/norvi)
if(TARGET norvi-kernels_v3)
  install(TARGETS norvi-kernels_v3 LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/norvi)
endif()
install(TARGETS norvi_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/norvi DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${NORVI_STAGE}/share/norvi/shaders DESTINATION ${CMAKE_INSTALL_DATADIR}/norvi)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/norvi)
install(EXPORT norviTargets NAMESPACE norvi:: DESTINATION ${package_folder})
configure_package_config_file(cmake/norviConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/norviConfig.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/norviConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/norviConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/norviConfigVersion.cmake
  cmake/NorviKernels.cmake
  cmake/module.map
  DESTINATION ${package_folder})
