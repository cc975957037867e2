// Text for programs that read JSON.
#pragma once

#include <string>
#include <string_view>

namespace alg::tool {

/// Text as a JSON string. A byte that is not part of a UTF-8 character becomes a lone surrogate,
/// U+DC80 to U+DCFF, as Python's os.fsdecode() has it, so that every file name can be told.
std::string jsonString(std::string_view text);

}  // namespace alg::tool
