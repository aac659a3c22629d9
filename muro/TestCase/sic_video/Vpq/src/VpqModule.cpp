#include "VpqModule.h"

#include "NumberedRecords.h"
#include "VpqTestCase.h"

namespace {

constexpr auto kTests = NumberedRecords("VPQ MURO ", {
#define VPQ_AS(name, description, run, ...) \
  {0, "", description, VpqTestCase::VPQ_FunctionTest_HAL_VPQ_##name, true, TestTraits{__VA_ARGS__}},
#define VPQ(name, run, ...) VPQ_AS(name, "testing HAL_VPQ_" #name, run, __VA_ARGS__)
#include "VpqTests.def"
#undef VPQ
#undef VPQ_AS
                                                     });

}  // namespace

VpqModule::VpqModule() {
  Declare(EN_MURO_VPQ, kVideo, "Vpq Function Test", "for example ****", kTests);
}
