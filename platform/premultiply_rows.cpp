// The definition of the kernel that multiplies colours by their alpha.
#include "platform/premultiply_rows.h"

#include "base/image_size.h"

namespace alg {

void premultiplyRowPlain(uint8_t* rgba, std::size_t pixels) {
  for (uint8_t* pixel = rgba; pixel != rgba + kArgbBytes * pixels; pixel += kArgbBytes) {
    for (int channel = 0; channel < 3; ++channel) {
      pixel[channel] = static_cast<uint8_t>((pixel[3] * pixel[channel] + 127) / 255);
    }
  }
}

}  // namespace alg
