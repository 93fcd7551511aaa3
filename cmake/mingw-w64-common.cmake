# What the toolchains share: Debian's mingw-w64 for CMAKE_SYSTEM_PROCESSOR, in the POSIX thread model
# (std::thread, std::mutex).
set(CMAKE_SYSTEM_NAME Windows)

set(host ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32)
set(CMAKE_C_COMPILER ${host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${host}-g++-posix)
set(CMAKE_AR ${host}-gcc-ar-posix)
set(CMAKE_RANLIB ${host}-gcc-ranlib-posix)
set(CMAKE_RC_COMPILER ${host}-windres)

# Nothing of the build machine's own headers and libraries may reach the cross compiler.
set(CMAKE_FIND_ROOT_PATH /usr/${host})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
