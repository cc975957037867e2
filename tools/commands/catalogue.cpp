#include "tools/commands/catalogue.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/operations.h"

namespace alg::tool {
namespace {

constexpr std::string_view kFamilies[] = {"pretty",  "tone",     "light", "drawing",
                                          "picture", "geometry", "blend"};
constexpr std::string_view kPixels[] = {"rgb", "bgr", "words", "ints", "frame"};
constexpr std::string_view kOverlaps[] = {"apart", "in place", "any"};
constexpr std::string_view kBands[] = {"any", "near", "whole"};
constexpr std::string_view kSizes[] = {"any", "covers the first", "same as image"};

template <std::size_t kCount, class Enum>
std::string_view nameOf(const std::string_view (&names)[kCount], Enum value) {
  return names[static_cast<std::size_t>(value)];
}

/// A text of the catalogue, or null.
std::string json(const char* text) { return text != nullptr ? fmt::format("{:?}", text) : "null"; }

std::string json(const Parameter& parameter) {
  return fmt::format(
      R"({{"name": {}, "whole": {}, "least": {}, "most": {}, "preset": {}, "unit": {}, "help": {}}})",
      json(parameter.name), parameter.type == Parameter::Type::kInteger, parameter.least,
      parameter.most, parameter.preset, json(parameter.unit), json(parameter.help));
}

std::string json(const PictureRole& picture) {
  return fmt::format(
      R"({{"name": {}, "file": {}, "landscapeFile": {}, "size": "{}", "read": {}, "help": {}}})",
      json(picture.name), json(picture.file), json(picture.landscapeFile),
      nameOf(kSizes, picture.size), picture.read, json(picture.help));
}

template <class Item>
std::string jsonList(std::span<const Item> items) {
  std::vector<std::string> texts;
  for (const Item& item : items) {
    texts.push_back(json(item));
  }
  return fmt::format("[{}]", fmt::join(texts, ", "));
}

std::string json(const Operation& operation) {
  const PipelineName& pipeline = operation.pipeline;
  return fmt::format(
      R"({{"name": {}, "routine": {}, "family": "{}", "shows": {}, "formula": {}, "pixels": "{}", )"
      R"("overlap": "{}", "bands": "{}", "parameters": {}, "pictures": {}, "pipeline": {}, "runs": {}}})",
      json(operation.name), json(operation.routine), nameOf(kFamilies, operation.family),
      json(operation.shows), json(operation.formula), nameOf(kPixels, operation.pixels),
      nameOf(kOverlaps, operation.overlap), nameOf(kBands, operation.bands),
      jsonList(operation.parameters), jsonList(operation.pictures), json(pipeline.name),
      pipeline.runs);
}

}  // namespace

void printCatalogue() {
  std::vector<std::string> rows;
  for (const Operation* operation : operations()) {
    rows.push_back(json(*operation));
  }
  fmt::print("[{}]\n", fmt::join(rows, ",\n"));
}

}  // namespace alg::tool
