// How libjpeg is called. Its errors leave by longjmp, so no object with a destructor may live in
// the frames between setjmp and the codec, and results are kept in the structs that own it.
#pragma once

#include <cstdio>  // jpeglib.h needs it

#include <jpeglib.h>

#include <csetjmp>
#include <cstddef>
#include <cstdint>

#include "platform/jpeg_format.h"

namespace alg {

/// What the codec calls when something is wrong. The struct that owns a codec has this as a member;
/// `jpeg.err` points to `base`.
struct JpegErrors {
  jpeg_error_mgr base;
  std::jmp_buf failed;
  JpegFault fault = JpegFault::kNone;  ///< of the last failure

  JpegErrors();
  static JpegErrors& of(j_common_ptr codec) { return *reinterpret_cast<JpegErrors*>(codec->err); }
};

/// Ends the codec's call: setjmp(errors.failed) returns again.
[[noreturn]] void leaveJpeg(JpegErrors& errors, JpegFault fault);

constexpr J_COLOR_SPACE codecPixels(JpegPixels pixels) {
  constexpr J_COLOR_SPACE kSpaces[] = {JCS_EXT_BGRA, JCS_EXT_RGBA, JCS_EXT_BGR, JCS_EXT_RGB};
  return kSpaces[static_cast<std::size_t>(pixels)];
}

/// Rows that go to the codec in one call.
inline constexpr int kJpegLines = 16;

}  // namespace alg
