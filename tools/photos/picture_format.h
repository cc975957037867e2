// Formats of picture files, by their first bytes and by the endings of their names.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "tools/metadata/jpeg_layout.h"

namespace alg::tool {

enum class PictureFormat : uint8_t { kJpeg, kPng, kWebp, kTiff, kHeic, kAvif, kOther };

/// The format of a file. `kOther` for what no photo begins with, and for cameras' raw files, which
/// are TIFF files with a small picture.
PictureFormat formatOf(Bytes file, const std::filesystem::path& path);
/// What a file of no supported format is, for sentences: "a GIF, "; nothing when that is unknown.
std::string_view describeOther(Bytes file, const std::filesystem::path& path);

/// Whether an input has a name that photos have.
bool namedAsPhoto(const std::filesystem::path& path);
/// The format that an output's name asks for; JPEG without a known ending. Throws WrongUse for
/// formats that are only read.
PictureFormat formatToWrite(const std::filesystem::path& path);

/// The name of an output that was made from an input's: with the ending of a JPEG where the format
/// is only read.
std::filesystem::path writableName(std::filesystem::path path);

std::string_view nameOf(PictureFormat format);

}  // namespace alg::tool
