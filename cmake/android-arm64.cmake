# Build for Android devices with the NDK in ANDROID_NDK_ROOT or ANDROID_NDK_HOME. With VCPKG_ROOT set,
# the libraries of vcpkg.json are built as well; otherwise they come from CMAKE_PREFIX_PATH.
if(DEFINED ENV{ANDROID_NDK_ROOT})
  set(algorithm_ndk $ENV{ANDROID_NDK_ROOT})
elseif(DEFINED ENV{ANDROID_NDK_HOME})
  set(algorithm_ndk $ENV{ANDROID_NDK_HOME})
else()
  message(FATAL_ERROR "Set ANDROID_NDK_ROOT to the folder of an Android NDK, r26 or newer.")
endif()
set(algorithm_ndk_toolchain ${algorithm_ndk}/build/cmake/android.toolchain.cmake)

set(ANDROID_ABI arm64-v8a)
set(ANDROID_PLATFORM android-26)
set(ANDROID_STL c++_static)
if(DEFINED ENV{VCPKG_ROOT})
  set(ENV{ANDROID_NDK_HOME} ${algorithm_ndk})  # where vcpkg's own builds look
  set(VCPKG_CHAINLOAD_TOOLCHAIN_FILE ${algorithm_ndk_toolchain})
  set(VCPKG_OVERLAY_TRIPLETS ${CMAKE_CURRENT_LIST_DIR}/triplets)
  set(VCPKG_TARGET_TRIPLET arm64-android-26)
  include($ENV{VCPKG_ROOT}/scripts/buildsystems/vcpkg.cmake)
else()
  include(${algorithm_ndk_toolchain})
  # Searches are confined to these folders.
  list(APPEND CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH})
endif()

if(ANDROID_NDK_MAJOR LESS 26)
  message(FATAL_ERROR "NDK ${ANDROID_NDK_MAJOR} is too old: r26 or newer is needed.")
endif()
