#include "tools/batch/output_name.h"

#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/shell/failure.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

std::optional<std::string> fieldOf(const fs::path& input, std::string_view field,
                                   const std::string& effect) {
  if (field == "dir") {
    return input.has_parent_path() ? input.parent_path().string() : ".";
  }
  if (field == "name") {
    return input.filename().string();
  }
  if (field == "stem") {
    return input.stem().string();
  }
  if (field == "ext") {
    return input.extension().string();
  }
  return field == "effect" ? std::optional(effect) : std::nullopt;
}

std::string filledIn(std::string_view text, const fs::path& input, const std::string& effect) {
  const auto fail = [&](std::string_view why) {
    throw WrongUse(fmt::format(
        "--output \"{}\": {}; there are {{dir}}, {{name}}, {{stem}}, {{ext}} and {{effect}}", text,
        why));
  };
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c != '{' && c != '}') {
      result += c;
    } else if (i + 1 < text.size() && text[i + 1] == c) {
      result += text[i++];
    } else {
      const std::size_t end = c == '{' ? text.find('}', i) : std::string_view::npos;
      if (end == std::string_view::npos) {
        fail(fmt::format("a lone \"{}\", which is written twice", c));
      }
      const std::string_view field = text.substr(i + 1, end - i - 1);
      const auto value = fieldOf(input, field, effect);
      if (!value) {
        fail(fmt::format("{{{}}} is unknown", field));
      }
      result += *value;
      i = end;
    }
  }
  return result;
}

}  // namespace

OutputName::OutputName(std::string text, std::string effect)
    : text_(std::move(text)), effect_(std::move(effect)) {
  const std::string sample = filledIn(text_, "folder/photo.jpg", effect_);
  if (!fs::path(sample).has_filename()) {
    throw WrongUse(fmt::format("--output \"{}\" names a folder; end it with {{name}}", text_));
  }
}

std::string OutputName::of(const std::string& input) const {
  return fs::path(filledIn(text_, input, effect_)).lexically_normal().string();
}

}  // namespace alg::tool
