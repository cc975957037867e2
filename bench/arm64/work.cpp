// Runs each row of bench/routines.cpp once at 1920 x 1080, counted.
//   arm64_work [REGEX]
#include <cstdlib>
#include <regex>
#include <string_view>

#include "bench/arm64/counted.h"
#include "bench/measure.h"
#include "libalgorithm/thread_pool.h"

namespace alg::bench {
namespace {

constexpr Size kSmall{64, 48}, kLarge{1920, 1080};

void runOne(const Routine& routine) {
  // What is computed once per process is no part of the work.
  Images& small = Images::of(routine.input, kSmall);
  routine.run(small.in.data(), small.out.data(), kSmall.width, kSmall.height);
  Images& large = Images::of(routine.input, kLarge);
  counted(routine.name.c_str(),
          [&] { routine.run(large.in.data(), large.out.data(), kLarge.width, kLarge.height); });
}

int run(const char* filter) {
  g_threadpool = new ThreadPool(1);
  g_threadpool->initialize_threadpool();
  g_hal_threadpool_init = 1;
  const std::regex wanted(filter);
  for (const Routine& routine : routines()) {
    if (std::string_view(routine.name) == "memcpy") continue;  // the C library's
    if (std::regex_search(routine.name, wanted)) runOne(routine);
  }
  return 0;
}

}  // namespace
}  // namespace alg::bench

int main(int count, char** arguments) {
  setenv("ALGORITHM_DEVICE_ROOT", SAMPLE_DEVICE, 0);
  return alg::bench::run(count > 1 ? arguments[1] : "");
}
