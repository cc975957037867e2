# The library's dependencies, as two interface targets: algorithm_dependencies (codecs, SIMD,
# threads) and algorithm_log (the platform's log; tests replace it with a capture of their own).

find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
include(cmake/highway.cmake)
find_package(Threads REQUIRED)

# The platform's log; Debian keeps its library and headers in folders of their own.
find_path(ALGORITHM_LOG_INCLUDE_DIR android/log.h PATH_SUFFIXES android REQUIRED)
find_library(ALGORITHM_LOG_LIBRARY log
  PATH_SUFFIXES android ${CMAKE_LIBRARY_ARCHITECTURE}/android REQUIRED)
if(ANDROID)
  set(CMAKE_SKIP_RPATH ON)  # devices find it in their default folders
  # For the packaging script.
  set(ALGORITHM_ANDROID_ABI ${ANDROID_ABI} CACHE INTERNAL "ABI built for")
  set(ALGORITHM_ANDROID_API ${ANDROID_PLATFORM_LEVEL} CACHE INTERNAL "API level built for")
  set(ALGORITHM_ANDROID_NDK ${ANDROID_NDK_MAJOR} CACHE INTERNAL "major version of the NDK")
  set(ALGORITHM_ANDROID_STRIP ${CMAKE_STRIP} CACHE INTERNAL "the NDK's strip")
  include(cmake/notices.cmake)
else()
  get_filename_component(ALGORITHM_LOG_RUNPATH ${ALGORITHM_LOG_LIBRARY} DIRECTORY)
endif()

# jni.h alone is enough: nothing links to a virtual machine.
find_path(ALGORITHM_JNI_INCLUDE_DIR jni.h PATH_SUFFIXES android/nativehelper REQUIRED)

add_library(algorithm_dependencies INTERFACE)
target_include_directories(algorithm_dependencies SYSTEM INTERFACE ${ALGORITHM_LOG_INCLUDE_DIR})
target_link_libraries(algorithm_dependencies INTERFACE
  JPEG::JPEG PNG::PNG algorithm_highway Threads::Threads ${CMAKE_DL_LIBS})

add_library(algorithm_log INTERFACE)
target_link_libraries(algorithm_log INTERFACE ${ALGORITHM_LOG_LIBRARY})

add_library(algorithm_jni_headers INTERFACE)
target_include_directories(algorithm_jni_headers SYSTEM INTERFACE ${ALGORITHM_JNI_INCLUDE_DIR})
