// Measures the library beside its peers and prints a Markdown table.
//   peers [--filter REGEX] [--pairs N]
// Each row runs ours, its peers and a memcpy of as many bytes in turn and compares the medians.
#include <libyuv/version.h>
#include <sched.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <opencv2/core/utility.hpp>
#include <opencv2/core/version.hpp>

#include "bench/measure.h"
#include "bench/peers/duel.h"
#include "bench/peers/peak.h"

namespace alg::bench {
namespace {

constexpr char kOptionalPeers[] =
#if ALGORITHM_PEER_HALIDE
    "Halide"
#else
    "no Halide, which this system lacks"
#endif
#if ALGORITHM_PEER_SWSCALE
    ", libswscale";
#else
    ", no libswscale, which this system lacks";
#endif

double millisecondsOf(const std::function<void()>& run, Clock clock, int runs) {
  const clockid_t id = clock == Clock::kWall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID;
  const double start = seconds(id);
  for (int i = 0; i < runs; ++i) {
    run();
  }
  return (seconds(id) - start) * 1e3 / runs;
}

double medianOf(std::vector<double> values) {
  std::ranges::sort(values);
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::string worded(const Nearness& nearness) {
  constexpr int kRounding = 3;  // levels: what other arithmetic of the same formula may differ by
  char text[32] = "same bytes";
  if (nearness.most > kRounding) {
    std::snprintf(text, sizeof text, "%.2g on average", nearness.mean());
  } else if (nearness.most > 0) {
    std::snprintf(text, sizeof text, "within %d", nearness.most);
  }
  return text;
}

/// How near ours is to what bounds it.
std::string boundOf(const Duel& duel, double milliseconds, double copying) {
  char text[48] = "";
  int length = 0;
  if (duel.moved != 0) {
    length = std::snprintf(text, sizeof text, "%.2f of memcpy", copying / milliseconds);
  }
  if (duel.operations != 0) {
    const double rate = duel.operations * static_cast<double>(duel.pixels) / milliseconds * 1e3;
    std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length), ", %.2f of peak",
                  rate / peakOperations());
  }
  return text;
}

/// Returns whether ours is as fast as required.
bool measure(Scene& scene, const Duel& duel, int pairs) {
  static Bytes copied, copies;
  copied.resize(std::max(copied.size(), duel.moved / 2), 1);
  copies.resize(copied.size());
  const auto copy = [&] {  // which moves each byte twice
    std::memcpy(copies.data(), copied.data(), duel.moved / 2);
  };
  const std::vector<Nearness> nearness = checkResults(scene, duel);
  std::vector<double> ours, copying;
  std::vector<std::vector<double>> theirs(duel.peers.size());
  for (int pair = 0; pair < pairs; ++pair) {
    // Each finds the caches as a copy leaves them.
    copying.push_back(millisecondsOf(copy, Clock::kCpu, duel.runs));
    ours.push_back(millisecondsOf(duel.ours, duel.clock, duel.runs));
    for (std::size_t i = 0; i < theirs.size(); ++i) {
      copying.push_back(millisecondsOf(copy, Clock::kCpu, duel.runs));
      theirs[i].push_back(millisecondsOf(duel.peers[i].run, duel.clock, duel.runs));
    }
  }
  std::vector<double> medians;
  std::ranges::transform(theirs, std::back_inserter(medians), medianOf);
  const auto best = std::ranges::min_element(medians);
  const auto index = static_cast<std::size_t>(best - medians.begin());
  const double mine = medianOf(ours);
  const double ratio = std::round(*best / mine * 100) / 100;  // as it is shown
  const bool reached = ratio >= duel.required;
  const char* emphasis = reached ? "" : "**";
  std::printf("| %s | %.2f | %s | %s | %.2f | %s%.2f%s | %.2f | %s |\n", duel.work.c_str(), mine,
              boundOf(duel, mine, medianOf(copying)).c_str(), duel.peers[index].name.c_str(), *best,
              emphasis, ratio, emphasis, duel.required, worded(nearness[index]).c_str());
  std::fflush(stdout);
  return reached;
}

/// The first two of the cores that the process may use, so that the pool's four threads have no
/// more than the peer's two.
void keepTwoCores() {
  cpu_set_t all, two;
  CPU_ZERO(&two);
  sched_getaffinity(0, sizeof all, &all);
  for (std::size_t core = 0; core < CPU_SETSIZE && CPU_COUNT(&two) < 2; ++core) {
    if (CPU_ISSET(core, &all)) CPU_SET(core, &two);
  }
  sched_setaffinity(0, sizeof two, &two);
}

int run(const std::string& filter, int pairs) {
  keepTwoCores();
  cv::setNumThreads(1);
  Scene scene;
  int rows = 0, reached = 0;
  std::puts(
      "| Work | Ours, ms | Rate | Peer | Peer, ms | Peer / ours | Required | Its result |\n"
      "|---|---:|---:|---|---:|---:|---:|---|");
  forEachDuel(scene, filter, [&](const Duel& duel) {
    ++rows;
    reached += measure(scene, duel, pairs) ? 1 : 0;
  });
  std::printf(
      "\n%d of %d rows are as fast as required; the others are bold. %d x %d pixels, medians of %d "
      "pairs in turn, each after a memcpy, of the process's CPU time on one thread (the pipeline: "
      "of the time that "
      "passed; previews, 640 x 480: of CPU time on all threads). Rate, of memcpy: our bytes "
      "read and written a second, each once, as a fraction of memcpy's. Of peak, where arithmetic "
      "is the bound: the operations of the definition (additions, multiplications, comparisons, "
      "shifts, roots, look-ups; sums that neighbours share are kept) a second, as a fraction of "
      "the most 16-bit additions in vectors, %.0f x 10^9 a second here. Its result: how "
      "far the peer's bytes are from ours. Peers: libyuv %d, OpenCV %s, %s.\n",
      reached, rows, kWidth, kHeight, pairs, peakOperations() / 1e9, LIBYUV_VERSION, CV_VERSION,
      kOptionalPeers);
  return 0;
}

}  // namespace
}  // namespace alg::bench

int main(int count, char** arguments) {
  setenv("ALGORITHM_DEVICE_ROOT", SAMPLE_DEVICE, 0);
  setenv("HL_NUM_THREADS", "2", 0);  // Halide's
  std::string filter;
  int pairs = 15;
  for (int i = 1; i < count; i += 2) {
    const std::string option = arguments[i];
    if (i + 1 < count && option == "--filter") {
      filter = arguments[i + 1];
    } else if (i + 1 < count && option == "--pairs" && std::atoi(arguments[i + 1]) > 0) {
      pairs = std::atoi(arguments[i + 1]);
    } else {
      std::fprintf(stderr, "usage: peers [--filter REGEX] [--pairs N]\n");
      return 2;
    }
  }
  return alg::bench::run(filter, pairs);
}
