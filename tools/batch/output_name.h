// Names of outputs by a template: "{dir}/{stem}-{effect}{ext}".
#pragma once

#include <string>

namespace alg::tool {

class OutputName {
 public:
  /// Fields are {dir} (the input's folder, "." for none), {name} (without folder), {stem} (without
  /// ending), {ext} (the ending with its dot) and {effect}; {{ and }} are braces. Throws WrongUse.
  OutputName(std::string text, std::string effect);

  /// The output for an input, without needless parts ("./", "a/../").
  std::string of(const std::string& input) const;

 private:
  std::string text_;
  std::string effect_;
};

}  // namespace alg::tool
