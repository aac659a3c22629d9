#include "UTVfeHdmiModule.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {1, "UTVFE HDMI Func Test", "Initialize", nullptr, true},
    {20, "UTVFE HDMI Func Test", "GetRxPortCount", nullptr, true},
    {20, "UTVFE HDMI Func Test", "GetARCChannel", nullptr, true},
    {20, "UTVFE HDMI Func Test", "IsHDMI20Supported", nullptr, true},
    {9, "UTVFE HDMI Func Test", "Open", nullptr, true},
    {10, "UTVFE HDMI Func Test", "Connect", nullptr, true},
    {18, "UTVFE HDMI Func Test", "Disconnect", nullptr, true},
    {19, "UTVFE HDMI Func Test", "Close ", nullptr, true},
    {4, "UTVFE HDMI HPD/Connect Test", "GetConnectionState", nullptr, true},
    {5, "UTVFE HDMI HDP/Connect Test", "HDP Enable/Disable", nullptr, true},
    {2, "UTVFE HDMI EDID Test", "ReadEDID", nullptr, true},
    {3, "UTVFE HDMI EDID Test", "WriteEDID", nullptr, true},
    {11, "UTVFE HDMI Status Test", "GetClockStatus", nullptr, true},
    {12, "UTVFE HDMI Status Test", "GetPortTimingInfo", nullptr, true},
    {12, "UTVFE HDMI Status Test", "GetColorDepth", nullptr, true},
    {12, "UTVFE HDMI Status Test", "GetAvMute", nullptr, true},
    {12, "UTVFE HDMI Status Test", "GetScdcStatus", nullptr, true},
    {13, "UTVFE HDMI Info Frame Test", "GetPortDRMInfo", nullptr, true},
    {13, "UTVFE HDMI Info Frame Test", "GetPortVSIInfo", nullptr, true},
    {14, "UTVFE HDMI Info Frame Test", "GetPortSPDInfo", nullptr, true},
    {15, "UTVFE HDMI Info Frame Test", "GetPortAVIInfo", nullptr, true},
    {16, "UTVFE HDMI Info Frame Test", "GetPortPacketInfo", nullptr, true},
    {17, "UTVFE HDMI Info Frame Test", "GetPortMultiVSIInfo", nullptr, true},
    {7, "UTVFE HDMI HDCP Test", "ReadHDCP", nullptr, true},
    {8, "UTVFE HDMI HDCP Test", "WriteHDCP", nullptr, true},
    {17, "UTVFE HDMI HDCP Test", "IsHDCP22Supported", nullptr, true},
    {17, "UTVFE HDMI HDCP Test", "GetHDCPVersion", nullptr, true},
    {17, "UTVFE HDMI HDCP Test", "GetSourceKSVData", nullptr, true},
    {17, "UTVFE HDMI HDCP Test", "GetHDCPReseiverID", nullptr, true},
};

}  // namespace

UTVfeHdmiModule::UTVfeHdmiModule() {
  Declare(EN_MURO_UT_VFE_HDMI, kUnit, "UTVfe HDMI Function Test", "for example ****", kTests);
}
