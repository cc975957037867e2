// How much memory a photo will take, told from the head of its file.
#pragma once

#include <cstddef>
#include <filesystem>

namespace alg::tool {

/// An estimate, rather too high, of the bytes that reading, changing and writing a photo take at
/// once. Of files that are no JPEG or can't be read, by their length.
std::size_t memoryFor(const std::filesystem::path& path);

}  // namespace alg::tool
