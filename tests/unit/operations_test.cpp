// Every operation of the catalogue does what its reference does and what its row says: on every
// vector target, in sizes around the vectors' lengths, with any parameters, pictures and overlaps
// that it allows.
#include <set>

#include "operation_check.h"

namespace {

using alg::Bands, alg::Operation, alg::Overlap, alg::Pixels, alg::Reach;

/// What choices and contents are made of: noise, then bytes that contents may repeat, which gives
/// flat areas, white ones among them, stripes and extremes.
Bytes dice(int seed) {
  Bytes bytes = noise(60, seed);
  const Bytes ends[] = {{0}, {255}, {0, 0, 0, 255, 200, 255, 255}, noise(50, -seed)};
  const Bytes& end = ends[asSize(seed % 4)];
  bytes.insert(bytes.end(), end.begin(), end.end());
  return bytes;
}

std::vector<Trial> trialsOf(const Operation& operation) {
  const bool slow = operation.radius > 2;
  std::vector<std::pair<int, int>> sizes = {{300, 20}, {20, 300}, {700, 9}, {48, 120}};
  for (int i = 0; i < 81; ++i) sizes.emplace_back(i / 9 + 1, i % 9 + 1);
  for (int w = 10; w <= 150; w += kSlowdown) sizes.emplace_back(w, w * 7 % 23 + 1);
  for (int h = 10; h <= 70; h += kSlowdown) sizes.emplace_back(h * 5 % 9 + 1, h);
  for (int i = 0; i < 60; i += kSlowdown) sizes.emplace_back(i * 29 % 90 + 9, i * 17 % 61 + 9);
  if (!slow) sizes.insert(sizes.end(), {{1021, 65}, {66, 700}, {4097, 3}, {3, 4096}, {320, 200}});
  std::vector<Trial> trials;
  for (std::size_t i = 0; i < 2 * sizes.size(); ++i) {
    const auto& [width, height] = sizes[i / 2];
    const Bytes bytes = dice(int(i));
    Input input(bytes.data(), bytes.size());
    trials.push_back(anyTrial(operation, width, height, 5000, input));
  }
  return trials;
}

/// Frames of odd sizes have bytes that belong to no sample.
bool coversResult(const Trial& trial) {
  return trial.operation->pixels != Pixels::kFrame ||
         (trial.call.width % 2 == 0 && trial.call.height % 2 == 0);
}

/// The result's bytes alone.
std::span<const uint8_t> resultIn(const Trial& trial, const Bytes& all) {
  const std::size_t at = trial.shift ? asSize(std::max(*trial.shift, 0)) : trial.src.size();
  return std::span(all).subspan(at, trial.resultBytes());
}

/// Two different destinations under one source give the same result, unless the row says that they
/// show. Then they have to, somewhere.
void checkDestination(const Operation& operation, const std::vector<Trial>& trials) {
  bool shows = false;
  for (Trial trial : trials) {
    if (trial.shift || !coversResult(trial)) continue;
    const Bytes once = resultOf<Bytes>(trial, operation.run);
    for (uint8_t& byte : trial.dst) byte = uint8_t(~byte);
    const Bytes again = resultOf<Bytes>(trial, operation.run);
    const bool differs = !std::ranges::equal(resultIn(trial, once), resultIn(trial, again));
    EXPECT_TRUE(operation.readsDestination || !differs)
        << trial.call.width << "x" << trial.call.height;
    shows |= differs;
  }
  EXPECT_EQ(shows, operation.readsDestination);
}

/// Runs a call as bands of `rows` rows and fewer, each with its halo in images of its own.
void runInBands(const Operation& operation, const alg::Call& whole, int rows) {
  const auto bytesOf = [&](int count) {
    return alg::bytesOf(operation.pixels, asSize(whole.width * count));
  };
  const Bytes src(whole.src, whole.src + bytesOf(whole.height));
  const Bytes dst(whole.dst, whole.dst + bytesOf(whole.height));
  const bool inPlace = whole.src == whole.dst;
  for (int first = 0; first < whole.height; first += rows) {
    const int end = std::min(first + rows, whole.height);
    const int top = std::max(first - operation.halo, 0);
    const int bottom = std::min(end + operation.halo, whole.height);
    const auto cut = [&](const Bytes& all) {
      return Guarded(Bytes(&all[bytesOf(top)], &all[0] + bytesOf(bottom)));
    };
    const Guarded from = cut(src), to = cut(dst);
    alg::Call band = whole;
    band.src = inPlace ? to.data() : from.data();
    band.dst = to.data();
    band.height = bottom - top;
    band.firstRow = top, band.imageHeight = whole.height;
    operation.run(band);
    std::copy_n(to.data() + bytesOf(first - top), bytesOf(end - first), whole.dst + bytesOf(first));
  }
}

void checkBands(const Operation& operation, const std::vector<Trial>& trials) {
  for (const Trial& trial : trials) {
    if (operation.bands == Bands::kWholeImage || trial.shift.value_or(0) != 0) continue;
    const Bytes expected = expectedOf(trial);
    const int height = trial.call.height;
    for (const int rows : {trial.call.width * 7 % height + 1, 1 + trial.call.width % 3}) {
      const auto inBands = [&](const alg::Call& call) { runInBands(operation, call, rows); };
      EXPECT_TRUE(same(resultOf<PageBehind>(trial, inBands), expected))
          << trial.call.width << "x" << height << " in bands of " << rows;
    }
  }
}

/// One changed pixel of the source changes no pixel of the result that doesn't depend on it.
void checkReach(const Operation& operation) {
  if (operation.reach == Reach::kAnything) return;
  constexpr int kWidth = 131, kHeight = 67;
  Input input(nullptr, 0);
  Trial trial = anyTrial(operation, kWidth, kHeight, 0, input);
  const Bytes before = resultOf<Bytes>(trial, operation.run);
  const std::size_t pixelBytes = trial.bytesOf(1, 1);
  const int radius = operation.reach == Reach::kNeighbours ? operation.radius : 0;
  for (int i = 0; i < kWidth; ++i) {
    const int x = i < 4 ? i % 2 * (kWidth - 1) : i * 37 % kWidth;
    const int y = i < 4 ? i / 2 * (kHeight - 1) : i * 29 % kHeight;
    Trial changed = trial;
    const bool ints = operation.pixels == Pixels::kInts;
    for (std::size_t k = 0; k < pixelBytes; k += ints ? sizeof(int) : 1) {
      uint8_t& byte = changed.src[asSize(y * kWidth + x) * pixelBytes + k];
      byte = uint8_t(byte ^ 0xA5);
    }
    const Bytes after = resultOf<Bytes>(changed, operation.run);
    for (std::size_t at = changed.src.size(); at < changed.src.size() + changed.dst.size(); ++at) {
      if (after[at] == before[at]) continue;
      const int pixel = int((at - changed.src.size()) / pixelBytes);
      const int column = pixel % kWidth, row = pixel / kWidth;
      const int edge = std::min({column, row, kWidth - 1 - column, kHeight - 1 - row});
      ASSERT_TRUE(edge < std::min(radius, 2) ||
                  (std::abs(column - x) <= radius && std::abs(row - y) <= radius))
          << "the pixel at " << x << ", " << y << " shows at " << column << ", " << row;
    }
  }
}

/// Equal pixels give equal pixels, wherever they are.
void checkPlaces(const Operation& operation) {
  if (operation.reach != Reach::kPixel) return;
  for (int seed = 0; seed < 20; ++seed) {
    const Bytes bytes = dice(seed);
    Input input(bytes.data(), bytes.size());
    Trial trial = anyTrial(operation, 37, 5, 0, input);
    const std::size_t pixelBytes = trial.bytesOf(1, 1), size = trial.resultBytes();
    trial.shift.reset(), trial.src.resize(size), trial.dst.resize(size, 200);
    for (Bytes* content : {&trial.src, &trial.dst, &trial.pictures[0], &trial.pictures[1]}) {
      for (std::size_t i = pixelBytes; i < content->size(); ++i) {
        (*content)[i] = (*content)[i - pixelBytes];
      }
    }
    const Bytes all = resultOf<Bytes>(trial, operation.run);
    const auto result = resultIn(trial, all);
    EXPECT_TRUE(std::ranges::equal(result.subspan(pixelBytes), result.first(size - pixelBytes)));
  }
}

class Operations : public testing::TestWithParam<const Operation*> {};

TEST_P(Operations, DoWhatTheirReferencesAndRowsSay) {
  const Operation& operation = *GetParam();
  ASSERT_NE(referenceOf(operation), nullptr) << "no reference";
  const std::vector<Trial> trials = trialsOf(operation);
  for (const Trial& trial : trials) {
    const Bytes expected = expectedOf(trial);
    onEachVectorTarget([&] {
      if ((&trial - trials.data()) % 2 == 0) {
        expectBytes<PageBehind>(trial, expected);
      } else {
        expectBytes<PageBefore>(trial, expected);
      }
    });
    ASSERT_FALSE(HasFailure());
  }
  checkDestination(operation, trials);
  checkBands(operation, trials);
  checkReach(operation);
  checkPlaces(operation);
  for (const auto& [width, height] : kSizesBelowOne) {  // nothing is touched
    const Trial trial(operation, width, height);
    operation.run(trial.call);
  }
}

INSTANTIATE_TEST_SUITE_P(Each, Operations,
                         testing::ValuesIn(alg::operations().begin(), alg::operations().end()),
                         [](const auto& test) {
                           std::string name = test.param->name;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

TEST(Catalogue, IsConsistent) {
  std::set<std::string> names, routines, pipelineNames;
  std::set<int> identifiers;
  for (const Operation* operation : alg::operations()) {
    SCOPED_TRACE(operation->name);
    const alg::PipelineName& pipeline = operation->pipeline;
    EXPECT_TRUE(names.insert(operation->name).second);
    EXPECT_TRUE(routines.insert(operation->routine).second);
    EXPECT_EQ(alg::findOperation(operation->name), operation);
    for (const alg::Parameter& p : operation->parameters) {
      EXPECT_TRUE(p.least < p.most && p.least <= p.preset && p.preset <= p.most) << p.name;
      const double steps = p.step > 0 ? (p.preset - p.least) / p.step : 0;
      EXPECT_EQ(steps, std::floor(steps)) << p.name;
    }
    if (pipeline.name == nullptr) continue;
    EXPECT_TRUE(pipelineNames.insert(pipeline.name).second);
    EXPECT_TRUE(identifiers.insert(pipeline.identifier).second);
    ASSERT_TRUE(pipeline.identifier >= 0 && pipeline.identifier < ref::kKnownNames);
    const ref::Effect& contract = ref::kEffects[asSize(pipeline.identifier)];
    EXPECT_EQ(std::pair(pipeline.name + std::string(), pipeline.strips),
              std::pair(contract.name, contract.strips));
    // The pipeline works on bands of rows.
    EXPECT_TRUE(!pipeline.runs || operation->bands == Bands::kAny);
  }
  EXPECT_EQ(std::ssize(identifiers), ref::kKnownNames);
}

}  // namespace
