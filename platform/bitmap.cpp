#include "platform/bitmap.h"

#include <new>
#include <string>

#include "platform/device_path.h"
#include "platform/png_file.h"

namespace alg {

Bitmap bitmap_effect;
Bitmap bitmap_front;

bool decodePngOfHost(const char* path, Bitmap& bitmap) try {
  PngFile file(path);
  return file.readSize() && file.decode(bitmap);
} catch (const std::bad_alloc&) {
  return false;
}

bool decodePngFile(const char* path, Bitmap& bitmap) try {
  return decodePngOfHost(devicePath(path).c_str(), bitmap);
} catch (const std::bad_alloc&) {  // no memory even for the path
  return false;
}

bool decodeEffectPicture(std::string_view name, Bitmap& bitmap) try {
  return decodePngFile(std::string(kPictureFolder).append(name).c_str(), bitmap);
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace alg
