#include "tools/gallery/gallery.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tools/batch/photo_folder.h"
#include "tools/effects/photo_effect.h"
#include "tools/files/files.h"
#include "tools/gallery/gallery_page.h"
#include "tools/photos/jpeg_photo.h"
#include "tools/photos/photo_file.h"
#include "tools/shell/console.h"
#include "tools/shell/interrupts.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

constexpr int kPhotoSide = 1600;  // the longer side of a large photo keeps this many pixels
constexpr int kCardSide = 480;    // and on the cards
constexpr std::string_view kMarker = R"(<meta name="generator" content="camera-effects gallery">)";

struct Entry {
  std::string name;
  std::string about;  ///< a few words below the name
  std::string group;  ///< "original", "filters" or "classic", as the page calls them
};

/// Text for JSON inside an HTML script element. Braces are escaped so that no file name can look
/// like a placeholder.
std::string jsonText(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x20 || c == '"' || c == '\\' || c == '<' || c == '{') {
      result += fmt::format("\\u{:04x}", code);
    } else {
      result += c;
    }
  }
  return result + '"';
}

std::string htmlText(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (std::string_view("&<>\"{").find(c) == std::string_view::npos) {
      result += c;
    } else {
      result += fmt::format("&#{};", static_cast<int>(c));
    }
  }
  return result;
}

void fillIn(std::string& page, std::string_view placeholder, std::string_view value) {
  for (std::size_t at = 0; (at = page.find(placeholder, at)) != std::string::npos;) {
    page.replace(at, placeholder.size(), value);
    at += value.size();
  }
}

/// Collects pictures in the folder and their entries for the page.
class GalleryWriter {
 public:
  /// @param photo  whose colour profile all pictures get
  GalleryWriter(const fs::path& folder, const PhotoFile& photo, const PhotoOptions& options)
      : folder_(folder),
        quality_(options.quality.value_or(photo.origin.quality)),
        sampling_(options.sampling.value_or(photo.origin.sampling)),
        segments_(Metadata().withProfile(photo.metadata.profile()).segments(0, 0, folder, {})) {
    fs::create_directories(folder / "pictures/small");
  }

  void add(const Entry& entry, const Photo& photo) {
    const std::string file = fmt::format("pictures/{}.jpg", entry.name);
    const std::vector<uint8_t> jpeg = encodeJpegPhoto(photo, quality_, sampling_, segments_);
    writeFile(folder_ / file, jpeg);

    // The codec reduces while it decodes, which is the quickest way to a small picture.
    const std::string small = fmt::format("pictures/small/{}.jpg", entry.name);
    const DecodedJpeg card = decodeJpeg(jpeg, {.keepSide = kCardSide}).value();
    writeFile(folder_ / small, encodeJpegPhoto(card, quality_, sampling_, segments_));

    entries_ += fmt::format(
        "{}\n{{\"name\": {}, \"about\": {}, \"group\": {}, \"file\": {}, \"width\": {}, "
        "\"height\": {}, \"small\": {}, \"smallWidth\": {}, \"smallHeight\": {}}}",
        entries_.empty() ? "" : ",", jsonText(entry.name), jsonText(entry.about),
        jsonText(entry.group), jsonText(file), photo.width, photo.height, jsonText(small),
        card.width, card.height);
  }

  /// @param index  of the page that all photos are on; empty for none
  void writePage(const fs::path& photo, std::string_view index) {
    std::string page(kGalleryPage);
    fillIn(page, "{{photo}}", htmlText(photo.filename().string()));
    fillIn(page, "{{index}}",
           index.empty() ? "" : fmt::format("<a href=\"{}\">All photos</a>. ", index));
    fillIn(page, "{{entries}}", entries_);
    writeFile(folder_ / "index.html", {reinterpret_cast<const uint8_t*>(page.data()), page.size()});
  }

 private:
  fs::path folder_;
  int quality_;
  JpegSampling sampling_;
  std::vector<uint8_t> segments_;
  std::string entries_;  // the elements of a JSON array
};

/// Whether nothing is lost when the folder goes: it is empty, or holds only an earlier gallery.
bool replaceable(const fs::path& folder) {
  if (fs::is_empty(folder)) {
    return true;
  }
  const bool onlyOurs = std::all_of(fs::directory_iterator(folder), fs::directory_iterator(),
                                    [](const fs::directory_entry& entry) {
                                      return entry.path().filename() == "index.html" ||
                                             entry.path().filename() == "photos" ||
                                             entry.path().filename() == "pictures";
                                    });
  if (!onlyOurs || !fs::is_regular_file(folder / "index.html")) {
    return false;
  }
  const std::vector<uint8_t> page = readFile(folder / "index.html");
  return std::search(page.begin(), page.end(), kMarker.begin(), kMarker.end()) != page.end();
}

