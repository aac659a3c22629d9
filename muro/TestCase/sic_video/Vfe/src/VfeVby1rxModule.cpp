#include "VfeVby1rxModule.h"

#include "VfeVby1rxTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "Vfe MURO 0", "VBY1RX Display 1", VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase1, true,
     kAsks},
    {1, "Vfe MURO 1", "VBY1RX Display 2", VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase2, true,
     kAsks},
    {2, "Vfe MURO 2", "VBY1RX Display change timing", VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase3,
     true, kAsks},
    {3, "Vfe MURO 3", "VBY1RX Get timing info", VfeVby1rxMUROTestCase::VfeVby1rxMURO_GetTimingInfo,
     true},
};

}  // namespace

VfeVby1rxModule::VfeVby1rxModule() {
  Declare(EN_MURO_VFE_VBY1RX, kVideo, "Vfe Vby1rx Function Test", "Test VBY1RX MURO ", kTests);
}
