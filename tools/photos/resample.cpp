#include "tools/photos/resample.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "base/image_size.h"

namespace alg::tool {
namespace {

constexpr double kLobes = 3;
constexpr std::size_t kChannels = 3;  // alpha stays 255

double lanczos(double x) {
  if (x == 0) {
    return 1;
  }
  if (std::abs(x) >= kLobes) {
    return 0;
  }
  const double angle = std::numbers::pi * x;
  return kLobes * std::sin(angle) * std::sin(angle / kLobes) / (angle * angle);
}

/// How much each of some neighbouring source pixels counts in a new one; the sum is 1.
struct Taps {
  int first;
  std::vector<float> weights;
};

/// For each of `count` new pixels that cover `length` old ones from `begin` on; beyond the `size`
/// that there are, the outermost ones count on.
std::vector<Taps> tapsFor(double begin, double length, int size, int count) {
  const double step = length / count;
  const double widening = std::max(step, 1.0);
  std::vector<Taps> all;
  for (int i = 0; i < count; ++i) {
    const double centre = begin + (i + 0.5) * step;
    const int low = static_cast<int>(std::floor(centre - kLobes * widening));
    const int high = static_cast<int>(std::ceil(centre + kLobes * widening));
    const int first = std::clamp(low, 0, size - 1);
    const int last = std::clamp(high, 0, size - 1);
    std::vector<double> weights(static_cast<std::size_t>(last - first + 1));
    double sum = 0;
    for (int at = low; at <= high; ++at) {
      const double weight = lanczos((at + 0.5 - centre) / widening);
      weights[static_cast<std::size_t>(std::clamp(at, first, last) - first)] += weight;
      sum += weight;
    }
    Taps taps{first, {}};
    std::ranges::transform(weights, std::back_inserter(taps.weights),
                           [&](double weight) { return static_cast<float>(weight / sum); });
    all.push_back(std::move(taps));
  }
  return all;
}

uint8_t toByte(float value) {
  return static_cast<uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

/// A row of the photo at its new width, as B, G, R.
void shrinkRow(const uint8_t* row, const std::vector<Taps>& columns, float* to) {
  for (const Taps& taps : columns) {
    const uint8_t* from = row + static_cast<std::size_t>(taps.first) * kArgbBytes;
    float sums[kChannels] = {};
    for (const float weight : taps.weights) {
      for (std::size_t c = 0; c < kChannels; ++c) {
        sums[c] += weight * static_cast<float>(from[c]);
      }
      from += kArgbBytes;
    }
    to = std::copy_n(sums, kChannels, to);
  }
}

/// Rows at their new width, of which new ones are made; as many as one needs.
class RowWindow {
 public:
  RowWindow(const Photo& photo, const std::vector<Taps>& columns, std::size_t rows)
      : photo_(photo), columns_(columns), rowValues_(columns.size() * kChannels), rows_(rows) {
    values_.resize(rows * rowValues_);
  }

  /// Rows are asked for in order, up to as many as the window has behind the newest.
  const float* row(int y) {
    for (; next_ <= y; ++next_) {
      const auto source = static_cast<std::size_t>(next_);
      const std::size_t stride = static_cast<std::size_t>(photo_.width) * kArgbBytes;
      shrinkRow(photo_.pixels.get() + source * stride, columns_, place(source));
    }
    return place(static_cast<std::size_t>(y));
  }
  void startAt(int y) { next_ = std::max(next_, y); }

 private:
  float* place(std::size_t y) { return values_.data() + y % rows_ * rowValues_; }

  const Photo& photo_;
  const std::vector<Taps>& columns_;
  std::size_t rowValues_;
  std::size_t rows_;
  std::vector<float> values_;
  int next_ = 0;  // source row
};

}  // namespace

Photo resample(const Photo& photo, const Area& area, int width, int height) {
  const std::vector<Taps> columns = tapsFor(area.x, area.width, photo.width, width);
  const std::vector<Taps> rows = tapsFor(area.y, area.height, photo.height, height);
  std::size_t most = 1;
  for (const Taps& taps : rows) {
    most = std::max(most, taps.weights.size());
  }
  RowWindow window(photo, columns, most);
  Photo result = blankPhoto(width, height);
  uint8_t* to = result.pixels.get();
  std::vector<float> sums(columns.size() * kChannels);
  for (const Taps& taps : rows) {
    std::ranges::fill(sums, 0.0F);
    window.startAt(taps.first);
    int y = taps.first;
    for (const float weight : taps.weights) {
      const float* const row = window.row(y++);
      for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] += weight * row[i];
      }
    }
    for (std::size_t i = 0; i < sums.size(); i += kChannels, to += kArgbBytes) {
      to[0] = toByte(sums[i]);
      to[1] = toByte(sums[i + 1]);
      to[2] = toByte(sums[i + 2]);
      to[3] = 255;
    }
  }
  return result;
}

}  // namespace alg::tool
