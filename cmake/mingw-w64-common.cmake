# The part of the MinGW-w64 toolchain files (POSIX thread model) that both Windows targets
# share; QM_MINGW_TRIPLE names the compilers (x86_64-w64-mingw32, i686-w64-mingw32). The test
# programs run through Wine (cmake/wine-run.sh) as the cross-compiling emulator.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${QM_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${QM_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${QM_MINGW_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${QM_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
# The MinGW runtime DLLs are linked statically so the programs run from any folder.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -static")
