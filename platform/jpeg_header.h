// What a JPEG file's header says, from the codec's structs.
#pragma once

#include "platform/jpeg_codec.h"

namespace alg {

/// Of a file whose header has been read.
JpegInfo describeJpeg(jpeg_decompress_struct& jpeg);

/// Whether a segment tells how the file is made rather than what the picture is. Multi-picture
/// files have an index of offsets to what comes behind the first picture.
bool describesFile(const jpeg_marker_struct& segment);

}  // namespace alg
