# Toolchain: 32-bit Windows, for the programs that need the shell extension in their own kind.
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
