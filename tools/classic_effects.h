// The classic effects by name, run on the pixels of a photo.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "tools/photo.h"

namespace alg::tool {

struct ClassicParameters {
  float radius = 1;  ///< fill-light: how far the light reaches, 1 = the corners
  int offset = 0;    ///< miniature-rows: the photo's first row in the ramp of radii
  int ramp = 0;      ///< miniature-rows: rows of that ramp; 0: up to the photo's last row
};

/// The greatest offset and ramp: far beyond any picture.
inline constexpr int kLongestRamp = 1'000'000;

struct ClassicOption {
  std::string_view name;     ///< on the command line, "--paper"; empty for none
  std::string_view picture;  ///< the device's picture that the option replaces; empty for none
};

struct ClassicEffect {
  std::string_view name;
  std::string_view roadName;  ///< the same effect in the effect table, or empty
  std::string_view about;     ///< what it shows, in a few words
  void (*run)(Photo& photo, const ClassicParameters& parameters);
  std::array<ClassicOption, 2> options{};
};

std::span<const ClassicEffect> classicEffects();

/// Throws PictureError when a picture is missing, or the two don't go together.
void checkPictures(const ClassicEffect& effect);

/// Runs an effect on a photo of any size, in place, after checkPictures(). Throws UserError.
void applyClassic(const ClassicEffect& effect, const ClassicParameters& parameters, Photo& photo);

}  // namespace alg::tool
