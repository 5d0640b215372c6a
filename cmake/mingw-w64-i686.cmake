# Builds for Windows with the mingw-w64 compiler of that name; what is built runs under Wine, where
# that is installed for 32 bits.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR X86)
set(prefix i686-w64-mingw32)
find_program(CMAKE_CXX_COMPILER NAMES ${prefix}-g++-posix ${prefix}-g++ REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${prefix}-windres REQUIRED)
set(CMAKE_FIND_ROOT_PATH /usr/${prefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
# Every system that the engine supports needs SSE2 itself. Callers of that system keep the stack
# aligned to 4 bytes only.
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mstackrealign")
find_program(wine NAMES wine)
if(wine)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${wine})
endif()
