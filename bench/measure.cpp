#include "bench/measure.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace alg::bench {

Images& Images::of(Input input, const Size& size) {
  static Images images;
  if (images.input_ != input || images.width_ != size.width || images.height_ != size.height) {
    images.fill(input, size);
  }
  return images;
}

void Images::fill(Input input, const Size& size) {
  input_ = input, width_ = size.width, height_ = size.height;
  in = picture(size.width, size.height, input == Input::kWords ? 4 : 3);
  if (input == Input::kInts) {
    const std::vector<int> ints(in.begin(), in.end());
    in.resize(ints.size() * sizeof(int));
    std::memcpy(in.data(), ints.data(), in.size());
  }
  out = in;
  out.resize(std::max(in.size(), 4 * pixelsOf(size.width, size.height)));
}

double seconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double secondsToCopy(std::size_t moved) {
  static std::map<std::size_t, double> known;
  if (const auto found = known.find(moved); found != known.end()) return found->second;
  const Bytes from(moved / 2, 1);
  Bytes to(moved / 2);
  double best = 1e9;
  for (int i = 0; i < 9; ++i) {
    const double start = seconds(CLOCK_THREAD_CPUTIME_ID);
    std::memcpy(to.data(), from.data(), from.size());
    clobberMemory();
    best = std::min(best, seconds(CLOCK_THREAD_CPUTIME_ID) - start);
  }
  return known[moved] = best;
}

}  // namespace alg::bench
