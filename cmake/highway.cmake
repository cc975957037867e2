# Highway's headers as the target algorithm_highway, of the versions that kernels have been tried with.
# ALGORITHM_HIGHWAY_INCLUDE_DIR says where they are. Its library is not needed: which twin of a kernel a
# machine takes is chosen in kernels/targets.cpp.
set(highway_least 1.0.3)
set(highway_below 1.4)

find_path(ALGORITHM_HIGHWAY_INCLUDE_DIR hwy/highway.h REQUIRED)
# Newer ones have their version in base.h.
set(highway_headers "")
foreach(header highway.h base.h)
  file(STRINGS ${ALGORITHM_HIGHWAY_INCLUDE_DIR}/hwy/${header} lines
    REGEX "^#define HWY_(MAJOR|MINOR|PATCH) +[0-9]+")
  list(APPEND highway_headers ${lines})
endforeach()
set(highway_version "")
foreach(part MAJOR MINOR PATCH)
  if(NOT "${highway_headers}" MATCHES "HWY_${part} +([0-9]+)")
    message(FATAL_ERROR "${ALGORITHM_HIGHWAY_INCLUDE_DIR}/hwy has no HWY_${part}: is that Highway?")
  endif()
  list(APPEND highway_version ${CMAKE_MATCH_1})
endforeach()
list(JOIN highway_version . highway_version)
if(highway_version VERSION_LESS highway_least OR NOT highway_version VERSION_LESS highway_below)
  message(FATAL_ERROR "Highway in ${ALGORITHM_HIGHWAY_INCLUDE_DIR} is ${highway_version}, "
    "but ${highway_least} or newer, below ${highway_below}, is needed.")
endif()
message(STATUS "Found Highway ${highway_version}: ${ALGORITHM_HIGHWAY_INCLUDE_DIR}")

add_library(algorithm_highway INTERFACE)
target_include_directories(algorithm_highway SYSTEM INTERFACE ${ALGORITHM_HIGHWAY_INCLUDE_DIR})
# AVX2 and plain code on x86-64, NEON alone on arm64; AVX-512 in files that ask for it
# (kernels/vector_frame.h). All others that a version of Highway knows are disabled. Later versions split
# NEON by the processor's extensions; the kernels need only the part that all processors have.
file(STRINGS ${ALGORITHM_HIGHWAY_INCLUDE_DIR}/hwy/detect_targets.h highway_splits_neon
  REGEX "^#define HWY_NEON_WITHOUT_AES ")
if(highway_splits_neon)
  set(highway_neon HWY_NEON_WITHOUT_AES)
else()
  set(highway_neon HWY_NEON)
endif()
target_compile_definitions(algorithm_highway INTERFACE
  HWY_DISABLED_TARGETS=\(~\(ALG_AVX512|HWY_AVX2|${highway_neon}|HWY_EMU128|HWY_SCALAR\)\))
# Its own checks, which sanitizers and debug builds would turn on, end in its library.
target_compile_definitions(algorithm_highway INTERFACE HWY_IS_DEBUG_BUILD=0)
