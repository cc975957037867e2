// Pictures of the device: how they are kept, what they may be, and what is refused.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "device_root.h"
#include "libalgorithm/effect_pipeline.h"
#include "log_capture.h"
#include "platform/picture_cache.h"
#include "platform/premultiply_rows.h"
#include "shifted_clock.h"
#include "vector_targets.h"

namespace {

namespace fs = std::filesystem;
using alg::PictureCache, alg::PictureUse;

void setModified(const std::string& path, time_t seconds, long nanoseconds = 5) {
  const timespec times[] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
  EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

/// Whether files are opened as somebody who is not their owner, nor root.
void asStranger(bool stranger) {
  if (getuid() == 0) {
    EXPECT_EQ(seteuid(stranger ? 65534 : 0), 0);
  }
}

constexpr int kDate = 1'000'000;

/// A picture for "PrettyJapan" that is kept, and another one to put in its place: alike but for
/// the pixels.
struct KeptPicture {
  const DeviceRoot root;
  const std::string path = root.path("sucai3.png"), other = root.path("other.png");
  const Bytes first = root.writePicture("sucai3.png", 5, 7).rgba,
              second = root.writePicture("other.png", 5, 7).rgba;
  Bytes secondFile;
  std::fstream fifo;

  KeptPicture() {
    for (const std::string& file : {path, other}) {
      fs::resize_file(file, 600);  // nobody looks behind the end marker
      setModified(file, kDate);
    }
    secondFile = readFile(other);
    fs::permissions(root.root(), fs::perms::all);
    fs::permissions(path, fs::perms(0644));
  }
};

enum class Then { kSame, kAnew, kEachTimeAnew, kOther, kMissing };

struct Change {
  const char* name;
  Then then;
  std::function<void(KeptPicture&)> make;
};

const Change kChanges[] = {
    {"nothing", Then::kSame, [](auto&) {}},
    {"read by another", Then::kSame, [](auto& kept) { readFile(kept.path); }},
    {"touched", Then::kAnew, [](auto& kept) { setModified(kept.path, kDate, 6); }},
    {"changed in its rights", Then::kAnew,
     [](auto& kept) { fs::permissions(kept.path, fs::perms(0600)); }},
    {"dated an hour ahead", Then::kEachTimeAnew,
     [](auto& kept) { setModified(kept.path, time(nullptr) + 3600); }},
    {"no older than two seconds", Then::kEachTimeAnew, [](auto&) { clockShift = 1; }},
    {"from the future, the clock was set back", Then::kEachTimeAnew,
     [](auto&) { clockShift = -100; }},
    {"overwritten, with the same size and date", Then::kOther,
     [](auto& kept) {
       writeFile(kept.path, kept.secondFile);
       setModified(kept.path, kDate);
     }},
    {"replaced", Then::kOther, [](auto& kept) { fs::rename(kept.other, kept.path); }},
    {"removed", Then::kMissing, [](auto& kept) { fs::remove(kept.path); }},
    {"unreadable", Then::kMissing,
     [](auto& kept) {
       fs::permissions(kept.path, fs::perms(0));
       asStranger(true);
     }},
    {"a folder", Then::kMissing,
     [](auto& kept) {
       fs::remove(kept.path);
       fs::create_directory(kept.path);
     }},
    {"a fifo, with a picture in it", Then::kMissing,
     [](auto& kept) {
       fs::remove(kept.path);
       EXPECT_EQ(mkfifo(kept.path.c_str(), 0600), 0);
       kept.fifo.open(kept.path);
       kept.fifo.write(reinterpret_cast<const char*>(kept.secondFile.data()), 600).flush();
     }},
};

std::span<const uint8_t> pixelsOf(const EffectTypeInfo& info) {
  return {info.overlay, asSize(info.overlayWidth) * asSize(info.overlayHeight) * 4};
}

TEST(PictureCache, IsUsedWhileNobodyCanTell) {
  for (const Change& change : kChanges) {
    SCOPED_TRACE(change.name);
    KeptPicture kept;
    const ShiftedClock clock(kLater);
    const EffectTypeInfo before = effectTypeInit("PrettyJapan", 8, 8);
    EXPECT_EQ(effectTypeInit("PrettyJapan", 8, 8).overlay, before.overlay) << "not kept";
    change.make(kept);
    const EffectTypeInfo after = effectTypeInit("PrettyJapan", 8, 8);
    asStranger(false);
    if (change.then == Then::kMissing) {
      EXPECT_EQ(after.effectId, 1000);
      EXPECT_EQ(after.overlay, nullptr);
      const EffectTypeInfo last = effectTypeInit("newsketch_effect", 8, 8);
      EXPECT_EQ(last.effectId, 1000);
      EXPECT_EQ(last.overlay, before.overlay);
      EXPECT_TRUE(same(pixelsOf(last), kept.first));
    } else {
      EXPECT_EQ(after.effectId, 27);
      EXPECT_EQ(after.overlay == before.overlay, change.then == Then::kSame);
      EXPECT_TRUE(same(pixelsOf(after), change.then == Then::kOther ? kept.second : kept.first));
      const bool settled = change.then != Then::kEachTimeAnew;
      EXPECT_EQ(effectTypeInit("PrettyJapan", 8, 8).overlay == after.overlay, settled);
    }
    // Whatever it was: what is put there next is shown, and kept once it has settled.
    fs::remove_all(kept.path);
    writeFile(kept.path, kept.secondFile);
    clockShift = kLater;
    const EffectTypeInfo next = effectTypeInit("PrettyJapan", 8, 8);
    EXPECT_TRUE(same(pixelsOf(next), kept.second));
    EXPECT_EQ(effectTypeInit("PrettyJapan", 8, 8).overlay, next.overlay);
  }
}

TEST(PictureCache, WhatWasKeptGoesWithTheFirstDoubt) {
  KeptPicture kept;
  const ShiftedClock clock(kLater);
  alg::Bitmap before, doubted, after;
  PictureCache cache;
  EXPECT_TRUE(cache.load("sucai3.png", PictureUse::kKeep, before));
  clockShift = 0;
  EXPECT_TRUE(cache.load("sucai3.png", PictureUse::kKeep, doubted));
  clockShift = kLater;
  EXPECT_TRUE(cache.load("sucai3.png", PictureUse::kKeep, after));
  EXPECT_EQ(before.pixels.use_count(), 1);
  EXPECT_EQ(doubted.pixels.use_count(), 1);
  EXPECT_EQ(after.pixels.use_count(), 2);
}

TEST(PictureCache, KeepsTheLastEightOf32MegabytesInAll) {
  const struct {
    std::vector<int> sides, loads, kept;  // of square pictures; numbers of pictures
  } cases[] = {
      {{2000, 2000}, {0, 1}, {0, 1}},
      {{2048, 2048}, {0, 1}, {0, 1}},
      {{2048, 2048, 1}, {0, 1, 2}, {1, 2}},
      {{2000, 2000, 2000}, {0, 1, 0, 2}, {0, 2}},
      {{2000, 2000, 2896}, {0, 1, 2}, {2}},
      {{2000, 2897}, {0, 1}, {0}},
      {{1, 2, 3, 4, 5, 6, 7, 8, 9}, {0, 1, 2, 3, 4, 5, 6, 7, 0, 8}, {0, 2, 3, 4, 5, 6, 7, 8}}};
  const ShiftedClock clock(kLater);
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.sides));
    const DeviceRoot root;
    std::vector<alg::Bitmap> pictures(c.sides.size());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
      writeFile(root.path(std::to_string(i)), png_file::black(c.sides[i], c.sides[i]));
    }
    PictureCache cache;
    for (const int i : c.loads) {
      EXPECT_TRUE(cache.load(std::to_string(i), PictureUse::kRun, pictures[asSize(i)]));
      EXPECT_EQ(pictures[asSize(i)].width, c.sides[asSize(i)]);
    }
    std::vector<int> kept;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
      if (pictures[i].pixels.use_count() == 2) kept.push_back(int(i));
    }
    EXPECT_EQ(kept, c.kept);
  }
}

