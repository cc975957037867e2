# Static libraries for 64-bit Arm devices from API level 26 on.
set(VCPKG_TARGET_ARCHITECTURE arm64)
set(VCPKG_CRT_LINKAGE static)
set(VCPKG_LIBRARY_LINKAGE static)
set(VCPKG_CMAKE_SYSTEM_NAME Android)
set(VCPKG_CMAKE_SYSTEM_VERSION 26)
set(VCPKG_MAKE_BUILD_TRIPLET "--host=aarch64-linux-android")
set(VCPKG_CMAKE_CONFIGURE_OPTIONS -DANDROID_ABI=arm64-v8a)
set(VCPKG_BUILD_TYPE release)
# As for the library's own sources, which lose the protection when one object lacks it.
set(VCPKG_C_FLAGS -mbranch-protection=standard)
set(VCPKG_CXX_FLAGS -mbranch-protection=standard)
