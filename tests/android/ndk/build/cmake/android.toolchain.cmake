# Stands in for an NDK's toolchain where there is none: clang for the Android target, with this
# machine's C headers for arm64 in the place of bionic's. It compiles; it can't link.
if(NOT "${ANDROID_ABI}" STREQUAL "arm64-v8a" OR NOT "${ANDROID_STL}" STREQUAL "c++_static")
  message(FATAL_ERROR "ANDROID_ABI is '${ANDROID_ABI}', ANDROID_STL is '${ANDROID_STL}'")
endif()
string(REPLACE "android-" "" level "${ANDROID_PLATFORM}")
set(ANDROID_PLATFORM_LEVEL ${level})
set(ANDROID_NDK_MAJOR 26)

set(CMAKE_SYSTEM_NAME Android)
set(CMAKE_SYSTEM_VERSION 1)  # as the NDK's own: CMake then looks for no NDK itself
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
foreach(language C CXX)
  set(CMAKE_${language}_COMPILER_TARGET aarch64-linux-android${level})
  set(CMAKE_${language}_FLAGS_INIT "-isystem /usr/include/aarch64-linux-gnu")
endforeach()
set(CMAKE_C_COMPILER clang-16)
set(CMAKE_CXX_COMPILER clang++-16)
string(APPEND CMAKE_CXX_FLAGS_INIT " -stdlib=libc++")
