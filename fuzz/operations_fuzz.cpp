// Every operation of the catalogue against its reference on each vector target: any sizes,
// parameters, pictures and overlaps that its row allows.
#include "fuzz/check.h"
#include "tests/unit/trial.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Input input(data, size);
  const auto all = alg::operations();
  const alg::Operation& operation = *input.pick(all);
  // References are slow where a pixel has many neighbours. Large images go past caches.
  const bool slow = operation.reach == alg::Reach::kNeighbours && operation.radius > 2;
  const int mostPixels = slow ? 1500 : input.byte() % 32 == 1 ? 300000 : 6000;
  const int width = input.side(mostPixels), height = input.side(mostPixels / width);
  const bool turned = input.byte() % 2 != 0;
  const Trial trial = turned ? anyTrial(operation, height, width, mostPixels, input)
                             : anyTrial(operation, width, height, mostPixels, input);
  const Bytes expected = resultOf<Bytes>(trial, referenceOf(operation));
  onEachVectorTarget(
      [&] { expectSame(resultOf<Bytes>(trial, operation.run), expected, operation.name); });
  return 0;
}
