#include "tools/photos/vips_library.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "base/image_size.h"
#include "tools/metadata/photoshop_block.h"
#include "tools/photos/photo_faults.h"
#include "tools/photos/pixel_layout.h"
#include "tools/photos/webp_container.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

constexpr char kLibrary[] = "libvips.so.42";  // has had this interface since 2015
constexpr char kPackage[] = "libvips42";

struct VipsImage;

/// The functions that are used, as libvips' headers declare them. (Its development package brings
/// some 200 others, which nobody should need to build the tool.)
struct Vips {
  int (*vips_init)(const char*);
  int (*vips_concurrency_set)(int);
  void (*vips_thread_shutdown)();
  const char* (*vips_error_buffer)();
  void (*vips_error_clear)();
  VipsImage* (*vips_image_new_from_buffer)(const void*, std::size_t, const char*, ...);
  VipsImage* (*vips_image_new_from_memory)(const void*, std::size_t, int, int, int, int);
  int (*vips_image_get_width)(const VipsImage*);
  int (*vips_image_get_height)(const VipsImage*);
  int (*vips_image_get_bands)(const VipsImage*);
  int (*vips_image_get_format)(const VipsImage*);
  std::size_t (*vips_image_get_typeof)(const VipsImage*, const char*);
  int (*vips_image_get_blob)(const VipsImage*, const char*, const void**, std::size_t*);
  int (*vips_image_get_int)(const VipsImage*, const char*, int*);
  void (*vips_image_set_blob_copy)(VipsImage*, const char*, const void*, std::size_t);
  int (*vips_colourspace)(VipsImage*, VipsImage**, int, ...);
  int (*vips_copy)(VipsImage*, VipsImage**, ...);
  int (*vips_cast)(VipsImage*, VipsImage**, int, ...);
  void* (*vips_image_write_to_memory)(VipsImage*, std::size_t*);
  int (*vips_image_write_to_buffer)(VipsImage*, const char*, void**, std::size_t*, ...);
  void (*g_object_unref)(void*);
  void (*g_free)(void*);
  unsigned (*g_log_set_handler)(const char*, int, void (*)(const char*, int, const char*, void*),
                                void*);

  std::string whyNot;  ///< set when it can't be used
};

constexpr int kUchar = 0;        // VIPS_FORMAT_UCHAR
constexpr int kUshort = 2;       // VIPS_FORMAT_USHORT
constexpr int kSrgb = 22;        // VIPS_INTERPRETATION_sRGB
constexpr int kWarnings = 0xFF;  // all levels of GLib's log, and fatal ones

#define ALG_LOAD(name) load(library, #name, vips.name)

template <typename Function>
bool load(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

Vips loadVips() {
  Vips vips{};
  void* const library =
      dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);  // never closed: GLib does not unload
  if (library == nullptr) {
    vips.whyNot = fmt::format("which is missing: install {}", kPackage);
    return vips;
  }
  const bool complete =
      ALG_LOAD(vips_init) && ALG_LOAD(vips_concurrency_set) && ALG_LOAD(vips_thread_shutdown) &&
      ALG_LOAD(vips_error_buffer) && ALG_LOAD(vips_error_clear) &&
      ALG_LOAD(vips_image_new_from_buffer) && ALG_LOAD(vips_image_new_from_memory) &&
      ALG_LOAD(vips_image_get_width) && ALG_LOAD(vips_image_get_height) &&
      ALG_LOAD(vips_image_get_bands) && ALG_LOAD(vips_image_get_format) &&
      ALG_LOAD(vips_image_get_typeof) && ALG_LOAD(vips_image_get_blob) &&
      ALG_LOAD(vips_image_get_int) && ALG_LOAD(vips_image_set_blob_copy) &&
      ALG_LOAD(vips_colourspace) && ALG_LOAD(vips_copy) && ALG_LOAD(vips_cast) &&
      ALG_LOAD(vips_image_write_to_memory) && ALG_LOAD(vips_image_write_to_buffer) &&
      ALG_LOAD(g_object_unref) && ALG_LOAD(g_free) && ALG_LOAD(g_log_set_handler);
  if (!complete || vips.vips_init("camera-effects") != 0) {
    vips.whyNot = fmt::format("which can't be used as it is installed: reinstall {}", kPackage);
    return vips;
  }
  // What matters of its warnings comes as errors.
  vips.g_log_set_handler(
      "VIPS", kWarnings, [](const char*, int, const char*, void*) {}, nullptr);
  return vips;
}

