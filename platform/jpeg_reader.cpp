#include "platform/jpeg_reader.h"

#include <jerror.h>

#include <algorithm>
#include <new>

#include "base/image_size.h"
#include "platform/jpeg_codec.h"
#include "platform/jpeg_header.h"
#include "platform/jpeg_source.h"

namespace alg {
namespace {

/// The most scans that a file of so many pixels may have: a few kilobytes can ask for thousands of
/// passes over the whole image. Ordinary progressive files have about ten.
int mostScans(int64_t pixels) {
  constexpr int64_t kPixelScans = int64_t{1} << 29;
  return static_cast<int>(
      std::clamp<int64_t>(kPixelScans / pixels, kMostJpegScansLarge, kMostJpegScansSmall));
}

/// Called by the codec now and then; stops decoding a file with too many scans.
void limitScans(j_common_ptr codec) {
  const auto& jpeg = *reinterpret_cast<j_decompress_ptr>(codec);
  if (jpeg.input_scan_number > mostScans(int64_t{jpeg.image_width} * jpeg.image_height)) {
    leaveJpeg(JpegErrors::of(codec), JpegFault::kTooComplex);
  }
}

}  // namespace

void convertCmyk(const uint8_t* inks, uint8_t* to, std::size_t pixels, JpegPixels order,
                 bool inverted) {
  const std::size_t bytes = bytesPerPixel(order);
  const bool blueFirst = order == JpegPixels::kBgra || order == JpegPixels::kBgr;
  const std::size_t red = blueFirst ? 2 : 0;
  for (const uint8_t* p = inks; p != inks + 4 * pixels; p += 4, to += bytes) {
    const auto ink = [&](int index) { return inverted ? p[index] : 255 - p[index]; };
    const int cyan = ink(0), magenta = ink(1), yellow = ink(2), black = ink(3);
    to[red] = static_cast<uint8_t>((cyan * black + 127) / 255);
    to[1] = static_cast<uint8_t>((magenta * black + 127) / 255);
    to[2 - red] = static_cast<uint8_t>((yellow * black + 127) / 255);
    if (bytes == 4) {
      to[3] = 255;
    }
  }
}

struct JpegReader::Codec {
  Codec(JpegInput& input, Segments keep);
  ~Codec() { jpeg_destroy_decompress(&jpeg); }
  Codec(const Codec&) = delete;
  Codec& operator=(const Codec&) = delete;

  static Codec& of(j_common_ptr codec) { return *static_cast<Codec*>(codec->client_data); }
  void warn();
  bool readHeader(std::size_t mostBytes);
  void prepare();
  bool startOnce();
  void start(const Options& chosen);
  void noteMissingScans();
  bool read(uint8_t* rows, std::size_t stride, JDIMENSION count);
  void readLines(uint8_t* rows, std::size_t stride, JDIMENSION count);
  void runWork(uint8_t* row, bool cmyk);
  bool finish();

