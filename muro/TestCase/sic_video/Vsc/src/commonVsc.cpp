#include "commonVsc.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "Ansi.h"
#include "ConsoleInput.h"
#include "TestCase/sic_video/HdmiEdid.h"
#include "k2v/vfe_hdmi.h"

const std::string kPlayFileCommand = "gst-cvn-test-1.0 --gst-debug=1 -c IP1+IP2 -pf ";
const std::string kPlayUrlCommand = "gst-cvn-test-1.0 --gst-debug=1 -c IP1+IP2 -pu ";

namespace {

// States of a window. Connecting does not change them, and they never decrease.
constexpr int32_t kNone = 0;
constexpr int32_t kInitialised = 1;
constexpr int32_t kOpened = 2;
constexpr int32_t kThird = 3;  // checked for, but never reached by these helpers

constexpr K2V_VSC_INPUT_TYPE kFirstUnknownType = 5;
constexpr int kTimingTolerance = 10;  // pixels or lines
constexpr int kTimingPolls = 21;

constexpr char kOutputModes[] =
    "0(K2V_VSC_OUTPUT_DISPLAY_MODE);1(VSC_OUTPUT_VENC_MODE);2(VSC_OUTPUT_MEMORY_MODE);"
    "3(VSC_OUTPUT_AVE_MODE);";

int32_t vsc_state = kNone;
int32_t vsc_main_state = kNone;
int32_t vsc_sub_state = kNone;
__K2V_VIDEO_WID_T currentWindow = K2V_VIDEO_WID_0;
uint8_t currentHdmiPort = 0;
K2V_VSC_INPUT_SRC_T mainSource{};
K2V_VSC_INPUT_SRC_T subSource{};
K2V_HDMI_TIMING_T storedTiming{};
K2V_VIDEO_RECT_T timingRegion{};

enum class Announce { kFailuresOnly, kEveryStep };

bool IsSub(__K2V_VIDEO_WID_T wid) {
  return wid == K2V_VIDEO_WID_1;
}
int32_t& StateOf(__K2V_VIDEO_WID_T wid) {
  return IsSub(wid) ? vsc_sub_state : vsc_main_state;
}
K2V_VSC_INPUT_SRC_T& SourceOf(__K2V_VIDEO_WID_T wid) {
  return IsSub(wid) ? subSource : mainSource;
}

/// Prints the line of a failed HAL call and returns its code.
int32_t Checked(const char* call, int32_t result) {
  if (result != 0) std::printf("%s NG : %d\n", call, result);
  return result;
}

void PrintStates(API_VSC_STATE_T requested, int32_t state) {
  std::printf("Api_vsc_Set_State state : %d,vsc_state=%d, vsc_main_state : %d,vsc_sub_state:%d\n",
              requested, state, vsc_main_state, vsc_sub_state);
}

void MarkState(__K2V_VIDEO_WID_T wid, int32_t state) {
  vsc_state = state;
  StateOf(wid) = state;
  std::printf("Api_vsc_Set_State state : %d, vsc_state : %d\n", state, state);
}

/// `initialised`: the scaler has been initialised through the other window, and only this window's
/// state has to be updated.
int32_t InitialiseStep(__K2V_VIDEO_WID_T wid, bool initialised, Announce announce) {
  if (Api_vsc_Check_State(1, wid) != 0) {
    std::puts("VSC Not Init Again");
    return 0;
  }
  if (initialised) {
    PrintStates(1, vsc_main_state);
  } else if (const int32_t r = Checked("VSC Init", K2V_RHAL_VSC_Initialize()); r != 0) {
    return r;
  }
  MarkState(wid, kInitialised);
  if (announce == Announce::kEveryStep) std::printf("VSC Init OK : %d\n", 0);
  return 0;
}

int32_t OpenStep(__K2V_VIDEO_WID_T wid, Announce announce) {
  if (Api_vsc_Check_State(2, wid) != 0) {
    std::puts("VSC Not Open Again");
    return 0;
  }
  if (const int32_t r = Checked("VSC Open", K2V_RHAL_VSC_Open(wid)); r != 0) return r;
  MarkState(wid, kOpened);
  if (announce == Announce::kEveryStep) std::printf("VSC Open OK : %d\n", 0);
  return 0;
}

int32_t Connect(__K2V_VIDEO_WID_T wid) {
  return Checked("VSC Connect", K2V_RHAL_VSC_Connect(IsSub(wid), SourceOf(wid)));
}

/// Unknown types count as failures, whatever the HAL returns.
int32_t ConnectKnownType(__K2V_VIDEO_WID_T wid) {
  if (const int32_t r = Connect(wid); r != 0) return r;
  return SourceOf(wid).type < kFirstUnknownType ? 0 : -1;
}

K2V_VSC_OUTPUT_MODE AskOutputMode(__K2V_VIDEO_WID_T wid) {
  console::Prompt("%sChoose %s mode:%s\n%s", ansi::kBlue, IsSub(wid) ? "utput" : "output",
                  kOutputModes, ansi::kReset);
  return static_cast<K2V_VSC_OUTPUT_MODE>(console::ReadNumber());
}

void StoreTiming(const K2V_HDMI_TIMING_T& t) {
  storedTiming = t;
  timingRegion = t.active;
  std::printf(
      "format : %x, hFreq : %x, vFreq : %x, hTotal : %x, vTotal : %x, hPorch : %x, vPorch : %x\n",
      t.format, t.hFreq, t.vFreq, t.hTotal, t.vTotal, t.hPorch, t.vPorch);
  std::printf("scanType : %x, mode : %x, full_3d_timing : %x, video_LR_order : %x\n", t.scanType,
              t.mode, t.full_3d_timing, t.video_LR_order);
  std::printf("active x : %x, y : %x, w : %x, h : %x\n", t.active.x, t.active.y, t.active.w,
              t.active.h);
}

int32_t LoseTiming(int32_t result) {
  storedTiming = {};
  return result;
}

bool Differs(uint16_t stored, uint16_t received) {
  return std::abs(int{received} - int{stored}) >= kTimingTolerance;
}

int32_t WatchTiming(const K2V_VIDEO_RECT_T& active) {
  if (Differs(storedTiming.active.w, active.w)) {
    std::printf("HDMI Get Timing NG 3\nOrg ActiveW : %d, New ActiveW : %d\n", storedTiming.active.w,
                active.w);
    return LoseTiming(-1);
  }
  if (Differs(storedTiming.active.h, active.h)) {
    std::printf("HDMI Get Timing NG 4\nOrg ActiveH : %d, New ActiveH : %d\n", storedTiming.active.h,
                active.h);
    return LoseTiming(-1);
  }
  return 0;
}

K2V_VIDEO_DDI_WIN_COLOR_T BlankColor(unsigned on, unsigned askColour) {
  if (on != 1) return K2V_VIDEO_DDI_WIN_COLOR_BLACK;
  if (askColour != 1) return K2V_VIDEO_DDI_WIN_COLOR_BLUE;
  return AskBlankColor();
}

void ShowPicture(__K2V_VIDEO_WID_T wid, uint16_t width, uint16_t height) {
  std::printf("VIDEO_Timing_region_Param, x : %x, y : %x, w : %x, h : %x\n", timingRegion.x,
              timingRegion.y, timingRegion.w, timingRegion.h);
  K2V_RHAL_VSC_SetInputRegion(wid, timingRegion);
  K2V_RHAL_VSC_SetOutputRegion(wid, {0, 0, width, height});
}

}  // namespace

