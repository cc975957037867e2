// The natives that convert, each with its result in a block made in the call, as Java gets it. The
// rows of the same routines write to memory in use: the difference is what fresh memory costs.
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <malloc.h>

#include "bench/measure.h"
#include "tests/unit/fake_jni.h"

namespace alg::bench {
namespace {

struct Native {
  const char* name;
  Input input;
  decltype(YUV2ARGB) run;
};

constexpr Native kNatives[] = {{"native YUV2ARGB", Input::kFrame, YUV2ARGB},
                               {"native YVU2ARGB", Input::kFrame, YVU2ARGB},
                               {"native ARGB2YUV", Input::kWords, ARGB2YUV},
                               {"native ARGB2YVU", Input::kWords, ARGB2YVU}};

void run(benchmark::State& state, const Native& native, const Size& size) {
  // Java keeps each result; here the next one would get the memory of the last. With a fixed limit
  // malloc takes all large blocks fresh from the system.
  mallopt(M_MMAP_THRESHOLD, 128 * 1024);
  __android_log_set_logger([](const __android_logger_data*, const char*) {});
  Images& images = Images::of(native.input, size);
  FakeBuffer source{images.in.data(), static_cast<jlong>(images.in.size())};
  for (auto _ : state) {
    FakeJni java;  // frees the result, which is not measured
    const double start = seconds(CLOCK_THREAD_CPUTIME_ID);
    if (native.run(java.env(), nullptr, source, size.width, size.height) == nullptr) {
      state.SkipWithError("no result");
    }
    state.SetIterationTime(seconds(CLOCK_THREAD_CPUTIME_ID) - start);
  }
}

}  // namespace

void addNatives() {
  for (const Native& native : kNatives) {
    for (const auto& [suffix, size] :
         {std::pair{"/2MP", Size{1920, 1080}}, {"/12MP", {4000, 3000}}}) {
      benchmark::RegisterBenchmark(
          (native.name + std::string(suffix)).c_str(),
          [&native, size = size](benchmark::State& state) { run(state, native, size); })
          ->Unit(benchmark::kMillisecond)
          ->UseManualTime();
    }
  }
}

}  // namespace alg::bench
