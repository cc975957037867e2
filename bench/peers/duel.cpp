#include "bench/peers/duel.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <regex>

#include "libalgorithm/classic_effects.h"
#include "libalgorithm/yuv_convert.h"

namespace alg::bench {

Scene::Scene() : grey(3 * kPixels), frame(kPixels * 3 / 2) {
  GrayScale(packed.data(), grey.data(), kWidth, kHeight);
  decodeARGB2YVU_OpenGL(reinterpret_cast<uint32_t*>(words.data()), frame.data(),
                        frame.data() + kPixels, kWidth, kHeight, kWidth, kWidth);
}

double meanDifference(const Bytes& a, const Bytes& b, std::size_t bytes) {
  uint64_t sum = 0;
  for (std::size_t i = 0; i < bytes; ++i) {
    sum += static_cast<uint64_t>(std::abs(int{a[i]} - int{b[i]}));
  }
  return static_cast<double>(sum) / static_cast<double>(bytes);
}

void checkResults(Scene& scene, const Duel& duel) {
  const Bytes& before = duel.before != nullptr ? *duel.before : scene.before;
  std::ranges::copy(before, scene.ours.begin());
  duel.ours();
  for (const Peer& peer : duel.peers) {
    std::ranges::copy(before, scene.theirs.begin());
    peer.run();
    const double difference =
        duel.difference ? duel.difference() : meanDifference(scene.ours, scene.theirs, duel.result);
    if (difference > duel.tolerance) {
      std::fprintf(stderr, "%s and %s do different work: %.2f levels apart, at most %.2f\n",
                   duel.work.c_str(), peer.name.c_str(), difference, duel.tolerance);
      std::exit(1);
    }
  }
}

void forEachDuel(Scene& scene, const std::string& filter,
                 const std::function<void(const Duel&)>& measure) {
  const std::regex wanted(filter, std::regex::icase);
  for (const auto duels : {frameDuels, wordDuels, effectDuels, drawingDuels, pipelineDuels}) {
    for (const Duel& duel : duels(scene)) {
      if (std::regex_search(duel.work, wanted)) measure(duel);
    }
  }
}

}  // namespace alg::bench
