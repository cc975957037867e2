#include "effect/strip_split.h"

#include <algorithm>

namespace alg {

Strip stripOf(int height, int count, int index) {
  const int quotient = height / count;
  const bool odd = quotient % 2 != 0;
  const int step = odd ? quotient + 1 : quotient;
  const int rows = odd && index == count - 1 ? height - (count - 1) * step : step;
  const int firstRow = std::min(index * step, height);
  return {firstRow, std::clamp(rows, 0, height - firstRow)};
}

}  // namespace alg
