#include "ModuleType.h"

namespace {

struct Names {
  MODULE_TYPE module;
  const char* aligned;
  const char* simple;
};

// "[OMXIN]" is one character short of the others.
constexpr Names kNames[] = {
    {MODULE_OMXIN, "[OMXIN]", "OMXIN"},  {MODULE_OMXOUT, "[OMXOUT]", "OMXOUT"},
    {MODULE_VDEC, "[VDEC]  ", "VDEC"},   {MODULE_DVO, "[DVO]   ", "DVO"},
    {MODULE_VO, "[VO]    ", "VO"},       {MODULE_SCALER, "[Scaler]", "Scaler"},
    {MODULE_AUDIO, "[Audio] ", "Audio"},
};
constexpr Names kOther = {MODULE_TYPE{}, "[other] ", "[other]"};

const Names& NamesOf(MODULE_TYPE module) {
  for (const Names& names : kNames) {
    if (names.module == module) return names;
  }
  return kOther;
}

}  // namespace

const char* Module_Type_To_String(MODULE_TYPE module) {
  return NamesOf(module).aligned;
}

const char* Module_Type_To_String_Simple(MODULE_TYPE module) {
  return NamesOf(module).simple;
}
