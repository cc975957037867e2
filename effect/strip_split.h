// How frames are cut into horizontal strips.
#pragma once

namespace alg {

struct Strip {
  int firstRow;
  int rows;
};

/// Strip `index` of `count` of a frame of `height` rows (height >= 1). With q = height / count:
///   q even  every strip has q rows; the last height - count x q rows belong to none
///   q odd   every strip but the last has q + 1, so that each starts on an even row (on a chroma
///           row of its own); the last takes the rest
/// Strips are clipped to the frame: in frames of very few rows the later ones are empty.
Strip stripOf(int height, int count, int index);

}  // namespace alg
