# What the library stands on, as two interface targets: algorithm_dependencies (codecs, SIMD,
# threads) and algorithm_log (the platform's log; tests put their own capture in its place).

find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
find_package(hwy REQUIRED CONFIG)
find_package(Threads REQUIRED)

# The platform's log; Debian keeps its library and headers in folders of their own.
find_path(ALGORITHM_LOG_INCLUDE_DIR android/log.h PATH_SUFFIXES android REQUIRED)
find_library(ALGORITHM_LOG_LIBRARY log
  PATH_SUFFIXES android ${CMAKE_LIBRARY_ARCHITECTURE}/android REQUIRED)
if(ANDROID)
  set(CMAKE_SKIP_RPATH ON)  # devices have it where they look
  # For the packaging script.
  set(ALGORITHM_ANDROID_API ${ANDROID_PLATFORM_LEVEL} CACHE INTERNAL "API level built for")
  set(ALGORITHM_ANDROID_NDK ${ANDROID_NDK_MAJOR} CACHE INTERNAL "major version of the NDK")
else()
  get_filename_component(ALGORITHM_LOG_RUNPATH ${ALGORITHM_LOG_LIBRARY} DIRECTORY)
endif()

# jni.h alone is enough: nothing links to a virtual machine.
find_path(ALGORITHM_JNI_INCLUDE_DIR jni.h PATH_SUFFIXES android/nativehelper REQUIRED)

add_library(algorithm_dependencies INTERFACE)
target_include_directories(algorithm_dependencies SYSTEM INTERFACE ${ALGORITHM_LOG_INCLUDE_DIR})
target_link_libraries(algorithm_dependencies INTERFACE
  JPEG::JPEG PNG::PNG hwy::hwy Threads::Threads ${CMAKE_DL_LIBS})
# One vector target beside the plain code: AVX2 on x86-64, NEON alone on arm64.
target_compile_definitions(algorithm_dependencies INTERFACE
  HWY_DISABLED_TARGETS=\(HWY_SSSE3|HWY_SSE4|HWY_AVX3|HWY_AVX3_DL|HWY_SVE|HWY_SVE2|HWY_SVE_256|HWY_SVE2_128\))

add_library(algorithm_log INTERFACE)
target_link_libraries(algorithm_log INTERFACE ${ALGORITHM_LOG_LIBRARY})

add_library(algorithm_jni_headers INTERFACE)
target_include_directories(algorithm_jni_headers SYSTEM INTERFACE ${ALGORITHM_JNI_INCLUDE_DIR})
