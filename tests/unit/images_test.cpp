// Images of any layout: what jobs make of them is what the routines make of packed pixels, and what
// lies between rows stays as it is.
#include "images/frames.h"
#include "images/geometry.h"
#include "images/job.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/pretty_filters.h"
#include "libalgorithm/yuv_convert.h"
#include "operation_check.h"

namespace {

using alg::FrameImage, alg::Image, alg::Job, alg::Operation, alg::Pixels;

/// An image between guard pages, its rows `padding` bytes apart.
class Canvas {
 public:
  Canvas(int width, int height, int padding, bool redFirst, int seed)
      : block_(noise((4 * width + padding) * (height - 1) + 4 * width, seed)),
        before_(block_.bytes()),
        image{block_.data(), width, height, 4 * width + padding, redFirst} {}

  /// Byte k of a pixel in the order B, G, R, A.
  uint8_t& at(int x, int y, int k) const {
    return image.row(y)[4 * x + (image.redFirst && k != 1 && k != 3 ? 2 - k : k)];
  }
  uint8_t was(int x, int y, int k) const {
    return before_[asSize(int(&at(x, y, k) - image.pixels))];
  }
  void expectPaddingKept() const {
    const Bytes now = block_.bytes();
    for (std::size_t i = 0; i < now.size(); ++i) {
      const auto column = i % asSize(int(image.stride));
      ASSERT_TRUE(column < image.rowBytes() || now[i] == before_[i]) << "padding at " << i;
    }
  }

 private:
  Guarded block_;
  Bytes before_;

 public:
  Image image;
};

Job jobOf(const Operation& operation, int weight, int pieceRows) {
  Job job;
  job.operation = &operation;
  std::ranges::copy(alg::presetCall(operation).values, job.values);
  job.weight = weight, job.pieceRows = pieceRows;
  return job;
}

struct Layout {
  int srcPadding, dstPadding;
  bool srcRed, dstRed, inPlace;
};
constexpr Layout kLayouts[] = {{0, 0, false, false, true},
                               {0, 0, true, true, false},
                               {7, 12, true, false, false},
                               {5, 0, true, true, true},
                               {0, 9, false, true, false}};

/// What the routine makes of the canvas' pixels, B, G, R each; of what it leaves alone, the
/// source's or the backdrop's level.
Bytes routineOn(const Operation& operation, const Canvas& src, const Job& job,
                const alg::PictureView* pictures) {
  const auto& [pixels, width, height, stride, redFirst] = src.image;
  const std::size_t count = asSize(width * height);
  const bool words = operation.pixels == Pixels::kWords, ints = operation.pixels == Pixels::kInts;
  const int step = words ? 4 : 3;
  const bool rgb = operation.pixels == Pixels::kPackedRgb;
  Bytes from(count * asSize(step)), to(from.size());
  for (std::size_t i = 0; i < count; ++i) {
    for (int k = 0; k < step; ++k) {
      const uint8_t v = src.was(int(i) % width, int(i) / width, rgb ? 2 - k : k);
      from[i * asSize(step) + asSize(k)] = v;
      to[i * asSize(step) + asSize(words ? k : 2 - k)] =
          operation.backdrop >= 0 ? uint8_t(operation.backdrop) : v;
    }
  }
  alg::Call call = alg::presetCall(operation);
  std::vector<int> intsFrom(from.begin(), from.end()), intsTo(to.begin(), to.end());
  call.src = ints ? reinterpret_cast<uint8_t*>(intsFrom.data()) : from.data();
  call.dst = ints ? reinterpret_cast<uint8_t*>(intsTo.data()) : to.data();
  call.width = width, call.height = height;
  std::ranges::copy(job.values, call.values);
  std::copy_n(pictures, alg::kMostPictures, call.pictures);
  operation.run(call);
  if (ints) std::ranges::transform(intsTo, to.begin(), [](int v) { return uint8_t(v); });
  Bytes bgr(3 * count);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      bgr[3 * i + k] = to[i * asSize(step) + (words || rgb ? k : 2 - k)];
    }
  }
  return bgr;
}

