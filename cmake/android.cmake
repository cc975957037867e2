# Build for Android devices and the emulator, with the NDK in ANDROID_NDK_ROOT or ANDROID_NDK_HOME. With
# VCPKG_ROOT set, the libraries of vcpkg.json are built along; else they come from CMAKE_PREFIX_PATH.
if(DEFINED ENV{ANDROID_NDK_ROOT})
  set(algorithm_ndk $ENV{ANDROID_NDK_ROOT})
elseif(DEFINED ENV{ANDROID_NDK_HOME})
  set(algorithm_ndk $ENV{ANDROID_NDK_HOME})
else()
  message(FATAL_ERROR "Set ANDROID_NDK_ROOT to the folder of an Android NDK, r27 or newer.")
endif()
set(algorithm_ndk_toolchain ${algorithm_ndk}/build/cmake/android.toolchain.cmake)

# What somebody asks for is taken or refused, never replaced.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ANDROID_ABI ANDROID_PLATFORM ANDROID_STL)
if(NOT ANDROID_ABI)
  set(ANDROID_ABI arm64-v8a)
endif()
if(NOT ANDROID_PLATFORM)
  set(ANDROID_PLATFORM android-26)
endif()
if(NOT ANDROID_STL)
  set(ANDROID_STL c++_static)
endif()
if(ANDROID_ABI STREQUAL "arm64-v8a")
  set(algorithm_triplet arm64-android-26)
elseif(ANDROID_ABI STREQUAL "x86_64")
  set(algorithm_triplet x64-android-26)
else()
  message(FATAL_ERROR "ANDROID_ABI is '${ANDROID_ABI}'; the library is built for arm64-v8a (devices) and "
    "x86_64 (the emulator): processes are 64-bit ones.")
endif()
if(NOT ANDROID_PLATFORM MATCHES "^(android-)?([0-9]+)$" OR CMAKE_MATCH_2 LESS 26)
  message(FATAL_ERROR "ANDROID_PLATFORM is '${ANDROID_PLATFORM}', but must be android-26 or later.")
endif()
if(NOT ANDROID_STL STREQUAL "c++_static")
  message(FATAL_ERROR "ANDROID_STL is '${ANDROID_STL}', but must be c++_static: the library has its own "
    "C++ runtime, hidden, whichever an application uses.")
endif()

if(DEFINED ENV{VCPKG_ROOT})
  set(ENV{ANDROID_NDK_HOME} ${algorithm_ndk})  # where vcpkg's own builds look
  set(VCPKG_CHAINLOAD_TOOLCHAIN_FILE ${algorithm_ndk_toolchain})
  set(VCPKG_OVERLAY_TRIPLETS ${CMAKE_CURRENT_LIST_DIR}/triplets)
  set(VCPKG_TARGET_TRIPLET ${algorithm_triplet})
  include($ENV{VCPKG_ROOT}/scripts/buildsystems/vcpkg.cmake)
else()
  include(${algorithm_ndk_toolchain})
  # Searches are confined to these folders.
  list(APPEND CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH})
endif()

# Older ones have a C++ runtime that is laid out for 4 KB pages.
if(ANDROID_NDK_MAJOR LESS 27)
  message(FATAL_ERROR "The NDK in ${algorithm_ndk} is r${ANDROID_NDK_MAJOR}, which is too old for "
    "devices with 16 KB pages: r27 or newer is needed.")
endif()
