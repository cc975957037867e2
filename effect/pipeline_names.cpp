#include "effect/pipeline_names.h"

#include "catalogue/operations.h"

namespace alg {
namespace {

template <class Match>
const Operation* findOnPipeline(Match match) {
  for (const Operation* operation : operations()) {
    if (operation->pipeline.name != nullptr && match(operation->pipeline)) {
      return operation;
    }
  }
  return nullptr;
}

}  // namespace

const Operation* findPipelineName(std::string_view name) {
  return findOnPipeline([&](const PipelineName& known) { return known.name == name; });
}

const Operation* findPipelineEffect(int32_t identifier) {
  return findOnPipeline(
      [&](const PipelineName& known) { return known.runs && known.identifier == identifier; });
}

}  // namespace alg
