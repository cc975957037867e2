// The only list of all operations.
#pragma once

#include <span>
#include <string_view>

#include "catalogue/operation.h"

// In the order in which people see them. Each row is at the end of its routine's source file.
// One a line, because clang-format finds no stable layout for them.
// clang-format off
#define ALG_OPERATIONS(ROW) \
  ROW(kPrettySweet)         \
  ROW(kPrettyNature)        \
  ROW(kPrettyBlue)          \
  ROW(kPrettyMoonlight)     \
  ROW(kPrettyWhiteDew)      \
  ROW(kPrettyBeautiful)     \
  ROW(kPrettyPink)          \
  ROW(kPrettyJapan)         \
  ROW(kCrossProcess)        \
  ROW(kGrayScale)           \
  ROW(kSepia)               \
  ROW(kPink)                \
  ROW(kSummer)              \
  ROW(kOcean)               \
  ROW(kNegative)            \
  ROW(kMosaic)              \
  ROW(kOtherTest)           \
  ROW(kTemperature)         \
  ROW(kLomo)                \
  ROW(kLomoFun)             \
  ROW(kFishEye)             \
  ROW(kFillLight)           \
  ROW(kMiniature)           \
  ROW(kMiniatureRows)       \
  ROW(kBlur)                \
  ROW(kActiveBlur)          \
  ROW(kSketch)              \
  ROW(kNewSketch)           \
  ROW(kPrague)              \
  ROW(kPragueCarton)        \
  ROW(kNature)              \
  ROW(kEmboss)              \
  ROW(kColorPaint)          \
  ROW(kArea)                \
  ROW(kResize)              \
  ROW(kRotateYuv90)         \
  ROW(kRotateYuv180)        \
  ROW(kRotateYuv270)        \
  ROW(kRotateYuv)           \
  ROW(kRotateArgb90)        \
  ROW(kRotateArgb180)       \
  ROW(kRotateArgb270)       \
  ROW(kRotateArgb)          \
  ROW(kMix)                 \
  ROW(kLighten)             \
  ROW(kDarken)              \
  ROW(kPaste)               \
  ROW(kBackground)          \
  ROW(kFarthest)
// clang-format on

namespace alg {

namespace operation {
#define ALG_DECLARE(row) extern const Operation row;
ALG_OPERATIONS(ALG_DECLARE)
#undef ALG_DECLARE
}  // namespace operation

/// All operations.
std::span<const Operation* const> operations();

/// The operation of that name (exact, case-sensitive); null when there is none.
const Operation* findOperation(std::string_view name);

}  // namespace alg
