# What `cmake --install` puts in place: library, headers, command, CMake package and pkg-config file. The installed tree
# may be moved as a whole: no file in it names its own place.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Claribox)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS claribox EXPORT ClariboxTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/claribox DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

if(CLARIBOX_CLI)
  install(TARGETS claribox_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT ClariboxTargets NAMESPACE Claribox:: DESTINATION ${package_dir})
configure_package_config_file(cmake/ClariboxConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/ClariboxConfig.cmake
  INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
# Below 1.0 a new minor version may change the interface.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/ClariboxConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/ClariboxConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/ClariboxConfigVersion.cmake
  DESTINATION ${package_dir})

file(RELATIVE_PATH pkgconfig_to_prefix /prefix/${pkgconfig_dir} /prefix)
configure_file(cmake/claribox.pc.in ${CMAKE_CURRENT_BINARY_DIR}/claribox.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/claribox.pc DESTINATION ${pkgconfig_dir})
