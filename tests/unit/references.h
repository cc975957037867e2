// Every operation's definition, one pixel at a time.
#pragma once

#include "catalogue/operations.h"

using RunCall = void (*)(const alg::Call& call);

/// What the operation's bytes are compared with; null when nobody has defined them.
RunCall referenceOf(const alg::Operation& operation);