class ImageJobs : public testing::TestWithParam<const Operation*> {};

TEST_P(ImageJobs, GiveTheRoutinesColoursInAnyLayout) {
  const Operation& operation = *GetParam();
  const Canvas front(13, 9, 4, false, 3), mask(17, 9, 0, true, 4);
  Bytes copies[2];  // R, G, B, A, packed
  alg::PictureView views[2];
  for (int i = 0; i < 2; ++i) {
    const Canvas& picture = i == 0 ? front : mask;
    for (int p = 0; p < picture.image.width * picture.image.height; ++p) {
      for (const int k : {2, 1, 0, 3}) {
        copies[i].push_back(picture.at(p % picture.image.width, p / picture.image.width, k));
      }
    }
    views[i] = {copies[i].data(), picture.image.width, picture.image.height};
  }
  const std::pair<int, int> sizes[] = {{1, 1}, {2, 5}, {37, 3}, {50, 61}, {129, 133}, {181, 190}};
  for (const auto& [width, height] : sizes) {
    for (const Layout& layout : kLayouts) {
      for (const int weight : {256, 97, 0}) {
        if (weight != 256 && width != 50) continue;
        SCOPED_TRACE(testing::Message() << width << "x" << height << " weight " << weight
                                        << " layout " << &layout - kLayouts);
        const Canvas src(width, height, layout.srcPadding, layout.srcRed, width);
        const Canvas other(width, height, layout.dstPadding, layout.dstRed, 8);
        const Canvas& dst = layout.inPlace ? src : other;
        Job job = jobOf(operation, weight, width == 50 || width == 129 ? 4 : 0);
        job.pictures[0] = front.image, job.pictures[1] = mask.image;
        const Bytes expected = routineOn(operation, src, job, views);
        ASSERT_EQ(runJob(job, src.image, dst.image), alg::JobOutcome::kDone);
        for (int i = 0; i < 4 * width * height; ++i) {
          const int x = i / 4 % width, y = i / 4 / width, k = i % 4;
          const int was = src.was(x, y, k);
          const int full = k == 3 ? was : expected[asSize(i / 4 * 3 + k)];
          ASSERT_EQ(int(dst.at(x, y, k)), (was * (256 - weight) + full * weight + 128) / 256)
              << x << ", " << y << " byte " << k;
        }
        dst.expectPaddingKept();
      }
    }
  }
}

std::vector<const Operation*> effects() {
  std::vector<const Operation*> found;
  std::ranges::copy_if(alg::operations(), std::back_inserter(found),
                       [](const Operation* row) { return isEffect(*row); });
  return found;
}

INSTANTIATE_TEST_SUITE_P(Each, ImageJobs, testing::ValuesIn(effects()), [](const auto& test) {
  std::string name = test.param->name;
  std::ranges::replace(name, '-', '_');
  return name;
});

/// A frame with padded rows and its packed copy.
struct PaddedFrame {
  PaddedFrame(int width, int height, bool vFirst, int padding, int seed)
      : block(noise((width + padding) * height + 11 + (width + padding) * height / 2, seed)),
        frame{block.data(),    block.data() + (width + padding) * height + 11,
              width,           height,
              width + padding, width + padding,
              vFirst} {}
  Bytes packed() const {
    Bytes bytes;
    for (int y = 0; y < frame.height * 3 / 2; ++y) {
      const uint8_t* const row = y < frame.height
                                     ? frame.luma + y * frame.lumaStride
                                     : frame.chroma + (y - frame.height) * frame.chromaStride;
      bytes.insert(bytes.end(), row, row + frame.width);
    }
    return bytes;
  }
  Guarded block;
  FrameImage frame;
};

