// Nearest-neighbour stretching of one side over another, without division per element.
#pragma once

namespace alg {

/// Walks floor(i x sourceSize / targetSize) for i = 0, 1, 2, ...; sizes are at least 1.
class NearestSteps {
 public:
  NearestSteps(int sourceSize, int targetSize)
      : whole(sourceSize / targetSize), fraction(sourceSize % targetSize), target(targetSize) {}

  int index() const { return position; }

  void advance() {
    position += whole;
    // Kept below zero, so that the remainder never leaves the int range.
    if ((remainder += fraction) >= 0) {
      ++position;
      remainder -= target;
    }
  }

 private:
  int whole;
  int fraction;
  int target;
  int position = 0;
  int remainder = -target;
};

}  // namespace alg
