# Highway as the target hwy::hwy, of the versions that kernels have been tried with: by its config file,
# or by headers and library where it was installed without one. ALGORITHM_HIGHWAY_INCLUDE_DIR says where
# its headers are.
set(highway_least 1.0.3)
set(highway_below 1.4)

find_package(hwy ${highway_least}...<${highway_below} QUIET CONFIG)
if(NOT hwy_FOUND)
  find_path(ALGORITHM_HIGHWAY_INCLUDE_DIR hwy/highway.h REQUIRED)
  find_library(ALGORITHM_HIGHWAY_LIBRARY hwy REQUIRED)
  # Newer ones have their version in base.h.
  set(highway_headers "")
  foreach(header highway.h base.h)
    file(STRINGS ${ALGORITHM_HIGHWAY_INCLUDE_DIR}/hwy/${header} lines
      REGEX "^#define HWY_(MAJOR|MINOR|PATCH) +[0-9]+")
    list(APPEND highway_headers ${lines})
  endforeach()
  set(hwy_VERSION "")
  foreach(part MAJOR MINOR PATCH)
    if(NOT "${highway_headers}" MATCHES "HWY_${part} +([0-9]+)")
      message(FATAL_ERROR "${ALGORITHM_HIGHWAY_INCLUDE_DIR}/hwy has no HWY_${part}: is that Highway?")
    endif()
    list(APPEND hwy_VERSION ${CMAKE_MATCH_1})
  endforeach()
  list(JOIN hwy_VERSION . hwy_VERSION)
  if(hwy_VERSION VERSION_LESS highway_least OR NOT hwy_VERSION VERSION_LESS highway_below)
    message(FATAL_ERROR "Highway in ${ALGORITHM_HIGHWAY_INCLUDE_DIR} is ${hwy_VERSION}, "
      "but ${highway_least} or newer, below ${highway_below}, is needed.")
  endif()
  message(STATUS "Found Highway ${hwy_VERSION} without its config file: ${ALGORITHM_HIGHWAY_LIBRARY}")

  add_library(hwy::hwy UNKNOWN IMPORTED)
  if(ALGORITHM_HIGHWAY_LIBRARY MATCHES "[.]a$")
    set(highway_linkage HWY_STATIC_DEFINE)
  else()
    set(highway_linkage HWY_SHARED_DEFINE)  # its names are another library's, whatever is hidden here
  endif()
  set_target_properties(hwy::hwy PROPERTIES
    IMPORTED_LOCATION ${ALGORITHM_HIGHWAY_LIBRARY}
    INTERFACE_COMPILE_DEFINITIONS ${highway_linkage}
    INTERFACE_INCLUDE_DIRECTORIES ${ALGORITHM_HIGHWAY_INCLUDE_DIR})
endif()
