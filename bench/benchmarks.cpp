// Speed of every exported image routine, how time grows with the size and with threads, and plain
// definitions beside their vector twins.
//
// bytes_per_second counts what must be read and written, once each; of_memcpy is that rate as a
// fraction of memcpy's for as many bytes, measured in the same run. Compare figures of one run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "bench/measure.h"
#include "kernels/targets.h"
#include "libalgorithm/thread_pool.h"

namespace alg::bench {
namespace {

constexpr Size k0MP{640, 480}, k2MP{1920, 1080}, k12MP{4000, 3000}, k50MP{8160, 6120};

/// What a benchmark changes in the process while it runs.
struct Setting {
  std::string suffix;
  Size size;
  Target target = Target::kNone;  // of vectors; kNone for the best
  int threads = 0;                // of the pool; 0 for the library's own
};

void run(benchmark::State& state, const Routine& routine, const Setting& setting) {
  const Size& size = setting.size;
  Images& images = Images::of(routine.input, size);
  forceTarget(setting.target);
  HALThreadPoolDestroy();
  if (setting.threads != 0) {
    g_threadpool = new ThreadPool(setting.threads);
    g_threadpool->initialize_threadpool();
    g_hal_threadpool_init = 1;
  }
  const clockid_t clock = clockOf(routine);
  const double start = seconds(clock);
  for (auto _ : state) {
    routine.run(images.in.data(), images.out.data(), size.width, size.height);
    clobberMemory();
  }
  const double each = (seconds(clock) - start) / static_cast<double>(state.iterations());
  const std::size_t moved = bytesMoved(routine, size);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(moved));
  state.counters["of_memcpy"] = secondsToCopy(moved) / each;
}

void addAll(const Routine& routine) {
  const bool onPipeline = routine.look == Look::kPipeline;
  const bool preview = routine.look == Look::kPreview;
  const bool grows = onPipeline || routine.look == Look::kGrowth;
  std::vector<Setting> settings;
  if (grows || preview) settings.push_back({"/0.3MP", k0MP});
  if (!preview) settings.insert(settings.end(), {{"/2MP", k2MP}, {"/12MP", k12MP}});
  if (grows) settings.push_back({"/50MP", k50MP});
  const std::vector<Target> targets = supportedTargets();  // best first
  if (!onPool(routine.look) && routine.look != Look::kAlone && targets.size() > 1) {
    settings.push_back({"/2MP/plain", k2MP, targets.back()});
  }
  for (const int threads : {1, 2, 4}) {
    if (onPipeline)
      settings.push_back(
          {"/12MP/threads:" + std::to_string(threads), k12MP, Target::kNone, threads});
  }
  for (const Setting& setting : settings) {
    auto* made = benchmark::RegisterBenchmark(
        (routine.name + setting.suffix).c_str(),
        [&routine, setting](benchmark::State& state) { run(state, routine, setting); });
    made->Unit(benchmark::kMillisecond);
    if (onPool(routine.look)) made->MeasureProcessCPUTime()->UseRealTime();
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
  alg::bench::addNatives();
  alg::bench::addJpeg();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
