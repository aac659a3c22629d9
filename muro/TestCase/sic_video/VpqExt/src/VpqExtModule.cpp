#include "VpqExtModule.h"

#include "NumberedRecords.h"
#include "VpqExtTestCase.h"

namespace {

constexpr auto kTests = NumberedRecords("VPQExt Function Test ", {
#define VPQEXT_AS(name, description, run, ...) \
  {0, "", description, VpqExtTestCase::VPQ_FunctionTest_HAL_##name, true, TestTraits{__VA_ARGS__}},
#define VPQEXT(name, run, ...) \
  VPQEXT_AS(name, "testing VPQ_FunctionTest_HAL_" #name, run, __VA_ARGS__)
#include "VpqExtTests.def"
#undef VPQEXT
#undef VPQEXT_AS
                                                                 });

}  // namespace

VpqExtModule::VpqExtModule() {
  Declare(EN_MURO_VPQEXT, kVideo, "VpqExt Function Test", "for example ****", kTests);
}
