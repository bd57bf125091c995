# Installation and the package configuration used by find_package(MFCQMUtils).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS MFCQMUtils EXPORT MFCQMUtilsTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY utils DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h"
  PATTERN "platform/posix" EXCLUDE PATTERN "platform/win32" EXCLUDE)
install(EXPORT MFCQMUtilsTargets NAMESPACE MFCQMUtils::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/MFCQMUtils)
configure_package_config_file(cmake/MFCQMUtilsConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/MFCQMUtilsConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/MFCQMUtils)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/MFCQMUtilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/MFCQMUtilsConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/MFCQMUtilsConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/MFCQMUtils)
