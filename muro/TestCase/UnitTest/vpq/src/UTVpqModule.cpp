#include "UTVpqModule.h"

#include "NumberedRecords.h"
#include "UTVpqTestCase.h"

namespace {

constexpr auto kTests = NumberedRecords("UTVpq Test ", {
#define UTVPQ(name, run) {0, "", #name, UTVpqTestCase::UTVpq_##name, true},
#include "UTVpqTests.def"
#undef UTVPQ
                                                       });

}  // namespace

UTVpqModule::UTVpqModule() {
  Declare(EN_MURO_UT_VPQ, kUnit, "UTVpq Function Test", "for example ****", kTests);
}
