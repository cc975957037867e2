// The adapter to the face-beauty engine, with a stand-in for the engine.
#include "sfb/beauty_engine.h"

#include "device_root.h"
#include "log_capture.h"

namespace {

struct Call {
  int result;
  std::string log;
  Bytes frame;
  uint8_t* address;
};

Call beautify(int w, int h, const alg::SfbLevels& levels) {
  Call call{0, "", noise(w * h * 3 / 2), nullptr};
  call.address = call.frame.data();
  alg::GtImage image;
  alg::vfb_init_gtimage(&image, alg::kGtTwoPlanes, w, h, w, h, call.address);
  takeLog();
  call.result = alg::SFBProcess(&image, &levels);
  call.log = takeLog();
  return call;
}

Call beautify(int w, int h, int smooth, int toning, int slimming) {
  return beautify(w, h, alg::sfbLevels(smooth, toning, slimming));
}

/// The frame as the stand-in leaves it.
Bytes beautified(int w, int h, int smooth, int slimming) {
  Bytes frame = noise(w * h * 3 / 2);
  for (int i = 0; i < int(frame.size()); ++i) {
    frame[asSize(i)] = uint8_t(frame[asSize(i)] + (i < w * h ? smooth : slimming));
  }
  return frame;
}

std::string hex(uint64_t value, int bytes) {
  std::string text;
  for (; bytes > 0; --bytes, value >>= 8) {
    text += {"0123456789abcdef"[value >> 4 & 15], "0123456789abcdef"[value & 15]};
  }
  return text;
}

/// The bytes of an image record.
std::string record(const alg::GtImage& image) {
  std::string text;
  for (std::size_t i = 0; i < sizeof image; ++i) {
    text += hex(reinterpret_cast<const uint8_t*>(&image)[i], 1);
  }
  return text;
}

TEST(Beauty, EachCallLooksForALibraryUntilThereIsOne) {
  const std::string start =
      "6 DOC_SFB: mode:2, slimming:3, smooth:1, toning:2\n"
      "6 DOC_SFB: Loading SFBEngine library ... \n";
  const std::string found = "6 DOC_SFB: Loading function ... \n", end = "loadSFBFunc failed...\n";
  for (const std::string library : {"", GOLDEN_SUMS, NO_ENGINE}) {
    const DeviceRoot device;
    if (!library.empty()) device.putEngine(library);
    const std::string lines = start + (library == NO_ENGINE ? found : "") + "6 DOC_SFB: ";
    for (int attempt = 0; attempt < 2; ++attempt) {
      const Call call = beautify(4, 2, 1, 2, 3);
      EXPECT_EQ(call.result, -100);
      EXPECT_TRUE(same(call.frame, noise(12)));
      EXPECT_EQ(call.log.find(lines + device.root() + "/system/lib64/libSFB.so: "), 0u) << call.log;
      EXPECT_EQ(call.log.find("\n6 DOC_SFB: " + end), call.log.size() - end.size() - 12);
    }
  }
  const DeviceRoot device;
  device.putEngine(ENGINE);
  EXPECT_EQ(beautify(4, 2, 1, 2, 3).log.find(start + found + "4 engine: create"), 0u);
}

/// The rest needs the engine loaded.
class LoadedBeauty : public testing::Test {
 protected:
  void SetUp() override {
    const DeviceRoot device;
    device.putEngine(ENGINE);
    EXPECT_EQ(beautify(2, 2, 1, 1, 1).result, 0);
  }
};

TEST_F(LoadedBeauty, TheEngineGetsExactBytes) {
  const struct {
    int smooth, toning, slimming, mode;
    alg::SfbTenths tenths;
  } rows[] = {{300, 0, 0, 2, {30, 0, 0}}, {50, 60, 30, 2, {5, 6, 3}},
              {60, 60, 30, 1, {5, 6, 3}},  // the tenths are the call's before
              {60, 61, 30, 2, {6, 6, 3}}, {60, 60, 0, 2, {6, 6, 0}},
              {0, 0, 1, 2, {0, 0, 0}},    {-1, -256, -19, 2, {0, -25, -1}}};
  for (const auto& row : rows) {
    const int s = row.smooth & 255, t = row.toning & 255, l = row.slimming & 255;
    const Call call = beautify(20, 10, row.smooth, row.toning, row.slimming);
    const auto text = [](const char* format, auto... values) {
      char line[400];
      std::snprintf(line, sizeof line, format, values...);
      return std::string(line) + "\n";
    };
    const std::string levels = hex(uint64_t(s), 1) + hex(uint64_t(t), 1);
    const std::string image =
        record({0x30100002, 20, 10, 0, {{20, 0, call.address}, {20, 0, call.address + 200}}});
    EXPECT_EQ(call.log,
              text("6 DOC_SFB: mode:%d, slimming:%d, smooth:%d, toning:%d", row.mode, row.slimming,
                   row.smooth, row.toning) +
                  "4 engine: create 20 10 30100002 8\n" +
                  text("6 DOC_SFB: SetConfiguration s %d, t %d, l %d, sl 100, sc 100, ee 0, ec 0",
                       s, t, l) +
                  "4 engine: configuration " + levels + "646401000000 00000000" + levels +
                  hex(uint64_t(l), 1) + "0000\n" + "6 DOC_SFB: SetConfiguration finished\n" +
                  "4 engine: process -1 " + image + " 0 0\n" + "6 DOC_SFB: Process 0\n" +
                  "4 engine: release\n");
    EXPECT_EQ(call.result, 0);
    EXPECT_TRUE(same(call.frame, beautified(20, 10, s, l)));
    EXPECT_EQ(std::memcmp(&alg::sfbTenths, &row.tenths, sizeof row.tenths), 0);
  }
  EXPECT_TRUE(same(beautify(20, 10, {1, 5, 6, 7}).frame, beautified(20, 10, 60, 30)));
  EXPECT_EQ(beautify(20, 10, 0, 0, 0).log, "");
  EXPECT_EQ(alg::SFBProcess(nullptr, nullptr), 0);
}

TEST_F(LoadedBeauty, OtherFormatsAreDescribedToo) {
  uint8_t data[90];
  alg::GtImage image;
  takeLog();
  alg::vfb_init_gtimage(&image, 0x30200001, 6, 10, 8, 9, data);
  EXPECT_EQ(record(image),
            record({0x30200001, 6, 10, 0, {{8, 0, data}, {3, 0, data + 60}, {3, 0, data + 75}}}));
  EXPECT_EQ(takeLog(), "");
  alg::vfb_init_gtimage(&image, 7, 6, 10, 8, 9, data);
  EXPECT_EQ(record(image), record({7, 6, 10, 0, {{8, 0, data}}}));
  EXPECT_EQ(takeLog(), "6 DOC_SFB: GT_FMT_UNKNOWN in init\n");
}

TEST_F(LoadedBeauty, FailuresOfTheEngineAreReturned) {
  const struct {
    int width, toning, result;
    std::string end;
    bool releases;
  } rows[] = {{6, 1, 66, "4 engine: create 6 4 30100002 8\n", false},
              {8, 1, -100, "6 DOC_SFB: VfbEngineCreate gave no engine\n", false},
              {12, 1, -101, "6 DOC_SFB: The engine threw an exception\n", false},
              {10, 98, -101, "6 DOC_SFB: The engine threw an exception\n4 engine: release\n", true},
              {10, 99, -7, "6 DOC_SFB: Process -7\n4 engine: release\n", true}};
  for (const auto& row : rows) {
    const Call call = beautify(row.width, 4, 1, row.toning, 1);
    EXPECT_EQ(call.result, row.result);
    EXPECT_EQ(call.log.find(row.end), call.log.size() - row.end.size()) << call.log;
    EXPECT_EQ(call.log.find("release") != std::string::npos, row.releases);
    EXPECT_TRUE(same(call.frame, noise(row.width * 6)));
  }
}

}  // namespace
