// What is said of photos that can't be read, or not whole.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tools/photos/photo_options.h"

namespace alg::tool {

/// The sentence for a photo that is larger than can be decoded.
std::string tooLarge(const std::filesystem::path& path, int64_t width, int64_t height);

/// A photo that is not whole: throws BadInput, or notes it when the user wants what is left.
/// @param what  is lost: a few words that begin with "damaged"
void refuseOrNote(const std::filesystem::path& path, const PhotoOptions& options,
                  std::string_view what);

/// Throws BadInput when an output is the damaged photo itself: what is left never replaces it.
void neverOverDamaged(const std::filesystem::path& photo, const std::filesystem::path& output);

}  // namespace alg::tool
