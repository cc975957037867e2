// The row kernel that multiplies colours by their alpha.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// Replaces each colour c of R, G, B, A pixels with (a x c + 127) / 255, in place: a x c / 255,
/// rounded.
void premultiplyRow(uint8_t* rgba, std::size_t pixels);

/// The definition.
void premultiplyRowPlain(uint8_t* rgba, std::size_t pixels);

}  // namespace alg