// 33 MB of pixels. A run decodes it when it looks at it, and frees it; an outside caller keeps it.
TEST(PictureCache, LargePicturesLiveForOneRun) {
  const DeviceRoot root;
  const ShiftedClock clock(kLater);
  constexpr int kSide = 2900;
  writeFile(root.path("sucai0.png"), png_file::black(kSide, kSide));
  Bytes frame(64 * 48 * 3 / 2);
  const auto run = [&](const char* name, int width = 64) {
    KAVRO_PrettyEffect_Function(name, "", frame.data(), &frame[64 * 48], 48, width, 64, 64);
  };
  alg::bitmap_effect = {};
  for (const char* name : {"PrettyPink", "PrettyBeautiful"}) {
    for (const int width : {48, 47}) {  // in one pass, in phases
      run(name, width);
      EXPECT_EQ(alg::bitmap_effect.pixels, nullptr) << name;
      EXPECT_EQ(effectTypeInit("newsketch_effect", 8, 8).overlayWidth, 0);
    }
  }
  const EffectTypeInfo info = effectTypeInit("PrettyBeautiful", 8, 8);
  EXPECT_EQ(info.overlayWidth, kSide);
  for (const char* name : {"PrettySweet", "PrettyJapan", "newsketch_effect", "nothing"}) run(name);
  EXPECT_EQ(alg::bitmap_effect.pixels.get(), info.overlay);
  EXPECT_EQ(effectTypeInit("newsketch_effect", 8, 8).overlay, info.overlay);
  run("PrettyPink", 48);
  EXPECT_EQ(alg::bitmap_effect.pixels, nullptr);

  PictureCache cache;
  alg::Bitmap whole, verdict;
  for (const bool again : {false, true}) {
    EXPECT_TRUE(cache.load("sucai0.png", PictureUse::kVerdict, verdict));
    EXPECT_EQ(verdict.pixels == nullptr, again);
    EXPECT_EQ(std::pair(verdict.width, verdict.height), std::pair(kSide, kSide));
    EXPECT_TRUE(cache.load("sucai0.png", PictureUse::kKeep, whole));
    EXPECT_EQ(whole.pixels.use_count(), 1);
  }
  // A large one that doesn't decode takes the place of a large one in a run alone.
  fs::resize_file(root.path("sucai0.png"), 200);
  EXPECT_FALSE(cache.load("sucai0.png", PictureUse::kKeep, whole));
  EXPECT_NE(whole.pixels, nullptr);
  EXPECT_FALSE(cache.load("sucai0.png", PictureUse::kRun, whole));
  EXPECT_EQ(whole.pixels, nullptr);
}

