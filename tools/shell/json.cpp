#include "tools/shell/json.h"

#include <fmt/core.h>

#include <algorithm>

namespace alg::tool {
namespace {

/// The length of the UTF-8 character that a text begins with; 0 for none.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t length = byte(0) < 0x80   ? 1
                             : byte(0) < 0xc2 ? 0
                             : byte(0) < 0xe0 ? 2
                             : byte(0) < 0xf0 ? 3
                             : byte(0) < 0xf5 ? 4
                                              : 0;
  if (length == 0 || length > text.size()) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) {
      return 0;
    }
  }
  const unsigned second = length > 2 ? byte(1) : 0x90;
  const bool wrong = (byte(0) == 0xe0 && second < 0xa0) || (byte(0) == 0xed && second > 0x9f) ||
                     (byte(0) == 0xf0 && second < 0x90) || (byte(0) == 0xf4 && second > 0x8f);
  return wrong ? 0 : length;  // longer than needed, a surrogate, or beyond U+10FFFF
}

}  // namespace

std::string jsonString(std::string_view text) {
  std::string result = "\"";
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const auto code = static_cast<unsigned char>(text[0]);
    if (length == 0) {
      result += fmt::format("\\udc{:02x}", code);
    } else if (code < 0x20 || code == '"' || code == '\\' || code == 0x7f) {
      result += fmt::format("\\u{:04x}", code);
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(1, length));
  }
  return result + '"';
}

}  // namespace alg::tool
