#include "tools/photos/picture_format.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <string>

#include "tools/shell/failure.h"

namespace alg::tool {
namespace {

using namespace std::string_view_literals;

struct Ending {
  std::string_view text;
  PictureFormat format;
};
constexpr Ending kEndings[] = {{".jpg", PictureFormat::kJpeg},  {".jpeg", PictureFormat::kJpeg},
                               {".jpe", PictureFormat::kJpeg},  {".png", PictureFormat::kPng},
                               {".webp", PictureFormat::kWebp}, {".tif", PictureFormat::kTiff},
                               {".tiff", PictureFormat::kTiff}, {".heic", PictureFormat::kHeic},
                               {".heif", PictureFormat::kHeic}, {".avif", PictureFormat::kAvif}};

constexpr std::string_view kRawEndings[] = {".dng", ".nef", ".cr2", ".cr3", ".arw", ".orf",
                                            ".rw2", ".pef", ".srw", ".raf", ".nrw"};

std::string endingOf(const std::filesystem::path& path) {
  std::string ending = path.extension().string();
  std::ranges::transform(ending, ending.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending;
}

bool isRaw(const std::filesystem::path& path) {
  return std::ranges::count(kRawEndings, endingOf(path)) > 0;
}

/// The brand of a file of ISO's base media format: of HEIC, AVIF, videos.
std::string_view brandOf(std::string_view text) {
  return text.substr(0, 8).ends_with("ftyp") ? text.substr(8, 4) : std::string_view();
}

/// The format that a name asks for.
PictureFormat formatNamed(const std::filesystem::path& path) {
  const std::string ending = endingOf(path);
  const auto* const known = std::ranges::find(kEndings, ending, &Ending::text);
  return known == std::end(kEndings) ? PictureFormat::kJpeg : known->format;
}

bool isOnlyRead(PictureFormat format) {
  return format == PictureFormat::kHeic || format == PictureFormat::kAvif;
}

}  // namespace

PictureFormat formatOf(Bytes file, const std::filesystem::path& path) {
  const std::string_view text = asText(file.first(std::min<std::size_t>(file.size(), 16)));
  if (text.starts_with("\xFF\xD8"sv)) {
    return PictureFormat::kJpeg;
  }
  if (text.starts_with("\x89PNG\r\n\x1A\n"sv)) {
    return PictureFormat::kPng;
  }
  if (text.starts_with("RIFF"sv) && text.size() >= 12 && text.substr(8, 4) == "WEBP") {
    return PictureFormat::kWebp;
  }
  if ((text.starts_with("II*\0"sv) || text.starts_with("MM\0*"sv)) && !isRaw(path)) {
    return PictureFormat::kTiff;
  }
  const std::string_view brand = text.size() >= 12 ? brandOf(text) : std::string_view();
  if (brand == "avif" || brand == "avis") {
    return PictureFormat::kAvif;
  }
  constexpr std::string_view kHeic[] = {"heic", "heix", "heim", "heis", "mif1", "msf1", "hevc"};
  return std::ranges::count(kHeic, brand) > 0 ? PictureFormat::kHeic : PictureFormat::kOther;
}

std::string_view describeOther(Bytes file, const std::filesystem::path& path) {
  const std::string_view text = asText(file.first(std::min<std::size_t>(file.size(), 16)));
  if (text.empty()) {
    return "empty, ";
  }
  if (isRaw(path)) {
    return "a camera's raw file, which has to be developed first, ";
  }
  constexpr std::pair<std::string_view, std::string_view> kBegins[] = {
      {"GIF8", "a GIF, "},
      {"BM", "a BMP, "},
      {"8BPS", "a Photoshop document, "},
      {"%PDF", "a PDF, "},
      {"\xFF\x0A", "a JPEG XL, "},
      {"\0\0\0\x0CJXL "sv, "a JPEG XL, "},
      {"\0\0\0\x0CjP  "sv, "a JPEG 2000, "}};
  const auto* const known = std::ranges::find_if(
      kBegins, [&](const auto& entry) { return text.starts_with(entry.first); });
  if (known != std::end(kBegins)) {
    return known->second;
  }
  return !brandOf(text).empty() ? "a video, " : "";
}

bool namedAsPhoto(const std::filesystem::path& path) {
  return std::ranges::count(kEndings, endingOf(path), &Ending::text) > 0;
}

std::filesystem::path writableName(std::filesystem::path path) {
  return isOnlyRead(formatNamed(path)) ? path.replace_extension(".jpg") : path;
}

PictureFormat formatToWrite(const std::filesystem::path& path) {
  const PictureFormat format = formatNamed(path);
  if (isOnlyRead(format)) {
    throw WrongUse(
        fmt::format("{}: {} files are only read; name the output .jpg, .png, .webp or "
                    ".tif",
                    path.string(), nameOf(format)));
  }
  return format;
}

std::string_view nameOf(PictureFormat format) {
  switch (format) {
    case PictureFormat::kJpeg:
      return "JPEG";
    case PictureFormat::kPng:
      return "PNG";
    case PictureFormat::kWebp:
      return "WebP";
    case PictureFormat::kTiff:
      return "TIFF";
    case PictureFormat::kHeic:
      return "HEIC";
    case PictureFormat::kAvif:
      return "AVIF";
    default:
      return "other";
  }
}

}  // namespace alg::tool
