#include "catalogue/operations.h"

#include <algorithm>

namespace alg {
namespace {

constinit const Operation* const kOperations[] = {
#define ROW(row) &operation::row,
#include "catalogue/operations.inc"
#undef ROW
};

}  // namespace

std::span<const Operation* const> operations() { return kOperations; }

const Operation* findOperation(std::string_view name) {
  const auto* const found = std::ranges::find(
      kOperations, name, [](const auto* row) { return std::string_view(row->name); });
  return found != std::end(kOperations) ? *found : nullptr;
}

}  // namespace alg
