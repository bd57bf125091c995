# Packages made by CPack, with the project's version: a Debian package on Linux (shared
# library, headers, CMake package files, qmutil and its man page) and a ZIP on Windows (DLL,
# import library, headers, CMake package files, qmutil.exe).
set(CPACK_PACKAGE_NAME "mfcqmutils")
set(CPACK_PACKAGE_VENDOR "MFCQMUtils")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Shared utility library of a desktop information manager, and its qmutil front end")
set(CPACK_PACKAGE_CONTACT "MFCQMUtils maintainers <maintainers@mfcqmutils.invalid>")
set(CPACK_STRIP_FILES OFF)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(qm_arch win64)
  else()
    set(qm_arch win32)
  endif()
  set(CPACK_PACKAGE_FILE_NAME "MFCQMUtils-${PROJECT_VERSION}-${qm_arch}")
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION libs)
  # The runtime libraries the shared library and qmutil need, found by dpkg-shlibdeps.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Dates and date text, time scales, number text, text scanning, e-mail and URL
recognition, bullets and numbering and compact serialization, with the qmutil command-line
front end.")
  install(FILES tools/qmutil/qmutil.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
include(CPack)
