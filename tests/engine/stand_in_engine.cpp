// Stands in for the face-beauty engine. It logs what it is given, bytes in hex, with the tag
// "engine", adds the smoothing level to luma and the slimming level to chroma, and fails where a
// test wants it to. It reads records by byte offsets, independently of the library's declarations.
#include <android/log.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

struct Engine;
struct Operations {
  void (*release)(Engine*);
  int (*setConfiguration)(Engine*, const uint8_t* configuration);
  void (*unused)();
  int (*process)(Engine*, int mode, const uint8_t* image, int64_t, int64_t);
};
struct Engine {
  const Operations* operations;
  uint8_t smooth, toning, slimming;
};

int engines = 0;  // more than one ends the process; not atomic, so that concurrent calls also race

template <class... Values>
void log(const char* format, Values... values) {
  __android_log_print(ANDROID_LOG_INFO, "engine", format, values...);
}

/// Bytes in hex, without allocating.
struct Hex {
  Hex(const uint8_t* bytes, int count) {
    for (int i = 0; i < count; ++i) std::snprintf(text + 2 * i, 3, "%02x", bytes[i]);
  }
  char text[161];
};

template <class Value>
Value at(const uint8_t* record, int offset) {
  Value value;
  std::memcpy(&value, record + offset, sizeof value);
  return value;
}

void release(Engine* engine) {
  log("release");
  delete engine;
  --engines;
}

int setConfiguration(Engine* engine, const uint8_t* configuration) {
  const auto* levels = at<const uint8_t*>(configuration, 8);
  log("configuration %s %s", Hex(configuration, 8).text, Hex(levels, 9).text);
  engine->smooth = levels[4], engine->toning = levels[5], engine->slimming = levels[6];
  return 5;  // which nobody reads
}

int process(Engine* engine, int mode, const uint8_t* image, int64_t a, int64_t b) {
  log("process %d %s %d %d", mode, Hex(image, 80).text, a != 0, b != 0);
  if (engine->toning == 99) return -7;
  if (engine->toning == 98) throw std::bad_alloc();
  const auto height = at<uint32_t>(image, 8);
  for (uint32_t i = 0; i < at<uint32_t>(image, 16) * height; ++i)
    at<uint8_t*>(image, 24)[i] += engine->smooth;
  for (uint32_t i = 0; i < at<uint32_t>(image, 32) * height / 2; ++i)
    at<uint8_t*>(image, 40)[i] += engine->slimming;
  return 0;
}

constexpr Operations kOperations{release, setConfiguration, std::abort, process};

}  // namespace

/// A width of 6 fails, one of 8 gives no engine, one of 12 throws.
extern "C" [[gnu::visibility("default")]] int VfbEngineCreate(int width, int height,
                                                              uint32_t format, int argument,
                                                              Engine** out) {
  log("create %d %d %x %d", width, height, format, argument);
  if (width == 6) return 66;
  if (width == 8) return 0;
  if (width == 12) throw std::bad_alloc();
  *out = new (std::nothrow) Engine{&kOperations, 0, 0, 0};
  if (*out == nullptr) return 67;
  if (++engines > 1) std::abort();
  return 0;
}
