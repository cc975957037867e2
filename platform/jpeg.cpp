#include "platform/jpeg.h"

#include "base/image_size.h"
#include "platform/jpeg_reader.h"
#include "platform/jpeg_writer.h"
#include "platform/large_block.h"

namespace alg {
namespace {

/// Decodes what the reader has started with.
JpegFault readAll(JpegReader& reader, uint8_t* pixels, std::size_t stride) {
  reader.read(pixels, stride, reader.height());
  return reader.finish();
}

}  // namespace

std::optional<DecodedJpeg> decodeJpeg(std::span<const uint8_t> file,
                                      const JpegDecodeOptions& options) {
  JpegBytes input(file);
  JpegReader reader(input);
  const int reduction = reader.info().reductionFor(options.keepSide);
  if (reader.start({.reduction = reduction, .maxPixelBytes = options.maxPixelBytes}) !=
      JpegFault::kNone) {
    return std::nullopt;
  }
  DecodedJpeg image;
  image.width = reader.width();
  image.height = reader.height();
  const std::size_t stride = std::size_t{kArgbBytes} * static_cast<std::size_t>(image.width);
  image.pixels = allocateLargeBlock(stride * static_cast<std::size_t>(image.height));
  if (!image.pixels || readAll(reader, image.pixels.get(), stride) != JpegFault::kNone) {
    return std::nullopt;
  }
  return image;
}

std::optional<EncodedJpeg> encodeJpeg(const uint8_t* pixels, int width, int height, int quality) {
  // A photo takes less than this at quality 95. Memory that is never written costs nothing, but
  // growing from a few kilobytes would copy all bytes once, into fresh memory each time.
  constexpr std::size_t kHeaders = 4096;  // bytes
  JpegBlock output(kHeaders + pixelCount(width, height));
  JpegView source{const_cast<uint8_t*>(pixels), width, height};  // only read
  source.stride = std::size_t{kArgbBytes} * static_cast<std::size_t>(width);
  if (encodeJpegTo(output, source, quality) != JpegFault::kNone) {
    return std::nullopt;
  }
  return EncodedJpeg{output.release(), output.size()};
}

JpegFault decodeJpegInto(JpegInput& input, int reduction, const JpegView& target,
                         JpegDamage& damage) {
  JpegReader reader(input);
  const JpegInfo& info = reader.info();
  if (reader.fault() == JpegFault::kNone && (info.reducedWidth(reduction) != target.width ||
                                             info.reducedHeight(reduction) != target.height)) {
    return JpegFault::kBadSize;
  }
  JpegFault fault = reader.start({.pixels = target.order, .reduction = reduction});
  if (fault == JpegFault::kNone) {
    fault = readAll(reader, target.pixels, target.stride);
  }
  damage = reader.damage();
  return fault;
}

JpegFault encodeJpegTo(JpegOutput& output, const JpegView& source, int quality,
                       JpegSampling sampling) {
  JpegWriter writer(output);
  writer.start({.width = source.width,
                .height = source.height,
                .pixels = source.order,
                .quality = quality,
                .sampling = sampling});
  writer.write(source.pixels, source.stride, source.height);
  return writer.finish();
}

}  // namespace alg