/// The folder to make, without links and trailing slash.
fs::path galleryFolder(const fs::path& wanted) {
  std::error_code error;
  const fs::path folder = fs::weakly_canonical(fs::absolute(wanted), error);
  if (fs::exists(folder) && !(fs::is_directory(folder) && replaceable(folder))) {
    throw UserError(
        fmt::format("{} exists and is no earlier gallery; name another folder", wanted.string()));
  }
  return folder.has_filename() ? folder : folder.parent_path();
}

/// Draws a photo under every effect, and its page. Throws UserError.
void drawPhoto(const fs::path& path, const fs::path& folder, const PhotoOptions& options,
               std::string_view index, EffectPictures& pictures, Progress& progress) {
  const PhotoFile file = readPhoto(path, options, [](int, int) { return kPhotoSide; });
  const Photo& photo = file.photo;
  GalleryWriter gallery(folder, file, options);
  gallery.add({"Original", path.filename().string(), "original"}, photo);
  for (const Operation* effect : effects()) {
    throwIfInterrupted();
    progress.begin(effect->name);
    std::string about = effect->shows;
    Photo changed = copyOf(photo);
    try {
      applyEffect(*effect, presetCall(*effect), Way::kPhoto, pictures, changed);
    } catch (const PictureError& missing) {
      note(fmt::format("{}; the gallery has the photo as it is", missing.what()));
      about = "its picture is missing";
    }
    gallery.add({effect->name, about, effect->pipeline.runs ? "filters" : "classic"}, changed);
    progress.end();
  }
  gallery.writePage(path, index);
}

/// A file name as part of an address.
std::string addressText(std::string_view name) {
  constexpr std::string_view kPlain = "-._~";
  std::string result;
  for (const char c : name) {
    const auto code = static_cast<unsigned char>(c);
    const bool letter = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    result += letter || kPlain.find(c) != std::string_view::npos ? std::string(1, c)
                                                                 : fmt::format("%{:02X}", code);
  }
  return result;
}

/// Draws all photos of the folder `from`, each on a page of its own, and a page of them all.
/// Returns whether every photo could be drawn. Throws UserError.
bool drawFolder(const fs::path& from, const fs::path& to, const PhotoOptions& options) {
  const std::vector<fs::path> found = photosIn(from, to, false).photos;
  EffectPictures pictures;
  Progress progress(found.size() * effects().size());
  std::string cards;
  std::size_t drawn = 0;
  for (const fs::path& photo : found) {
    const std::string name = photo.filename().string();
    const fs::path own = to / "photos" / photo.filename();
    try {
      drawPhoto(photo, own, options, "../../index.html", pictures, progress);
    } catch (const UserError& error) {
      complain(error.what());
      std::error_code ignored;
      fs::remove_all(own, ignored);
      continue;
    }
    cards += fmt::format(
        "\n<li><a href=\"photos/{0}/index.html\"><img "
        "src=\"photos/{0}/pictures/small/Original.jpg\" alt=\"\" loading=\"lazy\">"
        "<span>{1}</span></a></li>",
        addressText(name), htmlText(name));
    ++drawn;
  }
  if (drawn == 0) {
    throw BadInput(fmt::format("{}: no photos in this folder", from.string()));
  }
  std::string page(kGalleryIndex);
  fillIn(page, "{{title}}", htmlText(fs::canonical(from).filename().string()));
  fillIn(page, "{{count}}", std::to_string(drawn));
  fillIn(page, "{{photos}}", cards);
  writeFile(to / "index.html", {reinterpret_cast<const uint8_t*>(page.data()), page.size()});
  return drawn == found.size();
}

}  // namespace

bool makeGallery(const GalleryRequest& request) {
  const fs::path target = galleryFolder(request.folder);
  TemporaryFolder folder(target);
  bool complete = true;
  if (fs::is_directory(request.photo)) {
    complete = drawFolder(request.photo, folder.path(), request.options);
  } else {
    EffectPictures pictures;
    Progress progress(effects().size());
    drawPhoto(request.photo, folder.path(), request.options, "", pictures, progress);
  }
  folder.moveToTarget();
  return complete;
}

}  // namespace alg::tool
