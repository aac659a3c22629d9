#include "Stage.h"

#include <algorithm>
#include <iterator>

const Stage* FindStage(MODULE_TYPE module) {
  const auto* const stage = std::ranges::find(kStages, module, &Stage::module);
  return stage == std::end(kStages) ? nullptr : stage;
}

std::vector<const Stage*> PictureWay() {
  std::vector<const Stage*> way;
  for (const Stage& stage : kStages) {
    if (stage.pictureStep != 0) way.push_back(&stage);
  }
  std::ranges::sort(way, {}, &Stage::pictureStep);
  return way;
}

const char* Module_Type_To_String(MODULE_TYPE module) {
  const Stage* const stage = FindStage(module);
  return stage == nullptr ? "[other] " : stage->alignedName;
}

const char* Module_Type_To_String_Simple(MODULE_TYPE module) {
  const Stage* const stage = FindStage(module);
  return stage == nullptr ? "[other]" : stage->simpleName;
}