TEST(ImageFrames, AreThoseOfTheExportedRoutinesInAnyLayout) {
  for (const auto& [w, h] : {std::pair(2, 2), {34, 6}, {66, 4}, {130, 10}}) {
    for (int i = 0; i < 16; ++i) {
      const bool vFirst = i % 2 != 0, red = i / 2 % 2 != 0;
      const PaddedFrame frame(w, h, vFirst, i / 4 % 2 * 6, i);
      const Canvas canvas(w, h, i / 8 * 10, red, 5);
      Bytes packed = frame.packed(), argb(asSize(4 * w * h));
      const auto decode = vFirst ? decodeYVU2ARGB_OpenGL : decodeYUV2ARGB_LUT;
      decode(reinterpret_cast<uint32_t*>(argb.data()), packed.data(), packed.data() + w * h, w, h,
             w, w);
      decodeToImage(frame.frame, canvas.image);
      for (int p = 0; p < 4 * w * h; ++p) {
        ASSERT_EQ(canvas.at(p / 4 % w, p / 4 / w, p % 4), argb[asSize(p)])
            << w << " " << i << " " << p;
      }
      canvas.expectPaddingKept();
      const auto encode = vFirst ? decodeARGB2YVU_OpenGL : decodeARGB2YUV_OpenGL;
      for (uint8_t& v : argb) v = uint8_t(v * 7 + 3);
      for (int p = 0; p < 4 * w * h; ++p) canvas.at(p / 4 % w, p / 4 / w, p % 4) = argb[asSize(p)];
      encode(reinterpret_cast<uint32_t*>(argb.data()), packed.data(), packed.data() + w * h, w, h,
             w, w);
      encodeFromImage(canvas.image, frame.frame);
      ASSERT_TRUE(same(frame.packed(), packed)) << w << " " << i;
    }
  }
}

TEST(ImageFrames, TakeEffectsInBands) {
  for (const Operation* operation : effects()) {
    if (!operation->pictures.empty() && operation->pictures[0].read) continue;
    for (const int pieceRows : {0, 4}) {
      const PaddedFrame frame(62, 46, pieceRows == 0, 4, 9);
      const Canvas canvas(62, 46, 0, false, 1);
      const Job job = jobOf(*operation, 200, pieceRows);
      const PaddedFrame expected(62, 46, pieceRows == 0, 4, 9);
      decodeToImage(expected.frame, canvas.image);
      runJob(job, canvas.image, canvas.image);
      encodeFromImage(canvas.image, expected.frame);
      ASSERT_EQ(runJob(job, frame.frame), alg::JobOutcome::kDone);
      EXPECT_TRUE(same(frame.block.bytes(), expected.block.bytes())) << operation->name;
    }
  }
}