#undef ALG_LOAD

/// Throws UserError when it can't be used.
const Vips& vipsFor(PictureFormat format, const std::filesystem::path& path) {
  static const Vips vips = loadVips();
  if (!vips.whyNot.empty()) {
    throw UserError(fmt::format("{}: {} files are read and written with libvips, {}", path.string(),
                                nameOf(format), vips.whyNot));
  }
  return vips;
}

/// What libvips keeps of one piece of work.
class Session {
 public:
  explicit Session(const Vips& vips) : vips_(vips) { vips_.vips_error_clear(); }
  ~Session() {
    for (VipsImage* image : images_) {
      vips_.g_object_unref(image);
    }
    vips_.vips_thread_shutdown();
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Keeps an image until the end; null stays null.
  VipsImage* keep(VipsImage* image) {
    if (image != nullptr) {
      images_.push_back(image);
    }
    return image;
  }

  /// The first line of what went wrong.
  std::string error() const {
    const std::string_view all = vips_.vips_error_buffer();
    return std::string(all.substr(0, all.find('\n')));
  }

 private:
  const Vips& vips_;
  std::vector<VipsImage*> images_;
};

std::vector<uint8_t> blobOf(const Vips& vips, const VipsImage* image, const char* name) {
  const void* data = nullptr;
  std::size_t size = 0;
  if (vips.vips_image_get_typeof(image, name) == 0 ||
      vips.vips_image_get_blob(image, name, &data, &size) != 0) {
    return {};
  }
  const auto* const bytes = static_cast<const uint8_t*>(data);
  return {bytes, bytes + size};
}

MetadataBlocks blocksOf(const Vips& vips, const VipsImage* image) {
  using std::literals::operator""sv;
  constexpr std::string_view kPrefix = "Exif\0\0"sv;
  MetadataBlocks blocks{.exif = blobOf(vips, image, "exif-data"),
                        .profile = blobOf(vips, image, "icc-profile-data"),
                        .photoshop = blobOf(vips, image, "photoshop-data")};
  if (blocks.photoshop.empty()) {
    blocks.photoshop = iptcResource(blobOf(vips, image, "iptc-data"));
  }
  if (asText(blocks.exif).starts_with(kPrefix)) {
    blocks.exif.erase(blocks.exif.begin(),
                      blocks.exif.begin() + static_cast<std::ptrdiff_t>(kPrefix.size()));
  }
  blocks.xmp = asText(blobOf(vips, image, "xmp-data"));
  return blocks;
}

/// Pixels of three or four samples of 8 bits; null on failure.
VipsImage* asSamples(const Vips& vips, Session& session, VipsImage* image) {
  VipsImage* rgb = nullptr;
  if (vips.vips_colourspace(image, &rgb, kSrgb, nullptr) != 0) {
    return nullptr;
  }
  session.keep(rgb);
  VipsImage* bytes = nullptr;
  return vips.vips_cast(rgb, &bytes, kUchar, nullptr) == 0 ? session.keep(bytes) : nullptr;
}

/// Empty on failure.
Photo decodePixels(const Vips& vips, Session& session, VipsImage* image, bool& transparent) {
  VipsImage* const bytes = asSamples(vips, session, image);
  const int bands = bytes != nullptr ? vips.vips_image_get_bands(bytes) : 0;
  std::size_t size = 0;
  const std::unique_ptr<void, void (*)(void*)> pixels(
      bands == 3 || bands == 4 ? vips.vips_image_write_to_memory(bytes, &size) : nullptr,
      vips.g_free);
  if (!pixels) {
    return {};
  }
  Photo photo = blankPhoto(vips.vips_image_get_width(bytes), vips.vips_image_get_height(bytes));
  fromRgb(static_cast<const uint8_t*>(pixels.get()), bands, photo);
  transparent = bands == 4 && layOverWhite(photo);
  return photo;
}

/// The image of a file, not yet decoded; null on failure.
VipsImage* open(const Vips& vips, Session& session, Bytes file, bool strict,
                const std::filesystem::path& path) {
  VipsImage* const image = session.keep(vips.vips_image_new_from_buffer(
      file.data(), file.size(), strict ? "[fail_on=error]" : "[fail_on=none]", nullptr));
  if (image != nullptr &&
      !isPictureSize(vips.vips_image_get_width(image), vips.vips_image_get_height(image))) {
    throw BadInput(
        tooLarge(path, vips.vips_image_get_width(image), vips.vips_image_get_height(image)));
  }
  return image;
}

}  // namespace