  jpeg_decompress_struct jpeg{};
  JpegErrors errors;
  jpeg_progress_mgr progress{limitScans, 0, 0, 0, 0};
  JpegSource source;
  Segments segments;
  Options options;
  JpegInfo info;
  JpegDamage damage;
  Block inks;  ///< kJpegLines rows of C, M, Y, K, for pixels of three bytes
  bool decoding = false;
  bool finishing = false;
};

JpegReader::Codec::Codec(JpegInput& input, Segments keep) : source(input), segments(keep) {
  errors.base.emit_message = [](j_common_ptr codec, int level) {
    if (level < 0) {
      of(codec).warn();
    }
  };
  jpeg.err = &errors.base;
  jpeg.client_data = this;
}

/// Notes damage. Not all that the codec warns of is any: oddities of headers, a missing end marker
/// behind the last row, and a few bytes of padding there, cost nothing.
void JpegReader::Codec::warn() {
  constexpr int kMostPadding = 32;  // bytes
  const jpeg_error_mgr& error = errors.base;
  const int code = error.msg_code;
  const bool excess = code == JWRN_EXTRANEOUS_DATA;
  const bool lost = code != JWRN_JPEG_EOF && code != JWRN_ADOBE_XFORM && code != JWRN_JFIF_MAJOR &&
                    code != JWRN_NOT_SEQUENTIAL;
  if (!decoding || !lost || (finishing && !(excess && error.msg_parm.i[0] > kMostPadding))) {
    return;
  }
  ++damage.warnings;
  damage.truncated |= source.ranOut();
  if (damage.firstRow < 0) {
    // Damaged codes are often read as others, and show only where those end.
    const bool here = source.ranOut() && !info.wholeImage;
    damage.firstRow = here ? static_cast<int>(jpeg.output_scanline) : 0;
  }
}

/// Reads up to the first scan's data.
bool JpegReader::Codec::readHeader(std::size_t mostBytes) {
  if (setjmp(errors.failed) != 0) {
    if (errors.fault == JpegFault::kTooLarge) {  // for a side beyond 65,500 this is all there is
      info.width = static_cast<int>(jpeg.image_width);
      info.height = static_cast<int>(jpeg.image_height);
    }
    return false;
  }
  jpeg_create_decompress(&jpeg);
  // Anything beyond this would go to a temporary file, which this codec lacks: an error.
  jpeg.mem->max_memory_to_use = kMostJpegWorkBytes;
  const bool keep = segments == Segments::kKeep;
  jpeg.src = &source.start(mostBytes, keep ? kMostJpegSegmentBytes : SIZE_MAX);
  if (keep) {
    constexpr unsigned kAll = 0xFFFF;
    for (int app = 0; app < 16; ++app) {
      jpeg_save_markers(&jpeg, JPEG_APP0 + app, kAll);
    }
    jpeg_save_markers(&jpeg, JPEG_COM, kAll);
  }
  jpeg_read_header(&jpeg, TRUE);
  source.endHeader(errors);
  if (source.nothingLeft()) {
    leaveJpeg(errors, JpegFault::kDamaged);
  }
  info = describeJpeg(jpeg);
  if (!isPictureSize(jpeg.image_width, jpeg.image_height)) {
    leaveJpeg(errors, JpegFault::kTooLarge);
  }
  return true;
}

/// Tells the codec what is wanted of the file whose header it has read.
void JpegReader::Codec::prepare() {
  const bool cmyk = info.colours == JpegColours::kCmyk;
  jpeg.progress = &progress;
  jpeg.out_color_space = cmyk ? JCS_CMYK : codecPixels(options.pixels);
  jpeg.scale_num = 1;
  jpeg.scale_denom = static_cast<unsigned>(options.reduction);
  jpeg_calc_output_dimensions(&jpeg);
  const std::size_t row = bytesPerPixel(options.pixels) * jpeg.output_width;
  if (row * jpeg.output_height > options.maxPixelBytes) {
    leaveJpeg(errors, JpegFault::kTooLarge);
  }
  if (cmyk && bytesPerPixel(options.pixels) < 4 && !inks) {
    inks = allocateBlock(std::size_t{kJpegLines} * 4 * jpeg.output_width);
    if (!inks) {
      leaveJpeg(errors, JpegFault::kNoMemory);
    }
  }
}

bool JpegReader::Codec::startOnce() {
  if (setjmp(errors.failed) != 0) {
    return false;
  }
  prepare();
  decoding = true;
  jpeg_start_decompress(&jpeg);
  noteMissingScans();
  return true;
}

/// A progressive file may end between two scans.
void JpegReader::Codec::noteMissingScans() {
  if (!info.wholeImage || !source.ranOut()) {
    return;
  }
  bool missing = jpeg.coef_bits == nullptr;
  for (int part = 0; !missing && part < jpeg.num_components; ++part) {
    missing = std::ranges::any_of(jpeg.coef_bits[part], [](int bits) { return bits != 0; });
  }
  if (missing) {
    damage = {damage.warnings + 1, true, 0};
  }
}

void JpegReader::Codec::start(const Options& chosen) {
  options = chosen;
  if (startOnce() || !source.ranOut()) {
    return;
  }
  // A file may end inside the header of a later scan; what comes before it is still an image.
  const JpegFault first = errors.fault;
  std::size_t end = 0;
  jpeg_destroy_decompress(&jpeg);
  damage = {};
  decoding = false;
  if (!source.findLastMarker(end) || !source.rewind()) {
    errors.fault = first;
    return;
  }
  errors.fault = JpegFault::kNone;
  if (readHeader(end) && startOnce()) {
    damage = {damage.warnings + 1, true, 0};
  }
}

bool JpegReader::Codec::read(uint8_t* rows, std::size_t stride, JDIMENSION count) {
  if (setjmp(errors.failed) != 0) {
    return false;
  }
  readLines(rows, stride, count);
  return true;
}

void JpegReader::Codec::readLines(uint8_t* rows, std::size_t stride, JDIMENSION count) {
  const bool cmyk = info.colours == JpegColours::kCmyk;
  const std::size_t inkStride = inks ? std::size_t{4} * jpeg.output_width : stride;
  for (JDIMENSION done = 0; done < count;) {
    JSAMPROW lines[kJpegLines];
    const JDIMENSION some = std::min<JDIMENSION>(kJpegLines, count - done);
    uint8_t* const first = inks ? inks.get() : rows;
    for (JDIMENSION i = 0; i < some; ++i) {
      lines[i] = first + i * inkStride;
    }
    const JDIMENSION read = jpeg_read_scanlines(&jpeg, lines, some);
    for (JDIMENSION i = 0; i < read; ++i) {
      if (options.rowWork != nullptr) {
        runWork(lines[i], cmyk);
      } else if (cmyk) {  // Adobe's files hold inverted values
        convertCmyk(lines[i], rows + i * stride, jpeg.output_width, options.pixels,
                    jpeg.saw_Adobe_marker != FALSE);
      }
    }
    rows += read * stride;
    done += read;
  }
}

void JpegReader::Codec::runWork(uint8_t* row, bool cmyk) {
  const std::size_t bytes = std::size_t{4} * jpeg.output_width;
  if (cmyk && jpeg.saw_Adobe_marker == FALSE) {
    std::transform(row, row + bytes, row, [](uint8_t ink) { return static_cast<uint8_t>(~ink); });
  }
  (*options.rowWork)(row, jpeg.output_width);
}

bool JpegReader::Codec::finish() {
  if (setjmp(errors.failed) != 0) {
    if (source.ranOut()) {  // in a segment behind the last row
      errors.fault = JpegFault::kNone;
    }
    return errors.fault == JpegFault::kNone;
  }
  finishing = true;
  jpeg_finish_decompress(&jpeg);
  return true;
}

JpegReader::JpegReader(JpegInput& input, Segments segments)
    : codec_(new (std::nothrow) Codec(input, segments)) {
  if (codec_) {
    codec_->readHeader(SIZE_MAX);
  }
}

JpegReader::~JpegReader() = default;

JpegFault JpegReader::fault() const { return codec_ ? codec_->errors.fault : JpegFault::kNoMemory; }

const JpegInfo& JpegReader::info() const {
  static constexpr JpegInfo kNone;
  return codec_ ? codec_->info : kNone;
}

const JpegDamage& JpegReader::damage() const {
  static constexpr JpegDamage kNone;
  return codec_ ? codec_->damage : kNone;
}

Block JpegReader::segments(std::size_t& size) const {
  constexpr std::size_t kHeader = 4;  // bytes: 0xFF, the marker, and a length from itself on
  size = 0;
  const auto* const first = fault() == JpegFault::kNone ? codec_->jpeg.marker_list : nullptr;
  for (const auto* at = first; at != nullptr; at = at->next) {
    size += describesFile(*at) ? 0 : kHeader + at->data_length;
  }
  Block bytes = size > 0 ? allocateBlock(size) : Block();
  uint8_t* to = bytes.get();
  for (const auto* at = first; bytes && at != nullptr; at = at->next) {
    if (!describesFile(*at)) {
      const unsigned length = at->data_length + 2;
      const uint8_t header[] = {0xFF, at->marker, static_cast<uint8_t>(length >> 8),
                                static_cast<uint8_t>(length)};
      to = std::copy_n(header, kHeader, to);
      to = std::copy_n(at->data, at->data_length, to);
    }
  }
  return bytes;
}

JpegFault JpegReader::start(const Options& options) {
  if (fault() == JpegFault::kNone) {
    codec_->start(options);
  }
  return fault();
}

int JpegReader::width() const { return codec_ ? static_cast<int>(codec_->jpeg.output_width) : 0; }

int JpegReader::height() const { return codec_ ? static_cast<int>(codec_->jpeg.output_height) : 0; }

int JpegReader::row() const { return codec_ ? static_cast<int>(codec_->jpeg.output_scanline) : 0; }

int JpegReader::read(uint8_t* rows, std::size_t stride, int count) {
  if (fault() != JpegFault::kNone) {
    return 0;
  }
  const int first = row();
  const int some = std::clamp(count, 0, height() - first);
  codec_->read(rows, stride, static_cast<JDIMENSION>(some));
  return row() - first;
}

JpegFault JpegReader::finish() {
  if (fault() == JpegFault::kNone) {
    codec_->finish();
  }
  return fault();
}

JpegFault readJpegInfo(JpegInput& input, JpegInfo& info) {
  const JpegReader reader(input);
  info = reader.info();
  return reader.fault();
}

}  // namespace alg