int32_t Api_vsc_Check_State(API_VSC_STATE_T state, __K2V_VIDEO_WID_T wid) {
  if (state < 0 || state > 8) {
    std::printf("Api_vsc_Set_State state : %d\n", state);
    return -1;
  }
  const int32_t s = StateOf(wid);
  vsc_state = s;
  const bool allowed =
      (state == 1 && s == kNone) || ((state == 2 || state == 6) && s == kInitialised) ||
      ((state == 3 || state == 5) && s == kOpened) || ((state == 4 || state == 7) && s == kThird) ||
      (state == 8 && s > kInitialised);
  if (allowed) return 0;
  PrintStates(state, s);
  return -1;
}

__K2V_VIDEO_WID_T Api_vsc_get_input_winid() {
  return currentWindow;
}

int32_t Api_vsc_Misc_SetInput_HDMI_Init() {
  if (const int32_t r = Checked("HDMI Init", K2V_RHAL_VFE_HDMI_Initialize()); r != 0) return r;
  StoreHdmiEdids();
  if (const int32_t r = Checked("HDMI Open", K2V_RHAL_VFE_HDMI_Open()); r != 0) return r;
  currentHdmiPort =
      static_cast<uint8_t>(console::AskNumberInBlue(" Please choose HDMI InputPort 0 ~ 3\n"));
  std::printf("\n HDMI InputPort:%d\n", currentHdmiPort);
  return Checked("HDMI Connect", K2V_RHAL_VFE_HDMI_Connect(currentHdmiPort));
}

