// Symbol visibility of the public interface. The library is built with everything hidden; what a
// public header declares is marked with ALGORITHM_API and listed in cmake/libAlgorithm.map.
#pragma once

#define ALGORITHM_API __attribute__((visibility("default")))
