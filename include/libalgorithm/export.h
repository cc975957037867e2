/// @file
/// Symbol visibility of the public interface.
#pragma once

/// Marks what the library exports. Everything else in it is hidden; the exported names are also
/// listed in cmake/libAlgorithm.map.
#define ALGORITHM_API __attribute__((visibility("default")))
