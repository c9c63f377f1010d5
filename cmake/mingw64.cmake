# 64-bit Windows, cross-compiled with Debian's MinGW-w64. The libraries come from scripts/windows-libraries, which
# knows where it keeps them.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_VERSION 10.0)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(KST_TRIPLE x86_64-w64-mingw32)
# The variant with POSIX threads: the other one has no std::thread.
set(CMAKE_C_COMPILER ${KST_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KST_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${KST_TRIPLE}-windres)

if(NOT KST_WINDOWS_LIBRARIES)
  execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../scripts/windows-libraries --where
                  OUTPUT_VARIABLE KST_WINDOWS_LIBRARIES OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
set(KST_WINDOWS_LIBRARIES ${KST_WINDOWS_LIBRARIES} CACHE PATH "The third-party libraries for Windows")
# CMake's own test compilations read this file too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KST_WINDOWS_LIBRARIES)

set(CMAKE_FIND_ROOT_PATH ${KST_WINDOWS_LIBRARIES} /usr/${KST_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Found by its name alone, zlib would be the import library of a DLL.
set(ZLIB_LIBRARY /usr/${KST_TRIPLE}/lib/libz.a CACHE FILEPATH "")
set(ZLIB_INCLUDE_DIR /usr/${KST_TRIPLE}/include CACHE PATH "")

set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")
# One file: the compiler's own libraries are inside the .exe.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run)
