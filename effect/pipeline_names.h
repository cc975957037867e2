// The operations as the pipeline knows them: by name, and by identifier.
#pragma once

#include <cstdint>
#include <string_view>

#include "catalogue/operation.h"

namespace alg {

/// The identifier of unknown names and missing pictures.
inline constexpr int32_t kNoEffect = 1000;

/// The operation with that name on the pipeline (exact, case-sensitive); null for an unknown one.
const Operation* findPipelineName(std::string_view name);

/// The operation that the pipeline runs under an identifier; null where frames pass through.
const Operation* findPipelineEffect(int32_t identifier);

}  // namespace alg