PhotoFile decodeWithVips(PictureFormat format, Bytes file, const std::filesystem::path& path,
                         const PhotoOptions& options) {
  const Vips& vips = vipsFor(format, path);
  Session session(vips);
  PhotoFile result;
  result.origin = {.path = path, .format = format};
  bool transparent = false;
  VipsImage* image = open(vips, session, file, true, path);
  if (image != nullptr) {
    result.photo = decodePixels(vips, session, image, transparent);
  }
  if (!result.photo.pixels) {
    const std::string why = session.error();
    image = open(vips, session, file, false, path);
    if (image != nullptr) {
      result.photo = decodePixels(vips, session, image, transparent);
    }
    if (!result.photo.pixels) {
      throw BadInput(
          fmt::format("{}: damaged, or of a kind that can't be read: {}", path.string(), why));
    }
    refuseOrNote(path, options, fmt::format("damaged: parts of it are lost ({})", why));
    result.origin.damaged = true;
  }
  if (transparent) {
    note(fmt::format("{}: its transparent parts are laid over white", path.string()));
  }
  if (vips.vips_image_get_format(image) >= kUshort) {
    note(fmt::format("{}: more than 8 bits a sample become 8", path.string()));
  }
  result.metadata = Metadata(blocksOf(vips, image), path);
  // HEIC and AVIF turn by themselves; a TIFF's own tags are not part of an Exif block.
  int orientation = 1;
  if (format == PictureFormat::kTiff && vips.vips_image_get_typeof(image, "orientation") != 0) {
    vips.vips_image_get_int(image, "orientation", &orientation);
  }
  if (format != PictureFormat::kWebp) {
    result.metadata = result.metadata.withOrientation(orientation);
  }
  return result;
}

std::vector<uint8_t> encodeWithVips(PictureFormat format, const Photo& photo, int quality,
                                    const MetadataBlocks& blocks,
                                    const std::filesystem::path& path) {
  const Vips& vips = vipsFor(format, path);
  Session session(vips);
  const std::vector<uint8_t> rgb = toRgb(photo);
  VipsImage* const pixels = session.keep(vips.vips_image_new_from_memory(
      rgb.data(), rgb.size(), photo.width, photo.height, 3, kUchar));
  VipsImage* image = nullptr;
  if (pixels == nullptr || vips.vips_copy(pixels, &image, "interpretation", kSrgb, nullptr) != 0) {
    throw std::bad_alloc();
  }
  session.keep(image);
  const auto set = [&](const char* name, Bytes bytes) {
    if (!bytes.empty()) {
      vips.vips_image_set_blob_copy(image, name, bytes.data(), bytes.size());
    }
  };
  if (format == PictureFormat::kTiff) {
    set("icc-profile-data", blocks.profile);
    set("xmp-data", asBytes(blocks.xmp));
    set("photoshop-data", blocks.photoshop);  // as for IPTC alone, it may cut that
  }
  const std::string target = format == PictureFormat::kWebp
                                 ? fmt::format(".webp[Q={}]", quality)
                                 : ".tif[compression=deflate,predictor=horizontal]";
  void* file = nullptr;
  std::size_t size = 0;
  if (vips.vips_image_write_to_buffer(image, target.c_str(), &file, &size, nullptr) != 0) {
    throw UserError(fmt::format("{}: can't be written as {}: {}", path.string(), nameOf(format),
                                session.error()));
  }
  const std::unique_ptr<void, void (*)(void*)> owner(file, vips.g_free);
  const auto* const bytes = static_cast<const uint8_t*>(file);
  if (format == PictureFormat::kWebp) {  // libvips would write Exif anew
    return webpWith({bytes, size}, photo.width, photo.height, blocks);
  }
  return {bytes, bytes + size};
}

}  // namespace alg::tool
