# Stands in for vcpkg's toolchain, which leads on to the NDK's.
if(NOT EXISTS ${VCPKG_OVERLAY_TRIPLETS}/${VCPKG_TARGET_TRIPLET}.cmake)
  message(FATAL_ERROR "no triplet ${VCPKG_TARGET_TRIPLET}")
endif()
include(${VCPKG_CHAINLOAD_TOOLCHAIN_FILE})
