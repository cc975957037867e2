// Every exported image routine as a row of a table: the operations of the catalogue as they
// describe themselves, and what is no operation.
#pragma once

#include <functional>
#include <span>
#include <string>

#include "bench/picture.h"

namespace alg::bench {

/// What a routine reads.
enum class Input { kFrame, kPacked, kWords, kInts };

/// How its time is looked at beside 2 and 12 megapixels.
enum class Look {
  kPlain,     ///< its plain definition beside its vector twin, at 2 megapixels
  kGrowth,    ///< that, and sizes from 0.3 to 50 megapixels
  kPipeline,  ///< sizes from 0.3 to 50 megapixels, in real time, and pools of 1, 2 and 4 threads
  kPreview,   ///< of the pipeline as well, but as a preview at 0.3 megapixels only
  kAlone,     ///< neither: there is no vector twin
};

/// Whether the work is done by the pool's threads.
constexpr bool onPool(Look look) { return look == Look::kPipeline || look == Look::kPreview; }

struct Routine {
  std::string name;
  Input input;
  double moved;  // bytes a pixel that must be read and written, each once
  /// in: width x height pixels. out: room for as many bytes; at first the same bytes, for routines
  /// that work in place.
  std::function<void(uint8_t* in, uint8_t* out, int width, int height)> run;
  Look look = Look::kPlain;
};

std::span<const Routine> routines();

}  // namespace alg::bench
