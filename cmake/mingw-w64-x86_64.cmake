# Cross build for 64-bit Windows with MinGW-w64; the test programs run under Wine.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(QM_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
