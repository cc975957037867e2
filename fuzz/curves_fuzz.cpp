// The curve mapper against its definition: any curves, those made of byte steps, any overlap.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "kernels/curve_map.h"
#include "kernels/curve_rows.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Input input(data, size);
  const bool oneBlock = input.byte() % 2 != 0;
  const int bytes = 3 * (input.side(2000) - 1), shift = input.upTo(400) - 200;
  const bool inSteps = input.byte() % 2 != 0;
  const Bytes values = input.fill(3 * 256);
  const auto curve = [&](int k) {
    const uint8_t* const v = &values[asSize(256 * k)];
    const int flip = v[0] % 2 * 255, up = v[1], down = v[2];
    return [=](int p) {
      return inSteps ? uint8_t(std::max(std::min((p ^ flip) + up, 255) - down, 0)) : v[p];
    };
  };
  const alg::Curves curves = alg::makeCurves(curve(0), curve(1), curve(2));

  const std::size_t from = asSize(std::max(-shift, 0)), to = asSize(std::max(shift, 0));
  const Bytes block = input.fill(bytes + (oneBlock ? std::abs(shift) : 0));
  Bytes expected = block;
  const auto run = [&](auto map, Bytes& into) {
    if (oneBlock) {
      map(into.data() + from, into.data() + to, asSize(bytes / 3), curves);
    } else {
      map(block.data(), into.data(), asSize(bytes / 3), curves);
    }
  };
  run(alg::mapCurveRowPlain, expected);
  onEachVectorTarget([&] {
    Bytes got = block;
    run([](auto... arguments) { alg::mapCurves(arguments...); }, got);
    expectSame(got, expected, "mapped pixels");
  });
  return 0;
}
