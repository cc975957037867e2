#include "images/jpeg_job.h"

#include "images/band_job.h"
#include "platform/jpeg_reader.h"
#include "platform/jpeg_writer.h"
#include "platform/large_block.h"

namespace alg {
namespace {

/// For operations that need the whole image.
JpegFault runOnWhole(const Job& job, std::span<const uint8_t> file, const JpegInfo& info,
                     JpegOutput& output, int quality) {
  JpegBytes input(file);
  JpegReader reader(input, JpegReader::Segments::kKeep);
  std::size_t segmentBytes = 0;
  const Image image{nullptr, info.width, info.height, std::ptrdiff_t{4} * info.width, false};
  const Block pixels = allocateLargeBlock(image.rowBytes() * static_cast<std::size_t>(info.height));
  const Image whole{pixels.get(), info.width, info.height, image.stride, false};
  if (!pixels) {
    return JpegFault::kNoMemory;
  }
  reader.start({});
  reader.read(whole.pixels, whole.rowBytes(), whole.height);
  if (reader.finish() != JpegFault::kNone) {
    return reader.fault();
  }
  const JobOutcome outcome = runJob(job, whole, whole);
  if (outcome != JobOutcome::kDone) {
    return outcome == JobOutcome::kNoMemory ? JpegFault::kNoMemory : JpegFault::kCancelled;
  }
  const Block segments = reader.segments(segmentBytes);
  JpegWriter writer(output);
  writer.start({.width = info.width,
                .height = info.height,
                .quality = quality,
                .segments = {segments.get(), segmentBytes}});
  writer.write(whole.pixels, whole.rowBytes(), whole.height);
  return writer.finish();
}

}  // namespace

JpegFault runJobOnJpeg(const Job& job, std::span<const uint8_t> file, const JpegInfo& info,
                       JpegOutput& output, int quality) {
  if (job.operation->bands == Bands::kWholeImage) {
    return runOnWhole(job, file, info, output, quality);
  }
  JpegBandOptions options;
  options.quality = quality;
  BandJob bands(job, info.width, info.height);
  if (!bands.prepare(options, true)) {
    return JpegFault::kNoMemory;
  }
  JpegBytes input(file);
  return transcodeJpeg(input, output, options,
                       [&](const JpegBand& band) { return bands.run(band); })
      .fault;
}

}  // namespace alg