// Effects that never look at their picture have it decoded all the same, as far as anyone can tell.
TEST(PictureCache, ARunLeavesThePictureOfItsName) {
  const DeviceRoot root;
  std::map<std::string, ref::Picture> pictures = root.writePictures(9, 8);
  for (const char* name : {"sucai0.png", "effect_lomo.png"}) {
    pictures[name] = root.writePicture(name, 7, int(std::strlen(name)));
  }
  fs::remove(root.path("red2green.png"));
  Bytes frame(48 * 48 * 3 / 2);
  for (const int shift : {0, kLater}) {
    const ShiftedClock clock(shift);
    for (int round = 0; round < 3; ++round) {
      for (const auto& [name, picture] : {std::pair{"PrettyBeautiful", "sucai0.png"},
                                          {"PrettyJapan", "sucai3.png"},
                                          {"LOMO_effect", "effect_lomo.png"},
                                          {"newsketch_effect", "effect_lomo.png"},
                                          {"PrettyPink", "sucai0.png"}}) {
        KAVRO_PrettyEffect_Function(name, "", frame.data(), &frame[48 * 48], 48, 48, 48, 48);
        const EffectTypeInfo last = effectTypeInit("newsketch_effect", 48, 48);
        EXPECT_TRUE(same(pixelsOf(last), pictures[picture].rgba)) << name << round;
        EXPECT_EQ(last.effectId, 1000);
      }
    }
  }
}

TEST(Pictures, NoFileTakesMoreThanItsPixels) {
  const DeviceRoot root;
  for (const png_file::Hostile& hostile : png_file::hostileFiles()) {
    writeFile(root.path("sucai3.png"), hostile.content);
    EXPECT_EQ(effectTypeInit("PrettyJapan", 8, 8).effectId, hostile.decodes ? 27 : 1000)
        << hostile.name;
  }
  for (const auto& [width, height] : {std::pair{8000, 8000}, {65535, 1}, {1, 65535}}) {
    writeFile(root.path("sucai3.png"), png_file::black(width, height));
    alg::Bitmap bitmap;
    EXPECT_TRUE(alg::decodeEffectPicture("sucai3.png", bitmap));
  }
}

/// A file of R, G, B, A pixels, its rows sent in seven passes.
void writeInterlaced(const std::string& path, int width, int height, Bytes rgba) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8, PNG_COLOR_TYPE_RGBA,
               PNG_INTERLACE_ADAM7, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  std::vector<png_bytep> rows;
  for (int y = 0; y < height; ++y) rows.push_back(&rgba[asSize(4 * width * y)]);
  png_set_rows(png, info, rows.data());
  png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

TEST(Pictures, InterlacedOnesArePremultipliedOnce) {
  const DeviceRoot root;
  for (const auto& [width, height] : {std::pair{1, 1}, {3, 9}, {17, 4}, {40, 33}}) {
    Bytes pixels = noise(4 * width * height, width);
    writeInterlaced(root.path("sucai3.png"), width, height, pixels);
    alg::premultiplyRowPlain(pixels.data(), pixels.size() / 4);
    alg::Bitmap bitmap;
    ASSERT_TRUE(alg::decodeEffectPicture("sucai3.png", bitmap));
    EXPECT_TRUE(same({bitmap.pixels.get(), pixels.size()}, pixels)) << width << " x " << height;
  }
}

TEST(Pictures, PremultiplyingDividesBy255) {
  Bytes pairs, expected;
  for (int i = 0; i < 65536; ++i) {
    const int alpha = i >> 8, colour = i & 255;
    for (const int c : {colour, 255 - colour, colour ^ 0x55}) {
      pairs.push_back(uint8_t(c));
      expected.push_back(uint8_t((alpha * c + 127) / 255));
    }
    pairs.push_back(uint8_t(alpha)), expected.push_back(uint8_t(alpha));
  }
  onEachTarget([&] {
    Bytes all = pairs;
    alg::premultiplyRow(all.data(), 65536);
    EXPECT_TRUE(same(all, expected));
    for (const bool before : {false, true}) {
      for (std::size_t count = 0; count <= 40; ++count) {
        const std::size_t at = 4 * (65536 / 3 + count), bytes = 4 * count;
        const auto part = [&](const Bytes& from) { return Bytes(&from[at], &from[at] + bytes); };
        const Guarded row(part(pairs), before);
        alg::premultiplyRow(row.data(), count);
        EXPECT_TRUE(same(row.bytes(), part(expected))) << count;
      }
    }
  });
}

}  // namespace
