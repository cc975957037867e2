// camera-effects curves: the tone curves of an effect as a picture.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace alg::tool {

struct CurvesRequest {
  std::string effect;
  std::filesystem::path output;  ///< SVG file, or "-" for the standard output
  bool list = false;             ///< instead: print which effects consist of curves
};

/// Runs the effect on pixels that hold every value of each channel, and plots what becomes of them.
/// Throws UserError when what a channel becomes depends on more than its own value.
void plotCurves(const CurvesRequest& request);

/// The names of the effects that consist of curves.
std::vector<std::string_view> curveEffects();

}  // namespace alg::tool
