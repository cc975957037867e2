// Runs ours and each peer of the rows of bench/peers once at 1920 x 1080, counted.
//   arm64_peers [REGEX]
#include <cstdlib>
#include <opencv2/core/utility.hpp>

#include "bench/arm64/counted.h"
#include "bench/peers/duel.h"
#include "libalgorithm/thread_pool.h"

namespace alg::bench {
namespace {

void countOne(Scene& scene, const Duel& duel) {
  checkResults(scene, duel);
  counted((duel.work + "\tours").c_str(), duel.ours);
  for (const Peer& peer : duel.peers) {
    counted((duel.work + '\t' + peer.name).c_str(), peer.run);
  }
}

}  // namespace
}  // namespace alg::bench

int main(int count, char** arguments) {
  setenv("ALGORITHM_DEVICE_ROOT", SAMPLE_DEVICE, 0);
  cv::setNumThreads(1);
  g_threadpool = new ThreadPool(1);
  g_threadpool->initialize_threadpool();
  g_hal_threadpool_init = 1;
  namespace bench = alg::bench;
  bench::Scene scene;
  bench::forEachDuel(scene, count > 1 ? arguments[1] : "",
                     [&](const bench::Duel& duel) { bench::countOne(scene, duel); });
}