TEST(ImageGeometry, TurnsResizesAndPastes) {
  for (int i = 0; i < 16; ++i) {
    const int w = 7 + 50 * (i % 3), h = 5 + 41 * (i % 5), degrees = 90 * (i % 4);
    const bool side = i % 2 != 0;
    const Canvas src(w, h, i / 4 * 3, i % 3 == 0, i);
    const Canvas dst(side ? h : w, side ? w : h, i / 2, i % 5 < 3, 40 + i);
    ASSERT_TRUE(turnImage(src.image, alg::Turn(i % 4), dst.image));
    for (int p = 0; p < w * h; ++p) {
      const int x = p % w, y = p / w;
      const int tx = degrees == 0 ? x : degrees == 90 ? h - 1 - y : degrees == 180 ? w - 1 - x : y;
      const int ty = degrees == 0 ? y : degrees == 90 ? x : degrees == 180 ? h - 1 - y : w - 1 - x;
      for (int k = 0; k < 4; ++k) ASSERT_EQ(dst.at(tx, ty, k), src.at(x, y, k)) << i;
    }
    dst.expectPaddingKept();

    const Canvas resized(3 + 20 * (i % 4), 60 - 3 * i, i % 6, i % 2 == 0, 3);
    std::vector<uint32_t> words(asSize(w * h)),
        result(asSize(resized.image.width * resized.image.height));
    for (int p = 0; p < 4 * w * h; ++p) {
      reinterpret_cast<uint8_t*>(words.data())[p] = src.at(p / 4 % w, p / 4 / w, p % 4);
    }
    Resize(result.data(), resized.image.width, resized.image.height, words.data(), w, h);
    ASSERT_TRUE(resizeImage(src.image, resized.image));
    for (int p = 0; p < resized.image.width * resized.image.height; ++p) {
      for (int k = 0; k < 4; ++k) {
        const int expected = k == 3 ? 255 : int(result[asSize(p)] >> (8 * k) & 255);
        ASSERT_EQ(resized.at(p % resized.image.width, p / resized.image.width, k), expected) << i;
      }
    }
    resized.expectPaddingKept();

    const Canvas pasted(w, h, i, i % 2 == 0, 77);
    pasteArea(src.image, pasted.image, 2, 1, w - 4, h - 3);
    for (int p = 0; p < 4 * w * h; ++p) {
      const int x = p / 4 % w, y = p / 4 / w, k = p % 4;
      const bool inside = x >= 2 && x < w - 2 && y >= 1 && y < h - 2;
      ASSERT_EQ(pasted.at(x, y, k), inside ? src.at(x, y, k) : pasted.was(x, y, k)) << i;
    }
  }
}

TEST(ImageGeometry, PacksPlanesOfAnyKind) {
  for (int i = 0; i < 96; ++i) {
    const int kind = i % 6, turn = i / 6 % 4, w = 2 + 44 * (i % 5), h = 2 + 66 * (i % 3);
    const bool side = turn % 2 != 0, vFirst = i / 24 % 2 != 0;
    const int lumaStep = kind == 5 ? 2 : 1, step = kind < 2 ? 2 : kind == 2 ? 1 : 3;
    const int row = w * lumaStep + 5, chromaRow = w / 2 * step + (kind < 2 ? 0 : 3);
    const Bytes luma = noise(row * h, i), chroma = noise(2 * chromaRow * (h / 2) + 1, -i);
    const int second = kind < 2 ? 1 : chromaRow * (h / 2);
    const alg::SamplePlane a{chroma.data(), chromaRow, step},
        b{chroma.data() + second, chromaRow, step};
    const alg::CameraPlanes planes{
        {luma.data(), row, lumaStep}, kind % 2 ? a : b, kind % 2 ? b : a};
    const PaddedFrame dst(side ? h : w, side ? w : h, vFirst, i % 4, 5);
    ASSERT_TRUE(packFrame(planes, alg::Turn(turn), dst.frame));
    const auto turned = [&](int x, int y, int gw, int gh) {
      return turn == 0   ? std::pair(x, y)
             : turn == 1 ? std::pair(gh - 1 - y, x)
             : turn == 2 ? std::pair(gw - 1 - x, gh - 1 - y)
                         : std::pair(y, gw - 1 - x);
    };
    for (int p = 0; p < w * h; ++p) {
      const auto [tx, ty] = turned(p % w, p / w, w, h);
      ASSERT_EQ(dst.frame.luma[ty * dst.frame.lumaStride + tx],
                *planes.y.from(p % w, p / w).samples)
          << i;
    }
    for (int p = 0; p < w * h / 4; ++p) {
      const auto [tx, ty] = turned(p % (w / 2), p / (w / 2), w / 2, h / 2);
      const uint8_t* const pair = dst.frame.chroma + ty * dst.frame.chromaStride + 2 * tx;
      ASSERT_EQ(pair[vFirst ? 1 : 0], *planes.u.from(p % (w / 2), p / (w / 2)).samples) << i;
      ASSERT_EQ(pair[vFirst ? 0 : 1], *planes.v.from(p % (w / 2), p / (w / 2)).samples) << i;
    }
  }
}

}  // namespace