int32_t Api_vsc_Misc_SetInput_HDMI_Directly(unsigned bRunDM) {
  if (K2V_RHAL_VFE_HDMI_Initialize() != 0) std::puts("=====hdmi already init(ignore this)=====");
  StoreHdmiEdids();
  if (K2V_RHAL_VFE_HDMI_Open() != 0) std::puts("=====hdmi already open(ignore this)=====");
  if (K2V_RHAL_VFE_HDMI_Connect(0) != 0) std::puts("=====hdmi already connect(ignore this)=====");
  sleep(2);
  Api_vsc_Misc_HDMI_GetTimingInfo(0);
  sleep(2);
  K2V_RHAL_VSC_Initialize();
  MarkState(K2V_VIDEO_WID_0, kInitialised);
  K2V_RHAL_VSC_Open(K2V_VIDEO_WID_0);
  MarkState(K2V_VIDEO_WID_0, kOpened);
  const int32_t r = Api_vsc_Misc_SetVSC_Connect_simple(K2V_VSC_INPUTSRC_HDMI);
  if (bRunDM != 0) {
    std::puts("run DM flow");
    K2V_RHAL_VSC_DM_Open();
    K2V_RHAL_VSC_DM_Connect();
  }
  return r;
}

int32_t Api_vsc_Misc_SetInput_HDMI_DeInit() {
  if (const int32_t r = Checked("HDMI Disconnect", K2V_RHAL_VFE_HDMI_Disconnect(currentHdmiPort));
      r != 0) {
    return r;
  }
  if (const int32_t r = Checked("HDMI Close", K2V_RHAL_VFE_HDMI_Close()); r != 0) return r;
  return Checked("HDMI UnInit", K2V_RHAL_VFE_HDMI_Uninitialize());
}

int32_t Api_vsc_Misc_HDMI_GetTimingInfo(unsigned char check) {
  K2V_HDMI_TIMING_T timing{};
  if (const int32_t r = K2V_RHAL_VFE_HDMI_GetPortTimingInfo(currentHdmiPort, &timing); r != 0) {
    std::printf("HDMI Get Timing NG 1 : %d\n", r);
    return LoseTiming(r);
  }
  if (timing.active.w == 0 || timing.active.h == 0) {
    std::puts("HDMI Get Timing NG 2");
    return LoseTiming(-1);
  }
  if (check == 1) return WatchTiming(timing.active);
  StoreTiming(timing);
  return 0;
}

int32_t Api_vsc_Misc_SetInput_Source(K2V_VSC_INPUT_TYPE type) {
  return type == K2V_VSC_INPUTSRC_HDMI ? Api_vsc_Misc_SetInput_HDMI_Init() : -1;
}

int32_t Api_vsc_Misc_SetInput_Source_simple(K2V_VSC_INPUT_TYPE type) {
  return type == K2V_VSC_INPUTSRC_HDMI ? Api_vsc_Misc_SetInput_HDMI_Directly(0) : -1;
}

int32_t Api_vsc_Misc_ExitInput_Source(K2V_VSC_INPUT_TYPE type) {
  return type == K2V_VSC_INPUTSRC_HDMI ? Api_vsc_Misc_SetInput_HDMI_DeInit() : -1;
}

int32_t Api_vsc_Misc_GetTimingInfo(K2V_VSC_INPUT_TYPE type, unsigned char check) {
  return type == K2V_VSC_INPUTSRC_HDMI ? Api_vsc_Misc_HDMI_GetTimingInfo(check) : -1;
}

int32_t Api_vsc_Misc_CheckTimingInfo(K2V_VSC_INPUT_TYPE type) {
  int32_t r = -1;
  for (int poll = 0; poll < kTimingPolls && r != 0; ++poll) {
    sleep(1);
    r = Api_vsc_Misc_GetTimingInfo(type, 0);
  }
  std::printf("\033[34mDetect Timing OK : %d\n\033[m", r);
  return r;
}

