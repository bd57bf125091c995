# Installation and the package configuration used by find_package(MFCQMUtils).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS MFCQMUtils EXPORT MFCQMUtilsTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The public headers: the framework subset, the library's modules, the module frame and the one
# host header of the platform layer. The rest of utils/platform is internal.
install(DIRECTORY utils/framework utils/common utils/module DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/utils
  FILES_MATCHING PATTERN "*.h" PATTERN "*_internal.h" EXCLUDE)
install(FILES utils/platform/host.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/utils/platform)
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

# pkg-config, for builds that do not use CMake. A static library lists what it links.
if(MFCQMUTILS_SHARED)
  set(QM_PC_CFLAGS "")
  set(QM_PC_LIBS_PRIVATE "")
  set(QM_PC_REQUIRES_PRIVATE "")
else()
  set(QM_PC_CFLAGS " -DMFCQMUTILS_STATIC")
  if(WIN32)
    set(QM_PC_LIBS_PRIVATE "-lshlwapi -lmsimg32 -lwininet -lmpr -lshell32 -lole32 -loleaut32 -luuid -luser32 -lgdi32 -ladvapi32 -lmsvfw32")
    set(QM_PC_REQUIRES_PRIVATE "")
  else()
    set(QM_PC_LIBS_PRIVATE "-pthread")
    foreach(lib ${CMAKE_DL_LIBS})
      string(APPEND QM_PC_LIBS_PRIVATE " -l${lib}")
    endforeach()
    set(QM_PC_REQUIRES_PRIVATE "sqlite3 freetype2 xcb libgsf-1 gio-2.0")
  endif()
endif()
# The file finds the prefix from where it lies, so the package may be unpacked anywhere.
file(RELATIVE_PATH QM_PC_TO_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" QM_PC_TO_PREFIX "${QM_PC_TO_PREFIX}")
configure_file(cmake/mfcqmutils.pc.in ${CMAKE_CURRENT_BINARY_DIR}/mfcqmutils.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mfcqmutils.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
