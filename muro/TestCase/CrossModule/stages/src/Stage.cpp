#include "Stage.h"

#include <algorithm>
#include <iterator>

const Stage* FindStage(MODULE_TYPE module) {
  const auto* const stage = std::ranges::find(kStages, module, &Stage::module);
  return stage == std::end(kStages) ? nullptr : stage;
}

const char* Module_Type_To_String(MODULE_TYPE module) {
  const Stage* const stage = FindStage(module);
  return stage == nullptr ? "[other] " : stage->alignedName;
}

const char* Module_Type_To_String_Simple(MODULE_TYPE module) {
  const Stage* const stage = FindStage(module);
  return stage == nullptr ? "[other]" : stage->simpleName;
}
