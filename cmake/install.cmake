# Installs the headers, the shared library, a pkg-config file and a CMake
# package config (find_package(kelocmn) gives kelocmn::kelocmn).
include(CMakePackageConfigHelpers)

install(TARGETS kelocmn EXPORT kelocmnTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kelocmn
  FILES_MATCHING PATTERN "*.h")
install(EXPORT kelocmnTargets NAMESPACE kelocmn::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kelocmn)

configure_package_config_file(cmake/kelocmnConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/kelocmnConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kelocmn)
write_basic_package_version_file(
  ${CMAKE_CURRENT_BINARY_DIR}/kelocmnConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kelocmnConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/kelocmnConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kelocmn)

configure_file(cmake/kelocmn.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kelocmn.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kelocmn.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET kelo)
  install(TARGETS kelo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
