// Row kernels of the conversions from pixels. Sources and destinations must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "convert/row_format.h"

namespace alg {

/// Encodes the luma of `width` pixels.
void encodeLumaRow(RowFormat format, const uint8_t* pixels, uint8_t* luma, std::size_t width);
void encodeLumaRowPlain(RowFormat format, const uint8_t* pixels, uint8_t* luma, std::size_t width);

/// Encodes the luma of `width` pixels, and ceil(width / 2) chroma pairs from those in even columns.
void encodeRow(RowFormat format, const uint8_t* pixels, uint8_t* luma, uint8_t* chroma,
               std::size_t width);
void encodeRowPlain(RowFormat format, const uint8_t* pixels, uint8_t* luma, uint8_t* chroma,
                    std::size_t width);

}  // namespace alg
