// All operations: operations.inc has the only list of them.
#pragma once

#include <span>
#include <string_view>

#include "catalogue/operation.h"

namespace alg {

namespace operation {
#define ROW(row) extern const Operation row;
#include "catalogue/operations.inc"
#undef ROW
}  // namespace operation

/// All operations.
std::span<const Operation* const> operations();

/// The operation of that name (exact, case-sensitive); null when there is none.
const Operation* findOperation(std::string_view name);

}  // namespace alg
