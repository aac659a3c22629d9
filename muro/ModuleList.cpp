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
    {Instance<Hdcp2Module>, nullptr},
    {Instance<VfeHdmiModule>, nullptr},
    {Instance<VfeVby1rxModule>, nullptr},
    {Instance<VscModule>, nullptr},
    {Instance<VpqModule>, nullptr},
    {Instance<VpqExtModule>, nullptr},
    {Instance<VbeModule>, nullptr},
    {Instance<UTGalModule>, nullptr},
    {Instance<UTHdcp2Module>, nullptr},
    {Instance<UTSvpModule>, nullptr},
    {Instance<UTVfeHdmiModule>, nullptr},
    {Instance<UTVpqModule>, nullptr},
    {Instance<UTThermalModule>, "PHOTO unit Test is disabled"},
    {Instance<CMplaybackModule>, nullptr},
    {Instance<CMAutoTest>, nullptr},
    {Instance<CRlinkModule>, nullptr},
    {Instance<K2vHalDeviceModule>, nullptr},
};

}  // namespace

std::span<const ModuleEntry> ModuleList() {
  return kModules;
}
