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

void Nearness::add(const uint8_t* a, const uint8_t* b, std::size_t count) {
  uint64_t total = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const int apart = std::abs(int{a[i]} - int{b[i]});
    most = std::max(most, apart);
    total += static_cast<uint64_t>(apart);
  }
  sum += static_cast<double>(total);
  bytes += count;
}

Nearness difference(const Bytes& a, const Bytes& b, std::size_t bytes) {
  Nearness nearness;
  nearness.add(a.data(), b.data(), bytes);
  return nearness;
}

std::vector<Nearness> checkResults(Scene& scene, const Duel& duel) {
  const Bytes& before = duel.before != nullptr ? *duel.before : scene.before;
  std::ranges::copy(before, scene.ours.begin());
  duel.ours();
  std::vector<Nearness> all;
  for (const Peer& peer : duel.peers) {
    std::ranges::copy(before, scene.theirs.begin());
    peer.run();
    const Nearness nearness =
        duel.difference ? duel.difference() : difference(scene.ours, scene.theirs, duel.result);
    if (nearness.mean() > duel.tolerance) {
      std::fprintf(stderr, "%s and %s do different work: %.2f levels apart, at most %.2f\n",
                   duel.work.c_str(), peer.name.c_str(), nearness.mean(), duel.tolerance);
      std::exit(1);
    }
    all.push_back(nearness);
  }
  return all;
}

void forEachDuel(Scene& scene, const std::string& filter,
                 const std::function<void(const Duel&)>& measure) {
  std::vector<Duel> all;
  for (const auto duels : {
         frameDuels, wordDuels, effectDuels, lightDuels, drawingDuels, pipelineDuels,
#if ALGORITHM_PEER_HALIDE
             halideEffectDuels, halideFrameDuels,
#endif
#if ALGORITHM_PEER_SWSCALE
             swscaleDuels,
#endif
       }) {
    for (Duel& duel : duels(scene)) {
      const auto same = std::ranges::find(all.rbegin(), all.rend(), duel.work, &Duel::work);
      all.insert(same == all.rend() ? all.end() : same.base(), std::move(duel));
    }
  }
  const std::regex wanted(filter, std::regex::icase);
  for (const Duel& duel : all) {
    if (std::regex_search(duel.work, wanted)) measure(duel);
  }
}

}  // namespace alg::bench
