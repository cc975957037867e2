// A JPEG file through a job into a JPEG file.
#pragma once

#include <cstdint>
#include <span>

#include "images/job.h"
#include "platform/jpeg_format.h"
#include "platform/jpeg_io.h"

namespace alg {

/// Decodes a file, runs an effect on its image and encodes it, with the bytes that doing so to the
/// whole image gives. Markers that the camera wrote stay. Where the effect's bands need no other or
/// only near rows, the image is never held as a whole (codec/jpeg_bands.h says what is); else it
/// takes 10 bytes a pixel. Runs on this thread and one of its own, not on the pool.
/// @param info  the file's (readJpegInfo); sides up to kMostJpegSide
/// Returns kCancelled, with part of the output written, when the job is.
JpegFault runJobOnJpeg(const Job& job, std::span<const uint8_t> file, const JpegInfo& info,
                       JpegOutput& output, int quality);

}  // namespace alg
