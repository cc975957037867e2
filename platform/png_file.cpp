#include "platform/png_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csetjmp>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "base/image_size.h"
#include "platform/premultiply_rows.h"

namespace alg {
namespace {

/// The most memory that libpng may take for one chunk. The chunks that matter need 768 bytes.
constexpr png_alloc_size_t kMaxChunkBytes = 65536;

[[noreturn]] void leave(png_structp png, png_const_charp /*message*/) { png_longjmp(png, 1); }
void stayQuiet(png_structp /*png*/, png_const_charp /*message*/) {}

FileTime timeOf(const timespec& time) { return {time.tv_sec, time.tv_nsec}; }

/// Limits what a file may claim; of the optional chunks only transparency is read.
void setLimits(png_structp png) {
  constexpr int kAllOthers = -1;
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, kAllOthers);
  png_set_chunk_malloc_max(png, kMaxChunkBytes);
  png_set_user_limits(png, kMaxPictureSide, kMaxPictureSide);
}

/// Asks for 8-bit R, G, B, A from every kind of file. Sample values stay as they are: gamma and
/// colour profiles are not applied.
void requestRgba(png_structp png) {
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_set_add_alpha(png, 255, PNG_FILLER_AFTER);
}

}  // namespace

PngFile::PngFile(const char* path)
    // Without O_NONBLOCK, opening a fifo would block; without O_NOCTTY, a terminal would become the
    // process's own.
    : descriptor_(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
  struct stat status {};
  if (!isOpen()) {
    return;
  }
  if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(std::exchange(descriptor_, -1));
    return;
  }
  state_ = {status.st_dev, status.st_ino, status.st_size, timeOf(status.st_mtim),
            timeOf(status.st_ctim)};
}

PngFile::~PngFile() {
  png_destroy_read_struct(&png_, &info_, nullptr);
  if (stream_ != nullptr) {
    std::fclose(stream_);  // and the descriptor
  } else if (isOpen()) {
    close(descriptor_);
  }
}

bool PngFile::start() {
  if (!isOpen()) {
    return false;
  }
  stream_ = fdopen(descriptor_, "rb");
  png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, leave, stayQuiet);
  info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
  return stream_ != nullptr && info_ != nullptr;
}

// libpng reports errors by longjmp, so the steps below keep their results in members and have no
// local objects with a destructor.

bool PngFile::readSize() {
  if (!start()) {
    return false;
  }
  if (setjmp(png_jmpbuf(png_)) != 0) {
    return false;
  }
  setLimits(png_);
  png_init_io(png_, stream_);
  png_read_info(png_, info_);
  const png_uint_32 width = png_get_image_width(png_, info_);
  const png_uint_32 height = png_get_image_height(png_, info_);
  if (!isPictureSize(width, height, kMaxEffectPicturePixels)) {
    return false;
  }
  width_ = static_cast<int>(width);
  height_ = static_cast<int>(height);
  hasAlpha_ = (png_get_color_type(png_, info_) & PNG_COLOR_MASK_ALPHA) != 0 ||
              png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
  return true;
}

bool PngFile::readRows() {
  if (setjmp(png_jmpbuf(png_)) != 0) {
    return false;
  }
  requestRgba(png_);
  const int passes = png_set_interlace_handling(png_);
  png_read_update_info(png_, info_);
  const std::size_t pitch = png_get_rowbytes(png_, info_);
  pixels_.reset(static_cast<uint8_t*>(std::calloc(static_cast<std::size_t>(height_), pitch)));
  if (!pixels_) {
    return false;
  }
  for (int pass = 1; pass <= passes; ++pass) {
    uint8_t* row = pixels_.get();
    for (int y = 0; y < height_; ++y, row += pitch) {
      png_read_row(png_, row, nullptr);
      if (hasAlpha_ && pass == passes) {
        premultiplyRow(row, static_cast<std::size_t>(width_));
      }
    }
  }
  png_read_end(png_, nullptr);
  return true;
}

bool PngFile::decode(Bitmap& bitmap) {
  if (!readRows()) {
    return false;
  }
  bitmap = Bitmap{std::move(pixels_), width_, height_};
  return true;
}

}  // namespace alg
