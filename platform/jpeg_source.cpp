#include "platform/jpeg_source.h"

#include <jerror.h>

#include <algorithm>

namespace alg {

JpegSource::JpegSource(JpegInput& input) : input_(input) {}

jpeg_source_mgr& JpegSource::start(std::size_t mostBytes, std::size_t mostHeaderBytes) {
  given_ = 0;
  mostBytes_ = mostBytes;
  mostHeaderBytes_ = mostHeaderBytes;
  ranOut_ = false;
  base_ = {};
  base_.init_source = [](j_decompress_ptr) {};
  base_.fill_input_buffer = [](j_decompress_ptr jpeg) -> boolean {
    of(jpeg).fill(jpeg);
    return TRUE;
  };
  base_.skip_input_data = [](j_decompress_ptr jpeg, long bytes) {
    if (bytes > 0) {
      of(jpeg).skip(jpeg, static_cast<std::size_t>(bytes));
    }
  };
  base_.resync_to_restart = jpeg_resync_to_restart;
  base_.term_source = [](j_decompress_ptr) {};
  return base_;
}

void JpegSource::endHeader(JpegErrors& errors) {
  if (given_ - base_.bytes_in_buffer > mostHeaderBytes_) {
    leaveJpeg(errors, JpegFault::kTooComplex);
  }
  mostHeaderBytes_ = SIZE_MAX;
}

bool JpegSource::takeNext() {
  const std::span<const uint8_t> piece = ranOut_ ? std::span<const uint8_t>() : input_.next();
  base_.next_input_byte = piece.data();
  base_.bytes_in_buffer = std::min(piece.size(), mostBytes_ - given_);
  given_ += base_.bytes_in_buffer;
  return base_.bytes_in_buffer > 0;
}

void JpegSource::fill(j_decompress_ptr jpeg) {
  if (given_ > mostHeaderBytes_) {
    leaveJpeg(JpegErrors::of(reinterpret_cast<j_common_ptr>(jpeg)), JpegFault::kTooComplex);
  }
  if (takeNext()) {
    return;
  }
  static constexpr JOCTET kEndMarker[] = {0xFF, JPEG_EOI};
  if (given_ == 0) {
    ERREXIT(jpeg, JERR_INPUT_EMPTY);
  }
  ranOut_ = true;
  WARNMS(jpeg, JWRN_JPEG_EOF);
  base_.next_input_byte = kEndMarker;
  base_.bytes_in_buffer = sizeof kEndMarker;
}

void JpegSource::skip(j_decompress_ptr jpeg, std::size_t bytes) {
  while (bytes > base_.bytes_in_buffer) {
    bytes -= base_.bytes_in_buffer;
    fill(jpeg);
  }
  base_.next_input_byte += bytes;
  base_.bytes_in_buffer -= bytes;
}

bool JpegSource::nothingLeft() {
  if (ranOut_ || (base_.bytes_in_buffer == 0 && !takeNext())) {
    return true;
  }
  return base_.bytes_in_buffer >= 2 && base_.next_input_byte[0] == 0xFF &&
         base_.next_input_byte[1] == JPEG_EOI;
}

bool JpegSource::findLastMarker(std::size_t& offset) {
  if (!input_.rewind()) {
    return false;
  }
  std::size_t at = 0;
  uint8_t before = 0;
  offset = 0;
  for (auto piece = input_.next(); !piece.empty(); piece = input_.next()) {
    for (const uint8_t byte : piece) {
      const bool stuffing = byte == 0x00 || byte == 0xFF;
      if (before == 0xFF && !stuffing) {
        offset = at - 1;
      }
      before = byte;
      ++at;
    }
  }
  return true;
}

}  // namespace alg
