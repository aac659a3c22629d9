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
    {"Hdcp2Module", Instance<Hdcp2Module>, nullptr},
    {"VfeHdmiModule", Instance<VfeHdmiModule>, nullptr},
    {"VfeVby1rxModule", Instance<VfeVby1rxModule>, nullptr},
    {"VscModule", Instance<VscModule>, nullptr},
    {"VpqModule", Instance<VpqModule>, nullptr},
    {"VpqExtModule", Instance<VpqExtModule>, nullptr},
    {"VbeModule", Instance<VbeModule>, nullptr},
    {"UTGalModule", Instance<UTGalModule>, nullptr},
    {"UTHdcp2Module", Instance<UTHdcp2Module>, nullptr},
    {"UTSvpModule", Instance<UTSvpModule>, nullptr},
    {"UTVfeHdmiModule", Instance<UTVfeHdmiModule>, nullptr},
    {"UTVpqModule", Instance<UTVpqModule>, nullptr},
    {"UTThermalModule", Instance<UTThermalModule>, "PHOTO unit Test is disabled"},
    {"CMplaybackModule", Instance<CMplaybackModule>, nullptr},
    {"CMAutoTest", Instance<CMAutoTest>, nullptr},
    {"CRlinkModule", Instance<CRlinkModule>, nullptr},
    {"K2vHalDeviceModule", Instance<K2vHalDeviceModule>, nullptr},
};

}  // namespace

std::span<const ModuleEntry> ModuleList() {
  return kModules;
}
