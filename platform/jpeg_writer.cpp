#include "platform/jpeg_writer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string_view>

#include "platform/jpeg_codec.h"

namespace alg {
namespace {

/// The segments of a block, one after the other.
struct Segment {
  uint8_t marker;
  std::span<const uint8_t> data;
};

constexpr std::size_t kSegmentHeader = 4;  // bytes: 0xFF, the marker, and a length from itself on

/// Takes the first segment off `rest`; false at the end, and where no segment begins.
bool takeSegment(std::span<const uint8_t>& rest, Segment& segment) {
  if (rest.size() < kSegmentHeader || rest[0] != 0xFF) {
    return false;
  }
  const std::size_t bytes = 2 + (std::size_t{rest[2]} << 8 | rest[3]);
  if (bytes < kSegmentHeader || bytes > rest.size()) {
    return false;
  }
  segment = {rest[1], rest.subspan(kSegmentHeader, bytes - kSegmentHeader)};
  rest = rest.subspan(bytes);
  return true;
}

bool begins(const Segment& segment, uint8_t marker, std::string_view with) {
  return segment.marker == marker && segment.data.size() >= with.size() &&
         std::memcmp(segment.data.data(), with.data(), with.size()) == 0;
}

bool saysWhatFile(std::span<const uint8_t> segments) {
  using std::literals::operator""sv;
  Segment segment{};
  while (takeSegment(segments, segment)) {
    if (begins(segment, JPEG_APP0, "JFIF\0"sv) || begins(segment, JPEG_APP0 + 1, "Exif\0"sv)) {
      return true;
    }
  }
  return false;
}

}  // namespace

struct JpegWriter::Codec {
  explicit Codec(JpegOutput& to);
  ~Codec() { jpeg_destroy_compress(&jpeg); }
  Codec(const Codec&) = delete;
  Codec& operator=(const Codec&) = delete;

  JpegFault start(const Options& options);
  void setTables(const JpegTables& tables);
  JpegFault write(const uint8_t* rows, std::size_t stride, JDIMENSION count);
  JpegFault finish();

  static Codec& of(j_compress_ptr jpeg) { return *static_cast<Codec*>(jpeg->client_data); }
  void takeRoom();
  void give(std::size_t bytes);

  jpeg_compress_struct jpeg{};
  JpegErrors errors;
  jpeg_destination_mgr destination{};
  std::size_t room = 0;
  JpegOutput& output;
};

JpegWriter::Codec::Codec(JpegOutput& to) : output(to) {
  jpeg.err = &errors.base;
  jpeg.client_data = this;
  destination.init_destination = [](j_compress_ptr codec) { of(codec).takeRoom(); };
  destination.empty_output_buffer = [](j_compress_ptr codec) -> boolean {
    of(codec).give(of(codec).room);  // the codec says nothing of what is left of it
    of(codec).takeRoom();
    return TRUE;
  };
  destination.term_destination = [](j_compress_ptr codec) {
    of(codec).give(of(codec).room - codec->dest->free_in_buffer);
  };
}

void JpegWriter::Codec::takeRoom() {
  const std::span<uint8_t> bytes = output.room();
  if (bytes.empty()) {
    leaveJpeg(errors, JpegFault::kNoMemory);
  }
  destination.next_output_byte = bytes.data();
  destination.free_in_buffer = room = bytes.size();
}

void JpegWriter::Codec::give(std::size_t bytes) {
  if (!output.take(bytes)) {
    leaveJpeg(errors, JpegFault::kOutputFailed);
  }
}

/// A third table is written only if it has values of its own.
void JpegWriter::Codec::setTables(const JpegTables& tables) {
  const int count = tables.count == 3 && tables.values[1] == tables.values[2] ? 2 : tables.count;
  for (int i = 0; i < count; ++i) {
    std::array<unsigned, DCTSIZE2> values;
    std::ranges::copy(tables.values[static_cast<std::size_t>(i)], values.begin());
    jpeg_add_quant_table(&jpeg, i, values.data(), 100, TRUE);
    jpeg.comp_info[i].quant_tbl_no = i;
  }
}

JpegFault JpegWriter::Codec::start(const Options& options) {
  if (setjmp(errors.failed) != 0) {
    return errors.fault;
  }
  jpeg_create_compress(&jpeg);
  jpeg.dest = &destination;
  jpeg.image_width = static_cast<JDIMENSION>(options.width);
  jpeg.image_height = static_cast<JDIMENSION>(options.height);
  jpeg.input_components = static_cast<int>(bytesPerPixel(options.pixels));
  jpeg.in_color_space = codecPixels(options.pixels);
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, options.quality, TRUE);
  setTables(options.tables);
  jpeg.comp_info[0].h_samp_factor = options.sampling == JpegSampling::k444 ? 1 : 2;
  jpeg.comp_info[0].v_samp_factor = options.sampling == JpegSampling::k420 ? 2 : 1;
  jpeg.write_JFIF_header = saysWhatFile(options.segments) ? FALSE : TRUE;
  jpeg_start_compress(&jpeg, TRUE);
  Segment segment{};
  for (std::span<const uint8_t> rest = options.segments; takeSegment(rest, segment);) {
    jpeg_write_marker(&jpeg, segment.marker, segment.data.data(),
                      static_cast<unsigned>(segment.data.size()));
  }
  return JpegFault::kNone;
}

JpegFault JpegWriter::Codec::write(const uint8_t* rows, std::size_t stride, JDIMENSION count) {
  const JDIMENSION first = jpeg.next_scanline;
  if (setjmp(errors.failed) != 0) {
    return errors.fault;
  }
  while (jpeg.next_scanline - first < count) {
    JSAMPROW lines[kJpegLines];
    const JDIMENSION done = jpeg.next_scanline - first;
    const JDIMENSION some = std::min<JDIMENSION>(kJpegLines, count - done);
    for (JDIMENSION i = 0; i < some; ++i) {
      lines[i] = const_cast<JSAMPROW>(rows + (done + i) * stride);  // only read
    }
    jpeg_write_scanlines(&jpeg, lines, some);
  }
  return JpegFault::kNone;
}

JpegFault JpegWriter::Codec::finish() {
  if (setjmp(errors.failed) != 0) {
    return errors.fault;
  }
  jpeg_finish_compress(&jpeg);
  return errors.fault = output.full() ? JpegFault::kOutputFull : JpegFault::kNone;
}

JpegWriter::JpegWriter(JpegOutput& output) : codec_(new (std::nothrow) Codec(output)) {}

JpegWriter::~JpegWriter() = default;

JpegFault JpegWriter::fault() const { return codec_ ? codec_->errors.fault : JpegFault::kNoMemory; }

JpegFault JpegWriter::start(const Options& options) {
  static_assert(kMostJpegSide == JPEG_MAX_DIMENSION);
  if (fault() != JpegFault::kNone) {
    return fault();
  }
  if (options.width < 1 || options.height < 1 || options.width > kMostJpegSide ||
      options.height > kMostJpegSide) {
    return codec_->errors.fault = JpegFault::kBadSize;
  }
  return codec_->start(options);
}

JpegFault JpegWriter::write(const uint8_t* rows, std::size_t stride, int count) {
  if (fault() != JpegFault::kNone) {
    return fault();
  }
  const JDIMENSION left = codec_->jpeg.image_height - codec_->jpeg.next_scanline;
  return codec_->write(rows, stride, std::min(left, static_cast<JDIMENSION>(std::max(count, 0))));
}

JpegFault JpegWriter::finish() { return fault() != JpegFault::kNone ? fault() : codec_->finish(); }

}  // namespace alg
