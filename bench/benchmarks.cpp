// Speed of every exported image routine, how time grows with the size and with threads, and plain
// definitions beside their vector twins.
//
// bytes_per_second counts what must be read and written, once each; of_memcpy is that rate as a
// fraction of memcpy's for as many bytes, measured in the same run. Compare figures of one run.
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "bench/routines.h"
#include "hwy/targets.h"
#include "libalgorithm/thread_pool.h"

namespace alg::bench {
namespace {

struct Size {
  int width, height;
};
constexpr Size k0MP{640, 480}, k2MP{1920, 1080}, k12MP{4000, 3000}, k50MP{8160, 6120};

/// The bytes to work on. Those of the last size stay.
class Images {
 public:
  static Images& of(Input input, const Size& size) {
    static Images images;
    if (images.input_ != input || images.width_ != size.width) images.fill(input, size);
    return images;
  }

  Bytes in, out;

 private:
  void fill(Input input, const Size& size) {
    input_ = input, width_ = size.width;
    in = picture(size.width, size.height, input == Input::kWords ? 4 : 3);
    if (input == Input::kInts) {
      const std::vector<int> ints(in.begin(), in.end());
      in.resize(ints.size() * sizeof(int));
      std::memcpy(in.data(), ints.data(), in.size());
    }
    out = in;
    out.resize(std::max(in.size(), 4 * pixelsOf(size.width, size.height)));
  }

  Input input_{};
  int width_ = 0;
};

double seconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Seconds that memcpy takes to read and write `moved` bytes together; the best of a few.
double secondsToCopy(std::size_t moved) {
  static std::map<std::size_t, double> known;
  if (const auto found = known.find(moved); found != known.end()) return found->second;
  const Bytes from(moved / 2, 1);
  Bytes to(moved / 2);
  double best = 1e9;
  for (int i = 0; i < 9; ++i) {
    const double start = seconds(CLOCK_THREAD_CPUTIME_ID);
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::ClobberMemory();
    best = std::min(best, seconds(CLOCK_THREAD_CPUTIME_ID) - start);
  }
  return known[moved] = best;
}

/// What a benchmark changes in the process while it runs.
struct Setting {
  std::string suffix;
  Size size;
  int64_t targets = 0;  // vector targets to choose from; 0 for all
  int threads = 0;      // of the pool; 0 for the library's own
};

void run(benchmark::State& state, const Routine& routine, const Setting& setting) {
  const Size& size = setting.size;
  Images& images = Images::of(routine.input, size);
  hwy::SetSupportedTargetsForTest(setting.targets);
  HALThreadPoolDestroy();
  if (setting.threads != 0) {
    g_threadpool = new ThreadPool(setting.threads);
    g_threadpool->initialize_threadpool();
    g_hal_threadpool_init = 1;
  }
  const bool road = routine.look == Look::kRoad;  // has threads of its own
  const clockid_t clock = road ? CLOCK_MONOTONIC : CLOCK_THREAD_CPUTIME_ID;
  const double start = seconds(clock);
  for (auto _ : state) {
    routine.run(images.in.data(), images.out.data(), size.width, size.height);
    benchmark::ClobberMemory();
  }
  const double each = (seconds(clock) - start) / static_cast<double>(state.iterations());
  const double moved = routine.moved * static_cast<double>(pixelsOf(size.width, size.height));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(moved));
  state.counters["of_memcpy"] = secondsToCopy(static_cast<std::size_t>(moved)) / each;
}

void addAll(const Routine& routine) {
  const bool road = routine.look == Look::kRoad;
  const bool grows = road || routine.look == Look::kGrowth;
  std::vector<Setting> settings = {{"/2MP", k2MP}, {"/12MP", k12MP}};
  if (grows) {
    settings.insert(settings.begin(), {"/0.3MP", k0MP});
    settings.push_back({"/50MP", k50MP});
  }
  const std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();  // best first
  if (!road && routine.look != Look::kAlone && targets.size() > 1) {
    settings.push_back({"/2MP/plain", k2MP, targets.back()});
  }
  for (const int threads : {1, 2, 4}) {
    if (road) settings.push_back({"/12MP/threads:" + std::to_string(threads), k12MP, 0, threads});
  }
  for (const Setting& setting : settings) {
    auto* made = benchmark::RegisterBenchmark(
        (routine.name + setting.suffix).c_str(),
        [&routine, setting](benchmark::State& state) { run(state, routine, setting); });
    made->Unit(benchmark::kMillisecond);
    if (road) made->MeasureProcessCPUTime()->UseRealTime();
  }
}

}  // namespace
}  // namespace alg::bench

int main(int count, char** arguments) {
  setenv("ALGORITHM_DEVICE_ROOT", SAMPLE_DEVICE, 0);
  // Over 250 of them: briefer than usual, unless the caller says otherwise.
  char brief[] = "--benchmark_min_time=0.1", tabular[] = "--benchmark_counters_tabular=true";
  std::vector<char*> options = {arguments[0], brief, tabular};
  options.insert(options.end(), arguments + 1, arguments + count);
  count = static_cast<int>(options.size());
  options.push_back(nullptr);
  benchmark::Initialize(&count, options.data());
  if (benchmark::ReportUnrecognizedArguments(count, options.data())) return 2;
  std::ranges::for_each(alg::bench::routines(), alg::bench::addAll);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
