# find_package(Algorithm): the imported target Algorithm::Algorithm.
include(${CMAKE_CURRENT_LIST_DIR}/AlgorithmTargets.cmake)