int32_t Api_vsc_Misc_SetVSC_Connect(K2V_VSC_INPUT_TYPE type) {
  currentWindow = static_cast<__K2V_VIDEO_WID_T>(
      console::AskNumberInBlue("Choose VSC connect Window 0(Win0), 1(Win1)\n "));
  const __K2V_VIDEO_WID_T wid = currentWindow;
  const bool initialised = IsSub(wid) && vsc_main_state != kNone;
  if (const int32_t r = InitialiseStep(wid, initialised, Announce::kFailuresOnly); r != 0) return r;
  if (const int32_t r = OpenStep(wid, Announce::kFailuresOnly); r != 0) return r;

  K2V_VSC_INPUT_SRC_T& source = SourceOf(wid);
  source.type = type;
  source.indexAttr = 0;
  source.outputMode = AskOutputMode(wid);
  std::printf("\nOutput Mode:%d\n", static_cast<int>(source.outputMode));
  return ConnectKnownType(wid);
}

int32_t Api_vsc_Misc_SetVSC_Connect_simple(K2V_VSC_INPUT_TYPE type) {
  currentWindow = K2V_VIDEO_WID_0;
  if (const int32_t r = InitialiseStep(currentWindow, false, Announce::kFailuresOnly); r != 0) {
    return r;
  }
  if (const int32_t r = OpenStep(currentWindow, Announce::kFailuresOnly); r != 0) return r;
  mainSource = {type, 0, K2V_VSC_OUTPUT_DISPLAY_MODE};
  return Connect(currentWindow);
}

int32_t Api_vsc_Misc_Set2VSC_Connect(K2V_VSC_INPUT_TYPE type, __K2V_VIDEO_WID_T wid) {
  currentWindow = wid;
  if (const int32_t r = InitialiseStep(wid, false, Announce::kEveryStep); r != 0) return r;
  if (const int32_t r = OpenStep(wid, Announce::kEveryStep); r != 0) return r;
  SourceOf(wid) = {type, 0, K2V_VSC_OUTPUT_DISPLAY_MODE};
  std::printf("%s output mode:%s\n", IsSub(wid) ? "Sub" : "Main", kOutputModes);
  std::printf("\nOutput Mode:%d\n", K2V_VSC_OUTPUT_DISPLAY_MODE);
  return ConnectKnownType(wid);
}

int32_t Api_vsc_Misc_SetVSC_Disconnect(__K2V_VIDEO_WID_T wid) {
  return Checked("VSC Disconnect", K2V_RHAL_VSC_Disconnect(IsSub(wid), SourceOf(wid)));
}

K2V_VIDEO_DDI_WIN_COLOR_T AskBlankColor() {
  return static_cast<K2V_VIDEO_DDI_WIN_COLOR_T>(console::AskNumber(
      "Blank Color, 0(K2V_VIDEO_DDI_WIN_COLOR_BLACK); 1(K2V_VIDEO_DDI_WIN_COLOR_BLUE); "
      "2(K2V_VIDEO_DDI_WIN_COLOR_GRAY)\n"));
}

int32_t Api_vsc_Misc_SetWinBlank(unsigned on, unsigned askColour) {
  const int wid = console::AskNumberInBlue("Blank Window 0(Win0), 1(Win1)\n");
  return Api_vsc_Misc2_SetWinBlank(on, askColour, static_cast<__K2V_VIDEO_WID_T>(wid));
}

int32_t Api_vsc_Misc2_SetWinBlank(unsigned on, unsigned askColour, __K2V_VIDEO_WID_T wid) {
  const K2V_VIDEO_DDI_WIN_COLOR_T color = BlankColor(on, askColour);
  K2V_RHAL_VSC_SetWinBlank(wid, on == 1, color);
  return 0;
}

int32_t Api_vsc_Misc_SetInOutregion() {
  std::printf("%s========================\n%s", ansi::kBlue, ansi::kReset);
  const auto wid = static_cast<__K2V_VIDEO_WID_T>(
      console::AskNumberInBlue("SetInOutregion video wid:0(wid_0),1(wid_1)\n"));
  const int size =
      console::AskNumberInBlue("set display size:0(1920x1080),1(3840x2160),2(960*540)\n");
  switch (size) {
    case 0:
      ShowPicture(wid, 1920, 1080);
      break;
    case 1:
      ShowPicture(wid, 3840, 2160);
      break;
    default:
      ShowPicture(wid, 960, 540);
      break;
  }
  std::puts("\n========================");
  return 0;
}

int32_t Api_vsc_Misc_SetInOutregion_simple() {
  ShowPicture(K2V_VIDEO_WID_0, 3840, 2160);
  return 0;
}
