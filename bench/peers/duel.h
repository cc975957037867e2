// What a routine of the library is measured against: the same work done by calls of another
// library.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/picture.h"

namespace alg::bench {

#ifndef PEERS_SIZE
#define PEERS_SIZE 4000, 3000
#endif
inline constexpr int kSize[] = {PEERS_SIZE};
inline constexpr int kWidth = kSize[0];
inline constexpr int kHeight = kSize[1];
inline constexpr std::size_t kPixels = pixelsOf(kWidth, kHeight);

/// What all rows work on. A result begins as a copy of `before` or of what its row says, and has
/// room for 4 bytes a pixel.
struct Scene {
  Bytes words = picture(kWidth, kHeight, 4);
  Bytes packed = picture(kWidth, kHeight, 3);
  Bytes grey;                                  // packed, all three channels alike
  Bytes frame;                                 // NV21
  Bytes before{words.rbegin(), words.rend()};  // another picture
  Bytes ours = before;
  Bytes theirs = before;

  Scene();
};

struct Peer {
  std::string name;
  std::function<void()> run;
};

/// Which time counts: what the process spent on all threads, or what passed.
enum class Clock { kCpu, kWall };

/// How far two results are apart, in levels.
struct Nearness {
  int most = 0;
  double sum = 0;
  std::size_t bytes = 0;

  void add(const uint8_t* a, const uint8_t* b, std::size_t count);
  double mean() const { return bytes == 0 ? 0 : sum / static_cast<double>(bytes); }
};

/// `ours` writes Scene::ours, each peer Scene::theirs. The fastest peer counts.
struct Duel {
  std::string work;
  double required;     // peer's time / our time
  std::size_t moved;   // bytes that must be read and written, each once; 0 where that says little
  std::size_t result;  // bytes of the result
  double tolerance;    // of the mean difference between results, in levels
  std::function<void()> ours;
  std::vector<Peer> peers;
  const Bytes* before = nullptr;  // for routines that work in place
  Clock clock = Clock::kCpu;
  std::function<Nearness()> difference = nullptr;  // where results are no plain bytes
  int runs = 1;                                    // to measure at once, of short work
  double operations = 0;                           // as below
  std::size_t pixels = kPixels;                    // of the result
};

/// A definition's operations per pixel, of work that they and not the memory bound. Additions,
/// multiplications, comparisons, shifts, roots and look-ups count one each; sums and rows that
/// neighbours share are kept, and by tables what can be.
namespace per_pixel {
inline constexpr double kDoubled = 3 * (4 + 2);          // a row's mix of 4 serves two rows
inline constexpr double kBox = 3 * 2 * 3;                // colours, directions: in, out, mean
inline constexpr double kSquare = 3 * (2 + 2 + 2 + 1);   // in, out; in, out; centres; mean
inline constexpr double kEmboss = 6 + 5;                 // luminance; step, gain, limits
inline constexpr double kSketch = 6 + 12 + 3 + 5;        // luminance, gradient, energy, line
inline constexpr double kPrague = 3 * (14 + 3 + 4 + 5);  // gradient, energy, edge, overlay
inline constexpr double kCartoon = 3 * (4 + 2 + 2);      // brightest, factor, product
inline constexpr double kNature = 13 + 3 * 8;            // range, share; quotient, mix, contrast
inline constexpr double kFisheye = 3.0 / 4 + 6 + 3;      // a quarter's factors; place; address
inline constexpr double kLomoFun = 9 + 13 + 3 * 2;       // curves, brightness, product
inline constexpr double kCurves = 3;                     // look-ups
inline constexpr double kSoftLight = 3 * 7;              // share, gain, product, sum
inline constexpr double kDecode = 2 + 7.0 / 4 + 3 * 4;   // luma; a block's chroma; sum, limits
inline constexpr double kEncode = 7 + 14.0 / 4;          // luma; a block's chroma
}  // namespace per_pixel

std::vector<Duel> frameDuels(Scene& scene);
std::vector<Duel> wordDuels(Scene& scene);
std::vector<Duel> effectDuels(Scene& scene);
std::vector<Duel> lightDuels(Scene& scene);
std::vector<Duel> drawingDuels(Scene& scene);
std::vector<Duel> pipelineDuels(Scene& scene);
#if ALGORITHM_PEER_HALIDE
std::vector<Duel> halideEffectDuels(Scene& scene);
std::vector<Duel> halideFrameDuels(Scene& scene);
#endif
#if ALGORITHM_PEER_SWSCALE
std::vector<Duel> swscaleDuels(Scene& scene);
#endif

/// Calls measure(duel) for each duel whose work has the pattern `filter` in it; those of one work
/// follow one another.
void forEachDuel(Scene& scene, const std::string& filter,
                 const std::function<void(const Duel&)>& measure);

/// Runs ours and each peer once and compares what they give, so that a row can't measure different
/// work; ends the process where they differ. It also warms up. Returns how near each peer is.
std::vector<Nearness> checkResults(Scene& scene, const Duel& duel);

/// Of the first `bytes` bytes.
Nearness difference(const Bytes& a, const Bytes& b, std::size_t bytes);

}  // namespace alg::bench
