// The whole effect road against the reference.
#include <malloc.h>

#include <map>
#include <thread>

#include "device_root.h"
#include "effect/pipeline.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/thread_pool.h"
#include "log_capture.h"

namespace {

using Pictures = std::map<std::string, ref::Picture>;

Pictures writeAll(const DeviceRoot& root, int width, int height) {
  Pictures pictures;
  for (const ref::Effect& effect : ref::kEffects) {
    for (const std::string& name : {effect.picture, effect.landscapePicture}) {
      if (!name.empty()) pictures[name] = root.writePicture(name, width, height);
    }
  }
  return pictures;
}

/// Runs the road on a guarded frame of noise and compares all of it.
void check(const ref::Effect& effect, const Pictures& pictures, int width, int height,
           int pad = 0) {
  SCOPED_TRACE(testing::Message() << effect.name << " " << width << "x" << height << " " << pad);
  const ref::Frame f{width, height, width + pad, width + pad};
  const Guarded luma(noise(f.yStride * (height - 1) + width)), chroma(noise(ref::chromaBytes(f)));
  const Bytes startLuma = luma.bytes(), startChroma = chroma.bytes();
  Bytes expectedLuma = startLuma, expectedChroma = startChroma;
  const auto picture = pictures.find(width > height ? effect.landscapePicture : effect.picture);
  ref::road(effect, picture == pictures.end() ? nullptr : &picture->second, expectedLuma.data(),
            expectedChroma.data(), f);
  KAVRO_PrettyEffect_Function(effect.name.c_str(), nullptr, luma.data(), chroma.data(), height,
                              width, f.yStride, f.uvStride);
  if (const Guarded y(startLuma), uv(startChroma); true) {
    EXPECT_TRUE(alg::runEffect(effect.name.c_str(),
                               {y.data(), uv.data(), width, height, f.yStride, f.uvStride},
                               alg::Road::kPhases));
    EXPECT_TRUE(same(y.bytes(), expectedLuma) && same(uv.bytes(), expectedChroma)) << "phases";
  }
  EXPECT_TRUE(same(luma.bytes(), expectedLuma));
  EXPECT_TRUE(same(chroma.bytes(), expectedChroma));
}

TEST(Road, EveryNameWithAndWithoutItsPicture) {
  const DeviceRoot root;
  for (const auto& [pictureWidth, pictureHeight] :  // none; too few rows for four strips; enough
       {std::pair{0, 0}, {1, 3}, {5, 4}, {33, 22}, {9, 80}}) {
    const auto pictures =
        pictureWidth == 0 ? Pictures() : writeAll(root, pictureWidth, pictureHeight);
    for (const ref::Effect& effect : ref::kEffects) {
      for (const int height : {32, 34, 36, 38, 44, 46, 60, 66}) {
        for (const int width : {16, 38, 70}) check(effect, pictures, width, height);
        EXPECT_TRUE(gCLAHE_Rgb_Buffer_in == nullptr && gCLAHE_Rgb_Buffer_out == nullptr);
      }
    }
  }
}

TEST(Road, SmallOddAndPaddedFramesAreClippedToTheFrame) {
  const DeviceRoot root;
  const Pictures pictures = writeAll(root, 6, 9);
  for (const std::size_t id : {7u, 22u, 27u}) {  // one strip; four; four with a picture
    for (int height = 1; height <= 21; ++height) {
      for (const int width : {1, 2, 3, 8, 17, 40})
        check(ref::kEffects[id], pictures, width, height);
    }
    for (const int height : {32, 36, 38}) check(ref::kEffects[id], pictures, 20, height, 12);
    check(ref::kEffects[id], pictures, 4100, 36);  // several bands in a strip
    for (const auto& [width, height] : kSizesBelowOne) {
      KAVRO_PrettyEffect_Function("PrettyBlue", "", nullptr, nullptr, height, width, width, width);
    }
  }
}

TEST(Road, PaddedLumaAndChromaBeforeItMakeNoDifference) {
  for (const int lumaAt : {0, 32 * 64}) {
    Bytes frames[2] = {noise(80 * 70), noise(80 * 70)};
    for (const alg::Road road : {alg::Road::kFastest, alg::Road::kPhases}) {
      uint8_t* const y = frames[int(road)].data() + lumaAt;
      uint8_t* const uv = frames[int(road)].data() + (lumaAt == 0 ? 70 * 48 : 0);
      EXPECT_TRUE(alg::runEffect("PrettyBlue", {y, uv, 64, 48, 70, 64}, road));
    }
    EXPECT_TRUE(same(frames[0], frames[1]));
    EXPECT_FALSE(same(frames[0], noise(80 * 70)));
  }
}

TEST(Road, LogsThePoolOnceAndTheNameEveryRun) {
  const DeviceRoot root;
  HALThreadPoolDestroy();
  takeLog();
  Bytes frame(16 * 16 * 3 / 2);
  for (const std::string pool : {"2 Defog: Constructed ThreadPool of size 4.\n"
                                 "2 Defog: 4 threads created by the thread pool\n",
                                 ""}) {
    KAVRO_PrettyEffect_Function("LOMO_effect", "", &frame[0], &frame[256], 16, 16, 16, 16);
    EXPECT_EQ(takeLog(),
              pool +
                  "2 KAVRO_Effect_Function:  brennix process  effect LOMO_effect \n"
                  "2 KAVRO_Effect_Function: brennix  cannot get the  1000 effect picture     \n");
  }
}

TEST(Road, WorkImagesLiveBetweenInitAndDestroy) {
  EXPECT_EQ(fastcvPollInit(30, 20), 0);
  EXPECT_EQ(g_hal_threadpool_init, 1);
  for (uint8_t** image : {&gCLAHE_Rgb_Buffer_in, &gCLAHE_Rgb_Buffer_out}) {
    EXPECT_GE(malloc_usable_size(*image), 1800u);
  }
  fastcvPollDestory();
  fastcvPollDestory();
  EXPECT_TRUE(gCLAHE_Rgb_Buffer_in == nullptr && gCLAHE_Rgb_Buffer_out == nullptr);
}

TEST(Road, ConcurrentCallersEachGetTheirExactResult) {
  const DeviceRoot root;
  const Pictures pictures = writeAll(root, 21, 13);
  std::vector<std::thread> callers;
  for (int caller = 0; caller < 6; ++caller) {
    callers.emplace_back([&pictures, caller] {
      for (const ref::Effect& effect : ref::kEffects) check(effect, pictures, 40, 28 + caller * 6);
    });
  }
  for (int i = 0; i < 100; ++i) EXPECT_EQ(HALThreadPoolDestroy(), 0);  // waits for the run
  for (std::thread& caller : callers) caller.join();
}

TEST(Road, TwoThousandRunsLeakNothing) {  // under a leak checker its report is the test
  const DeviceRoot root;
  writeAll(root, 8, 8);
  Bytes frame(16 * 16 * 3 / 2);
  const auto bytesAfter = [&](std::size_t runs) {
    for (std::size_t i = 0; i < runs; ++i) {
      const char* name = ref::kEffects[i % 28].name.c_str();
      KAVRO_PrettyEffect_Function(name, "", &frame[0], &frame[256], 16, 16, 16, 16);
      takeLog();
    }
    return mallinfo2().uordblks;
  };
  const std::size_t before = bytesAfter(280);
  EXPECT_LT(bytesAfter(2016), before + 16 * 1024);
}

}  // namespace
