# What is installed: the library and its headers, for find_package and for pkg-config, and what java and
# tools add. An installation is relocatable.
include(CMakePackageConfigHelpers)

install(TARGETS Algorithm EXPORT AlgorithmTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/libalgorithm DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Algorithm)
install(EXPORT AlgorithmTargets NAMESPACE Algorithm:: DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/AlgorithmConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES cmake/AlgorithmConfig.cmake ${PROJECT_BINARY_DIR}/AlgorithmConfigVersion.cmake
  DESTINATION ${package_dir})

file(RELATIVE_PATH to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/Algorithm.pc.in Algorithm.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/Algorithm.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libalgorithm)
install(DIRECTORY examples/sepia DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libalgorithm/examples)
