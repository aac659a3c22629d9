#include "VfeHdmiModule.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "Vfe MURO 0", "HDMI Display change port ", nullptr, true},
    {1, "Vfe MURO 1", "HDMI Display get InfoFrame ", nullptr, true},
    {2, "Vfe MURO 2", "HDMI Display change timing", nullptr, true},
    {3, "Vfe MURO 3", "HDMI Display change timing_2", nullptr, true},
    {4, "Vfe MURO 4", "Switch To HDMI", nullptr, true},
    {5, "Vfe MURO 6", "VfeHdmiMUROTestBackGroundDetect", nullptr, true},
    {6, "Vfe MURO 7", "HDMI Get RxPortCnt", nullptr, true},
    {7, "Vfe MURO 8", "HDMI IsConnected", nullptr, true},
    {8, "Vfe MURO 9", "HDMI get EDID", nullptr, true},
    {9, "Vfe MURO 10", "HDMI Is HDMI 2.p support", nullptr, true},
    {10, "Vfe MURO 11", "HDMI Get HDCP Ver", nullptr, true},
    {11, "Vfe MURO 12", "HDMI Set HotPlug", nullptr, true},
    {12, "Vfe MURO 13", "HDMI Get Logical Port", nullptr, true},
    {13, "Vfe MURO 14", "HDMI Get Color Depth", nullptr, true},
    {14, "Vfe MURO 15", "Is support HDCP 2.2", nullptr, true},
    {15, "Vfe MURO 16", "Get HDCP Receiver Id", nullptr, true},
    {16, "Vfe MURO 17", "HDCP KSV", nullptr, true},
};

}  // namespace

VfeHdmiModule::VfeHdmiModule() {
  Declare(EN_MURO_VFE_HDMI, kVideo, "Vfe Hdmi Function Test", "Test HDMI MURO ", kTests);
}
