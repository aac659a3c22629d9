#include "ModuleList.h"

#include "TestCase/CrossModule/playback/src/CMplaybackModule.h"
#include "TestCase/Rlink/src/CMAutoTest.h"
#include "TestCase/Rlink/src/CRlinkModule.h"
#include "TestCase/Rlink/src/K2vHalDeviceModule.h"
#include "TestCase/UnitTest/gal/src/UTGalModule.h"
#include "TestCase/UnitTest/hdcp2/src/UTHdcp2Module.h"
#include "TestCase/UnitTest/svp/src/UTSvpModule.h"
#include "TestCase/UnitTest/thermal/src/UTThermalModule.h"
#include "TestCase/UnitTest/vfe/src/UTVfeHdmiModule.h"
#include "TestCase/UnitTest/vpq/src/UTVpqModule.h"
#include "TestCase/sic_hal_driver/Hdcp2/src/Hdcp2Module.h"
#include "TestCase/sic_video/Vbe/src/VbeModule.h"
#include "TestCase/sic_video/Vfe/src/VfeHdmiModule.h"
#include "TestCase/sic_video/Vfe/src/VfeVby1rxModule.h"
#include "TestCase/sic_video/Vpq/src/VpqModule.h"
#include "TestCase/sic_video/VpqExt/src/VpqExtModule.h"
#include "TestCase/sic_video/Vsc/src/VscModule.h"

namespace {

template <class Concrete>
Module* Instance() {
  return Concrete::GetInstance();
}

constexpr ModuleEntry kModules[] = {
    {"Hdcp2Module", TestOrder::kKept, Instance<Hdcp2Module>, nullptr},
    {"VfeHdmiModule", TestOrder::kKept, Instance<VfeHdmiModule>, nullptr},
    {"VfeVby1rxModule", TestOrder::kKept, Instance<VfeVby1rxModule>, nullptr},
    {"VscModule", TestOrder::kKept, Instance<VscModule>, nullptr},
    {"VpqModule", TestOrder::kAny, Instance<VpqModule>, nullptr},
    {"VpqExtModule", TestOrder::kAny, Instance<VpqExtModule>, nullptr},
    {"VbeModule", TestOrder::kKept, Instance<VbeModule>, nullptr},
    {"UTGalModule", TestOrder::kAny, Instance<UTGalModule>, nullptr},
    {"UTHdcp2Module", TestOrder::kKept, Instance<UTHdcp2Module>, nullptr},
    {"UTSvpModule", TestOrder::kAny, Instance<UTSvpModule>, nullptr},
    {"UTVfeHdmiModule", TestOrder::kAny, Instance<UTVfeHdmiModule>, nullptr},
    {"UTVpqModule", TestOrder::kAny, Instance<UTVpqModule>, nullptr},
    {"UTThermalModule", TestOrder::kAny, Instance<UTThermalModule>, "PHOTO unit Test is disabled"},
    {"CMplaybackModule", TestOrder::kKept, Instance<CMplaybackModule>, nullptr},
    {"CMAutoTest", TestOrder::kKept, Instance<CMAutoTest>, nullptr},
    {"CRlinkModule", TestOrder::kAny, Instance<CRlinkModule>, nullptr},
    {"K2vHalDeviceModule", TestOrder::kAny, Instance<K2vHalDeviceModule>, nullptr},
};

}  // namespace

std::span<const ModuleEntry> ModuleList() {
  return kModules;
}
