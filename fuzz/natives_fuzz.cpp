// The natives at the Java border, with sizes that fit their buffers and sizes that don't.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "tests/unit/fake_jni.h"

namespace {

constexpr int64_t kMostBytes = 200000;

/// A buffer that holds `needed` bytes, or a few more or fewer.
Bytes around(Input& input, int64_t needed) {
  constexpr int kOff[] = {0, 0, 0, -1, 1, 100, -100, -10000};
  return input.fill(int(std::clamp<int64_t>(needed + input.pick(kOff), 0, kMostBytes)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  setenv("ALGORITHM_DEVICE_ROOT", "/nowhere", 1);  // no picture, no engine
  Input input(data, size);
  const int kind = input.byte() % 9;
  const auto anySide = [&] { return input.byte() % 4 != 0 ? input.side(200) : int(input.word()); };
  const jint width = anySide(), height = anySide();
  const jint third = input.byte() % 2 == 0 ? 90 * input.upTo(4) : int(input.word());
  const std::string name = kind == 7 ? input.text(20) : "";
  const int64_t pixels = std::clamp<int64_t>(int64_t{width} * height, 0, kMostBytes);
  const bool words = kind == 2 || kind == 3 || kind == 6;
  const int64_t needed = words ? 4 * pixels : 3 * pixels / 2;
  Bytes first = around(input, needed), second = around(input, needed);

  FakeJni jni;
  JNIEnv* const env = jni.env();
  FakeBuffer a{first.data(), jlong(first.size())}, b{second.data(), jlong(second.size())};
  jobject result = nullptr;
  jint sides[2];
  if (kind == 0) result = YUV2ARGB(env, nullptr, a, width, height);
  if (kind == 1) result = YVU2ARGB(env, nullptr, a, width, height);
  if (kind == 2) result = ARGB2YUV(env, nullptr, a, width, height);
  if (kind == 3) result = ARGB2YVU(env, nullptr, a, width, height);
  if (kind == 4) ROTATE(env, nullptr, a, b, width, height, third);
  if (kind == 5) result = JPEG2ARGB(env, nullptr, a, reinterpret_cast<jintArray>(sides));
  if (kind == 6) result = ARGB2JPEG(env, nullptr, a, width, height, third);
  if (kind == 7) EFFECT(env, nullptr, a, width, height, FakeJni::text(name.c_str()));
  if (kind == 8) SFB(env, nullptr, a, width, height, third, third >> 8, third >> 16);

  const bool fits = width > 0 && height > 0 && int64_t(first.size()) >= needed;
  expectThat(kind == 5 || result == nullptr || fits, "only what fits has a result");
  if (kind < 4 && result != nullptr) {
    const int64_t bytes = words ? 3 * pixels / 2 : 4 * pixels;
    expectThat(int64_t(jni.take(result).size()) == bytes, "a result has its size");
  }
  expectThat(!jni.threw(), "nothing is thrown");
  return 0;
}
