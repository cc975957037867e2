#include "platform/jpeg_header.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

namespace alg {
namespace {

JpegColours coloursOf(const jpeg_decompress_struct& jpeg) {
  switch (jpeg.jpeg_color_space) {
    case JCS_GRAYSCALE:
      return JpegColours::kGrey;
    case JCS_CMYK:
    case JCS_YCCK:
      return JpegColours::kCmyk;
    default:
      return JpegColours::kRgb;
  }
}

JpegSampling samplingOf(const jpeg_decompress_struct& jpeg) {
  if (jpeg.num_components < 3) {
    return JpegSampling::k420;
  }
  const jpeg_component_info* parts = jpeg.comp_info;
  const bool half = parts[0].h_samp_factor >= 2 * parts[1].h_samp_factor;
  const bool halfRows = parts[0].v_samp_factor >= 2 * parts[1].v_samp_factor;
  return !half ? JpegSampling::k444 : halfRows ? JpegSampling::k420 : JpegSampling::k422;
}

/// A component's table; null if the file has none.
const JQUANT_TBL* tableOf(const jpeg_decompress_struct& jpeg, int component) {
  const int number = jpeg.comp_info[component].quant_tbl_no;  // any byte of the file's
  return number < NUM_QUANT_TBLS ? jpeg.quant_tbl_ptrs[number] : nullptr;
}

JpegTables tablesOf(const jpeg_decompress_struct& jpeg) {
  JpegTables tables;
  const J_COLOR_SPACE colours = jpeg.jpeg_color_space;
  const int count = colours == JCS_YCbCr ? 3 : colours == JCS_GRAYSCALE ? 1 : 0;
  for (int component = 0; component < count; ++component) {
    const JQUANT_TBL* table = tableOf(jpeg, component);
    if (table == nullptr) {
      return {};
    }
    // Baseline files have bytes; 0 would divide by it.
    std::ranges::transform(
        table->quantval, tables.values[static_cast<std::size_t>(component)].begin(),
        [](int value) { return static_cast<uint8_t>(std::clamp(value, 1, 255)); });
  }
  tables.count = count;
  return tables;
}

/// The quality whose table for luma is nearest to the file's.
int qualityOf(const jpeg_decompress_struct& jpeg) {
  // The JPEG standard's example (ITU-T T.81, table K.1), which qualities scale.
  constexpr int kLuma[] = {16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
                           14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
                           18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
                           49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
  const JQUANT_TBL* table = tableOf(jpeg, 0);
  int nearest = 0;
  int least = std::numeric_limits<int>::max();
  for (int quality = 1; table != nullptr && quality <= 100; ++quality) {
    int distance = 0;
    for (std::size_t i = 0; i < std::size(kLuma); ++i) {
      const int scaled = (kLuma[i] * jpeg_quality_scaling(quality) + 50) / 100;
      distance += std::abs(std::clamp(scaled, 1, 255) - table->quantval[i]);
    }
    if (distance < least) {
      least = distance;
      nearest = quality;
    }
  }
  return nearest;
}

}  // namespace

JpegInfo describeJpeg(jpeg_decompress_struct& jpeg) {
  JpegInfo info;
  info.width = static_cast<int>(jpeg.image_width);
  info.height = static_cast<int>(jpeg.image_height);
  info.colours = coloursOf(jpeg);
  info.sampling = samplingOf(jpeg);
  info.wholeImage = jpeg_has_multiple_scans(&jpeg) != FALSE;
  info.quality = qualityOf(jpeg);
  info.tables = tablesOf(jpeg);
  return info;
}

bool describesFile(const jpeg_marker_struct& segment) {
  const auto begins = [&](int marker, std::string_view with) {
    return segment.marker == marker && segment.data_length >= with.size() &&
           std::memcmp(segment.data, with.data(), with.size()) == 0;
  };
  constexpr char kIndex[] = "MPF";  // its 0 belongs to it
  return begins(JPEG_APP0 + 14, "Adobe") ||
         begins(JPEG_APP0 + 2, std::string_view(kIndex, sizeof kIndex));
}

int JpegInfo::reductionFor(int keepSide) const {
  const int side = std::max(width, height);
  int reduction = 1;
  while (keepSide > 0 && reduction < 8 && side / (2 * reduction) >= keepSide) {
    reduction *= 2;
  }
  return reduction;
}

}  // namespace alg
