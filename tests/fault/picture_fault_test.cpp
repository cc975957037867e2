// Pictures of effects that are hostile, that change during a run, or for which there is no memory.
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "injected.h"
#include "libalgorithm/effect_pipeline.h"
#include "native_calls.h"
#include "shifted_clock.h"

namespace {

namespace fs = std::filesystem;

void run(const char* effect, Bytes& frame) {
  KAVRO_PrettyEffect_Function(effect, "", frame.data(), &frame[kWidth * kHeight], kHeight, kWidth,
                              kWidth, kWidth);
}

/// A frame after an effect.
Bytes after(const char* effect) {
  Bytes frame = noise(kFrame, 5);
  run(effect, frame);
  return frame;
}

TEST(PictureFaults, NoFileTakesMoreMemoryThanItsPixels) {
  const DeviceRoot root;
  after("PrettyJapan");
  for (const png_file::Hostile& hostile : png_file::hostileFiles()) {
    writeFile(root.path("sucai3.png"), hostile.content);
    watchBytes();
    EXPECT_EQ(same(after("PrettyJapan"), after("nothing")), !hostile.decodes) << hostile.name;
    EXPECT_LT(mostBytes(), 1 << 20) << hostile.name;
  }
}

TEST(PictureFaults, ARunHasOneLargePictureAtATime) {
  constexpr int kSide = 3000;
  constexpr long kOne = 4L * kSide * kSide, kBeside = 2 << 20;
  const DeviceRoot root;
  const ShiftedClock clock(kLater);
  writeFile(root.path("sucai0_r.png"), png_file::black(kSide, kSide));
  writeFile(root.path("sucai3.png"), png_file::black(kSide, kSide));
  after("nothing");
  watchBytes();
  effectTypeInit("PrettyJapan", 8, 8);
  for (const char* name : {"PrettyPink", "PrettyJapan", "PrettyBeautiful"}) after(name);
  EXPECT_GT(mostBytes(), kOne);
  EXPECT_LT(mostBytes(), kOne + kBeside);
  watchBytes();
  after("PrettyBeautiful");  // known to have a picture
  EXPECT_LT(mostBytes(), kBeside);
}

TEST(PictureFaults, APictureIsShownOrMissingWhateverHasNoRoom) {
  using namespace std::chrono_literals;
  const DeviceRoot root;
  const std::string path = root.path("sucai3.png");
  const ShiftedClock clock(kLater);
  const Bytes missing = after("PrettyJapan");
  root.writePicture("sucai3.png", 9, 8);
  const Bytes shown = after("PrettyJapan");
  EXPECT_FALSE(same(shown, missing));
  const Bytes untouched = noise(kFrame, 5);
  Bytes frame = untouched;
  const long blocks = liveBlocks();
  for (const bool isKept : {true, false}) {
    for (const bool allLater : {false, true}) {
      bool failed = true;
      for (int number = 0; failed; ++number) {
        if (!isKept) fs::last_write_time(path, fs::last_write_time(path) - 1s);  // a change
        frame = untouched;
        failAllocation(number, allLater);
        run("PrettyJapan", frame);
        failed = stopFailing();
        EXPECT_TRUE(frame == shown || (failed && (frame == missing || frame == untouched)))
            << number;
        EXPECT_TRUE(same(after("PrettyJapan"), shown)) << number;
        EXPECT_EQ(liveBlocks(), blocks) << number;
      }
    }
  }
}

/// What a picture's file becomes, over and over.
void makeTrouble(const DeviceRoot& root, const std::array<Bytes, 2>& files, int step) {
  const std::string path = root.path("sucai3.png"), fresh = root.path("fresh");
  const Bytes& file = files[asSize(step / 8 % 2)];
  std::error_code gone;
  const std::function<void()> troubles[] = {
      [&] { writeFile(path, file); },  // a shorter file for a while
      [&] { writeFile(fresh, file); },
      [&] { fs::resize_file(path, 700, gone); },
      [&] { mkfifo(fresh.c_str(), 0600); },
      [&] { fs::create_symlink("/dev/zero", fresh); },
      [&] { writeFile(fresh, file); },
      [&] { fs::permissions(path, fs::perms(0), gone); },
      [&] {
        fs::remove(path);
        fs::create_directory(path);
        std::this_thread::yield();
        fs::remove(path);
        writeFile(fresh, file);
      }};
  troubles[step % 8]();
  fs::rename(fresh, path, gone);
}

TEST(PictureFaults, PicturesThatChangeUnderARunAreShownWholeOrMissing) {
  const DeviceRoot root;
  std::array<Bytes, 2> files, shown;
  const Bytes missing = after("PrettyJapan");
  for (std::size_t i = 0; i < 2; ++i) {
    root.writePng("sucai3.png", 300, 200, PNG_COLOR_TYPE_RGBA, 8, noise(300 * 200 * 4, int(i)));
    files[i] = readFile(root.path("sucai3.png"));
    shown[i] = after("PrettyJapan");
    EXPECT_FALSE(same(shown[i], missing));
  }
  std::atomic<bool> enough;
  std::thread other([&] {
    for (int step = 0; !enough; ++step) makeTrouble(root, files, step);
  });
  bool seen[3] = {};
  const auto all = [&] { return (seen[0] || seen[1]) && seen[2]; };
  for (int i = 0; i < 300 || (!all() && i < 100000); ++i) {
    const Bytes frame = after("PrettyJapan");
    const int what = frame == missing ? 2 : frame == shown[1] ? 1 : 0;
    EXPECT_TRUE(what != 0 || frame == shown[0]) << i;
    seen[what] = true;
  }
  EXPECT_TRUE(all());
  enough = true;
  other.join();
  fs::remove_all(root.path("sucai3.png"));
  writeFile(root.path("sucai3.png"), files[1]);
  EXPECT_TRUE(same(after("PrettyJapan"), shown[1]));
}

}  // namespace
