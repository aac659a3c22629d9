#include "CRlinkModule.h"

#include "RlinkTestCase.h"

namespace {

#define RLINK_TEST(id, name, description, function, ...) \
  {id, name, description, Wrapper_TestFunc_##function, true, TestTraits{__VA_ARGS__}},
constexpr ST_THAL_TEST_CASE_T kTests[] = {
#include "RlinkTests.def"
};

}  // namespace

#define RLINK_TEST(id, name, description, function, ...) \
  int Wrapper_TestFunc_##function(char*) {               \
    return !TestFunc_##function();                       \
  }
#include "RlinkTests.def"

CRlinkModule::CRlinkModule() {
  Declare(EN_MURO_RLINK, kRlink, "Rlink Module Test", "For Rlink Module Test", kTests);
}
