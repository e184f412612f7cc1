# Builds for Windows (x64) on Debian: g++-mingw-w64-x86-64-posix, with Wine to run what was built.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Windows 10: the oldest whose consoles obey escape sequences.
set(CMAKE_CXX_FLAGS_INIT -D_WIN32_WINNT=0x0A00)
# Programs need nothing beside them. The stack is as large as on Linux, which the depth limits of the parsers were set for.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--stack,8388608")

find_program(KELB_WINE NAMES wine64 wine PATHS /usr/lib/wine)
if(KELB_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${KELB_WINE})
endif()
