# Cross build for 32-bit Windows (x86) with MinGW-w64. Its test programs need a 32-bit Wine,
# which Debian 12 does not install beside its 64-bit one.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(QM_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
# Doubles are computed in SSE2 registers, as on the 64-bit targets, instead of the x87's
# 80-bit ones, so that rounding (number text, automation dates, time scales) gives the same
# results on every target. Functions realign their stack because a host may call into the
# DLL with the 4-byte stack alignment of the 32-bit Windows ABI.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
