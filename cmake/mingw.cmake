# Cross build for Windows x64. The POSIX-threads flavour is needed for std::thread and std::mutex.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(OC_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${OC_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${OC_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${OC_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${OC_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
# Tests run under Wine as Debian installs it.
set(CMAKE_CROSSCOMPILING_EMULATOR sh ${CMAKE_CURRENT_LIST_DIR}/../tools/wine-env.sh run)
