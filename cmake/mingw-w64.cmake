# Toolchain: x86-64 Windows, run by Wine.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)

cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH quilldeck_root)
set(CMAKE_CROSSCOMPILING_EMULATOR ${quilldeck_root}/tools/build/wine-run)
