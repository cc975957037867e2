#include "codec/jpeg_bands.h"

#include "base/block.h"
#include "codec/band_passage.h"
#include "platform/jpeg_reader.h"
#include "platform/jpeg_writer.h"

namespace alg {
namespace {

/// Rows of a band that goes into a store. They become columns of a turned image: pieces of its rows
/// of one or two cache lines.
constexpr int kStoreRows = 32;

/// A file through a store, if there is one, and work into another file.
class Transcoder {
 public:
  Transcoder(JpegReader& reader, JpegOutput& output, const JpegBandOptions& options,
             const JpegBandWork& work)
      : reader_(reader), writer_(output), options_(options), work_(work) {}

  JpegFault run();

 private:
  JpegFault startReader(JpegPixels pixels);
  JpegFault throughStore();
  JpegFault encode(const ReadRows& read);

  JpegReader& reader_;
  JpegWriter writer_;
  const JpegBandOptions& options_;
  const JpegBandWork& work_;
  ReadRows decode_;
  int width_ = 0, height_ = 0;  ///< of the rows that come next
  Block carried_;               ///< segments of the file, until they are written
  std::size_t carriedBytes_ = 0;
};

JpegFault Transcoder::startReader(JpegPixels pixels) {
  const JpegFault fault = reader_.start(
      {.pixels = pixels, .reduction = options_.reduction, .rowWork = options_.rowWork});
  width_ = reader_.width();
  height_ = reader_.height();
  decode_ = [this, stride = static_cast<std::size_t>(width_) * bytesPerPixel(pixels)](uint8_t* to,
                                                                                      int rows) {
    return reader_.read(to, stride, rows) == rows ? JpegFault::kNone : reader_.fault();
  };
  if (fault == JpegFault::kNone && options_.carrySegments) {
    carried_ = reader_.segments(carriedBytes_);
    if (carriedBytes_ > 0 && !carried_) {
      return JpegFault::kNoMemory;
    }
  }
  return fault;
}

JpegFault Transcoder::encode(const ReadRows& read) {
  const JpegFault fault = writer_.start(
      {.width = width_,
       .height = height_,
       .pixels = options_.result,
       .quality = options_.quality,
       .tables = options_.tables,
       .sampling = options_.sampling,
       .segments = options_.carrySegments ? std::span<const uint8_t>(carried_.get(), carriedBytes_)
                                          : options_.segments});
  carried_.reset();
  if (fault != JpegFault::kNone) {
    return fault;
  }
  const BandLayout layout(width_, height_, options_);
  const WriteRows write = [&](const uint8_t* rows, int count) {
    return writer_.write(rows, layout.resultStride, count);
  };
  return passRows(read, layout, work_, write);
}

/// Decodes the whole file before it encodes what the store makes of it.
JpegFault Transcoder::throughStore() {
  JpegRowStore& store = *options_.store;
  const bool redFirst = options_.source == JpegPixels::kRgb || options_.source == JpegPixels::kRgba;
  const JpegPixels pixels = redFirst ? JpegPixels::kRgba : JpegPixels::kBgra;
  JpegFault fault = startReader(pixels);
  if (fault != JpegFault::kNone) {
    return fault;
  }
  const BandLayout layout(
      width_, height_,
      {.source = pixels, .result = pixels, .overlap = options_.overlap, .bandRows = kStoreRows});
  if (!store.begin(width_, height_, options_.source)) {
    return JpegFault::kNoMemory;
  }
  const JpegBandWork none = [](const JpegBand&) { return true; };
  const WriteRows put = [&](const uint8_t* rows, int count) {
    store.put(rows, count);
    return JpegFault::kNone;
  };
  fault = passRows(decode_, layout, none, put);
  fault = fault == JpegFault::kNone ? reader_.finish() : fault;  // gives its memory back
  return fault != JpegFault::kNone ? fault : encode([&](uint8_t* to, int rows) {
    store.get(to, rows);
    return JpegFault::kNone;
  });
}

JpegFault Transcoder::run() {
  JpegFault fault = JpegFault::kNone;
  if (options_.store != nullptr) {
    fault = throughStore();
  } else {
    fault = startReader(options_.source);
    fault = fault == JpegFault::kNone ? encode(decode_) : fault;
    fault = fault == JpegFault::kNone ? reader_.finish() : fault;
  }
  return fault == JpegFault::kNone ? writer_.finish() : fault;
}

}  // namespace

JpegBandResult transcodeJpeg(JpegInput& input, JpegOutput& output, const JpegBandOptions& options,
                             const JpegBandWork& work) {
  JpegReader reader(
      input, options.carrySegments ? JpegReader::Segments::kKeep : JpegReader::Segments::kDrop);
  JpegBandResult result;
  result.fault = reader.fault();
  if (result.fault == JpegFault::kNone) {
    result.fault = Transcoder(reader, output, options, work).run();
  }
  result.damage = reader.damage();
  result.width = reader.width();
  result.height = reader.height();
  return result;
}

}  // namespace alg
