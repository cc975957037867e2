#include "platform/jpeg_codec.h"

#include <jerror.h>

namespace alg {
namespace {

JpegFault faultOf(int code) {
  switch (code) {
    case JERR_NO_SOI:
    case JERR_INPUT_EMPTY:
      return JpegFault::kNotJpeg;
    case JERR_BAD_PRECISION:
    case JERR_SOF_UNSUPPORTED:
    case JERR_ARITH_NOTIMPL:
    case JERR_NOT_COMPILED:
    case JERR_CONVERSION_NOTIMPL:
    case JERR_CCIR601_NOTIMPL:
    case JERR_FRACT_SAMPLE_NOTIMPL:
      return JpegFault::kUnsupported;
    case JERR_IMAGE_TOO_BIG:
    case JERR_WIDTH_OVERFLOW:
      return JpegFault::kTooLarge;
    case JERR_NO_BACKING_STORE:  // what exceeds max_memory_to_use would go there
      return JpegFault::kTooComplex;
    case JERR_OUT_OF_MEMORY:
      return JpegFault::kNoMemory;
    default:
      return JpegFault::kDamaged;
  }
}

[[noreturn]] void leave(j_common_ptr codec) {
  leaveJpeg(JpegErrors::of(codec), faultOf(codec->err->msg_code));
}

void stayQuiet(j_common_ptr) {}

}  // namespace

JpegErrors::JpegErrors() : failed() {
  jpeg_std_error(&base);
  base.error_exit = leave;
  base.output_message = stayQuiet;
}

void leaveJpeg(JpegErrors& errors, JpegFault fault) {
  errors.fault = fault;
  std::longjmp(errors.failed, 1);
}

}  // namespace alg
