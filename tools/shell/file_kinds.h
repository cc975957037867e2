// Kinds of files that options and arguments take.
#pragma once

namespace alg::tool {

/// A kind of file. Options and arguments that take one have its type name, by which completion
/// knows what to offer.
struct FileKind {
  const char* typeName;
  const char* endings;  ///< of file names; "any" for all files, "folders" for none
};

inline constexpr FileKind kPhotoFile{
    "PHOTO", "jpg jpeg png webp tif tiff heic avif JPG JPEG PNG WEBP TIF TIFF HEIC AVIF"};
inline constexpr FileKind kPngFile{"PNG", "png PNG"};
inline constexpr FileKind kAnyFile{"FILE", "any"};
inline constexpr FileKind kFolder{"FOLDER", "folders"};

}  // namespace alg::tool
