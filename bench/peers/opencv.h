// What the rows beside OpenCV share.
#pragma once

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/peers/duel.h"

namespace alg::bench {

/// All bytes as an image of packed pixels.
inline cv::Mat packedMat(Bytes& bytes) { return {kHeight, kWidth, CV_8UC3, bytes.data()}; }

/// Bytes 0 and 2 of each pixel.
inline void exchange(const cv::Mat& from, cv::Mat& to) {
  cv::cvtColor(from, to, cv::COLOR_BGR2RGB);
}

/// Calls work(source, target, rows) for bands of rows, so that what lies between several calls of
/// OpenCV stays in the cache.
template <class Work>
void inBands(const cv::Mat& from, cv::Mat& to, const Work& work) {
  constexpr int kBand = 16;  // rows
  for (int y = 0; y < from.rows; y += kBand) {
    const cv::Range rows(y, std::min(y + kBand, from.rows));
    cv::Mat band = to.rowRange(rows);
    work(from.rowRange(rows), band, rows);
  }
}

}  // namespace alg::bench
