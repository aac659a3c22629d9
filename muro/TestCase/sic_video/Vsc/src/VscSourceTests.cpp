// The scaler tests that bring sources up, watch them and switch between them.
#include <unistd.h>

#include <cstdio>

#include "Ansi.h"
#include "ConsoleInput.h"
#include "DriverTest.h"
#include "VscTestCase.h"
#include "commonVsc.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vsc.h"

namespace {

constexpr K2V_VSC_INPUT_TYPE kPlayback = 5;
constexpr K2V_VSC_INPUT_TYPE kNoSource = 7;
constexpr int kLeaveChoice = 99;
constexpr useconds_t kSourceGapUs = 300'000;

constexpr char kSourceList[] =
    "0(K2V_VSC_INPUTSRC_AVD); 1(K2V_VSC_INPUTSRC_ADC); 2(K2V_VSC_INPUTSRC_HDMI); "
    "3(K2V_VSC_INPUTSRC_VDEC); 4(K2V_VSC_INPUTSRC_JPEG)\n";

constexpr const char* kSourceNames[] = {"AVD", "ADC", "HDMI", "VDEC", "JPEG"};
constexpr K2V_VSC_INPUT_TYPE kSourceCount = 5;

// Sources that the tests left in the windows; kept from run to run.
struct WindowSources {
  K2V_VSC_INPUT_TYPE main = kNoSource;
  K2V_VSC_INPUT_TYPE sub = kNoSource;
};
WindowSources functionalitySources;
WindowSources zoomSources;
WindowSources allRunSources;
K2V_VSC_INPUT_TYPE onlyMainSource = kNoSource;
K2V_VSC_INPUT_TYPE demoSource = kNoSource;
__K2V_VIDEO_WID_T selectedWindow = K2V_VIDEO_WID_0;

/// Number of polls after which the operator is asked whether to continue.
struct PollPeriods {
  uint8_t detecting;
  uint8_t watching;
};

enum class Selection { kContinue, kExit, kChangeSource };

Selection AskUserSelection() {
  const int value = console::AskNumberInBlue(
      "VSC_FunctionTest_HAL_VSC_Switch_Source User Sel, 0(Continue); 1(Exit); 2(ChangSrc)\n");
  std::printf("value:%d\n", value);
  if (value == 1) return Selection::kExit;
  return value == 2 ? Selection::kChangeSource : Selection::kContinue;
}

/// Asks the operator at every `period`-th call and then restarts the count.
Selection AskNowAndThen(uint8_t& polls, uint8_t period) {
  if (++polls < period) return Selection::kContinue;
  polls = 0;
  return AskUserSelection();
}

K2V_VSC_INPUT_TYPE AskSourceType() {
  console::Prompt("%s%s", kSourceList, ansi::kReset);
  return static_cast<K2V_VSC_INPUT_TYPE>(console::ReadNumber());
}

/// Watches a picture until its timing changes or is lost (kContinue), or the operator ends it.
Selection WatchPicture(K2V_VSC_INPUT_TYPE source, uint8_t period, bool& regionDone) {
  uint8_t polls = 0;
  while (Api_vsc_Misc_GetTimingInfo(source, 1) == 0) {
    if (!regionDone) {
      Api_vsc_Misc_SetInOutregion();
      Api_vsc_Misc_SetWinBlank(0, 0);
      regionDone = true;
    } else {
      std::printf("Detecting Timing..%d \n", polls + 1);
      const Selection selection = AskNowAndThen(polls, period);
      if (selection != Selection::kContinue) return selection;
    }
    sleep(1);
  }
  return Selection::kContinue;
}

/// Brings the source's picture up and watches it, repeatedly, until the operator exits or wants
/// another source.
Selection ShowSource(K2V_VSC_INPUT_TYPE source, PollPeriods periods) {
  bool connectPending = true;
  bool regionDone = false;
  uint8_t polls = 0;
  Api_vsc_Misc_SetWinBlank(1, 0);
  for (;;) {
    sleep(1);
    const int32_t detected = Api_vsc_Misc_GetTimingInfo(source, 0);
    Selection selection = AskNowAndThen(polls, periods.detecting);
    if (selection != Selection::kContinue) return selection;
    if (detected != 0) {
      std::printf("Detect Timing NG : %d\n", detected);
      continue;
    }
    if (connectPending) {
      if (const int32_t connected = Api_vsc_Misc_SetVSC_Connect(source); connected != 0) {
        std::printf("VSC Connect NG : %d\n", connected);
        connectPending = false;
        continue;
      }
    }
    Api_vsc_Misc_SetWinBlank(0, 0);
    sleep(1);
    selection = WatchPicture(source, periods.watching, regionDone);
    if (selection != Selection::kContinue) return selection;
    connectPending = false;
    Api_vsc_Misc_SetWinBlank(1, 0);
  }
}

K2V_VSC_INPUT_TYPE& SourceIn(WindowSources& sources, __K2V_VIDEO_WID_T window) {
  return window == K2V_VIDEO_WID_1 ? sources.sub : sources.main;
}

/// Removes the source from a window that the operator names. Returns whether that succeeded.
bool TakeSourceOut(WindowSources& sources) {
  selectedWindow = static_cast<__K2V_VIDEO_WID_T>(
      console::AskNumberInBlue("change src: VSC Window 0(Win0), 1(Win1)\n"));
  K2V_VSC_INPUT_TYPE& source = SourceIn(sources, selectedWindow);
  Api_vsc_Misc_SetWinBlank(1, 0);
  if (const int32_t r = Api_vsc_Misc_ExitInput_Source(source); r != 0) {
    std::printf("Change Src VFE NG : %d\n", r);
    return false;
  }
  const int32_t r = Api_vsc_Misc_SetVSC_Disconnect(selectedWindow);
  source = kNoSource;
  if (r != 0) std::printf("Change Src NG : %d\n", r);
  return r == 0;
}

/// The source of two windows if the other one has none.
K2V_VSC_INPUT_TYPE OnlySource(const WindowSources& sources) {
  return sources.main != kNoSource ? sources.main : sources.sub;
}

/// Removes the only source, with as many attempts as necessary. A source that the helpers cannot
/// end is dropped.
void TakeOnlySourceOut(WindowSources& sources) {
  while (!TakeSourceOut(sources)) {
    if (OnlySource(sources) == K2V_VSC_INPUTSRC_HDMI) continue;
    sources = {};
    return;
  }
}

void SetUpSource(K2V_VSC_INPUT_TYPE source) {
  if (Api_vsc_Misc_SetInput_Source(source) != 0) {
    std::printf("source(=%d) init fail or already init\n", static_cast<int>(source));
  }
}

/// The main window has its source. True if the sub window got one too, false if the main source has
/// to be removed first.
bool ChooseSubSource(WindowSources& sources) {
  if (console::AskNumber("VSC Window 0(Win0), 1(Win1)\n") != 1) {
    std::printf("main source:%d,so need to change src\n", static_cast<int>(sources.main));
    return false;
  }
  const int same =
      console::AskNumber("\033[0;32;34m main & sub need the same source:0(No),1(YES)\n\033[m");
  selectedWindow = K2V_VIDEO_WID_1;
  if (same == 1) {
    sources.sub = sources.main;
    std::printf("\n Input Src:%d\n", static_cast<int>(sources.sub));
    return true;
  }
  std::printf("\033[0;32;34m Please choose Input Src for Sub:\n\033[m");
  sources.sub = AskSourceType();
  SetUpSource(sources.sub);
  return true;
}

/// Gives the next free window a source. False if no window is free or if the operator wants to
/// change the main source.
bool ChooseSource(WindowSources& sources) {
  if (sources.main != kNoSource && sources.sub != kNoSource) {
    std::printf("VSC_INPUT_TYPE_Src_main : %d,VSC_INPUT_TYPE_Src_sub:%d Switch\n",
                static_cast<int>(sources.main), static_cast<int>(sources.sub));
    return false;
  }
  if (sources.main != kNoSource) return ChooseSubSource(sources);
  std::printf("%sPlease choose Input Src for Main:\n%s%s", ansi::kBlue, ansi::kReset, ansi::kBlue);
  sources.main = AskSourceType();
  selectedWindow = K2V_VIDEO_WID_0;
  SetUpSource(sources.main);
  return true;
}

/// Polls the main window's source; kContinue if it has a timing.
Selection DetectForMainWindow(K2V_VSC_INPUT_TYPE source) {
  uint8_t polls = 0;
  for (;;) {
    sleep(1);
    const int32_t r = Api_vsc_Misc_GetTimingInfo(source, 0);
    if (r == 0) return Selection::kContinue;
    std::printf("Detect Timing NG : %d\n", r);
    const Selection selection = AskNowAndThen(polls, 3);
    if (selection != Selection::kContinue) return selection;
  }
}

void ShowInMainWindow(K2V_VSC_INPUT_TYPE source) {
  Api_vsc_Misc_SetVSC_Connect_simple(source);
  for (int poll = 0; poll < 3; ++poll) {
    sleep(1);
    if (Api_vsc_Misc_GetTimingInfo(source, 1) != 0) return;
    if (poll == 0) {
      Api_vsc_Misc_SetInOutregion_simple();
      K2V_RHAL_VSC_SetWinBlank(K2V_VIDEO_WID_0, 0, K2V_VIDEO_DDI_WIN_COLOR_BLUE);
    } else {
      std::printf("Detecting Timing..%d \n", poll);
    }
  }
}

void ChangeMainSource(K2V_VSC_INPUT_TYPE& source) {
  for (;;) {
    K2V_RHAL_VSC_SetWinBlank(K2V_VIDEO_WID_0, 1, K2V_VIDEO_DDI_WIN_COLOR_BLUE);
    if (const int32_t r = Api_vsc_Misc_ExitInput_Source(source); r != 0) {
      std::printf("Change Src VFE NG : %d\n", r);
    }
    const int32_t r = Api_vsc_Misc_SetVSC_Disconnect(K2V_VIDEO_WID_0);
    if (r == 0) break;
    std::printf("Api_vsc_Misc_SetVSC_Disconnect NG : %d\n", r);
    std::printf("Change Src NG : %d\n", r);
    sleep(1);
  }
  source = kNoSource;
}

void PrintSwitch(K2V_VSC_INPUT_TYPE source) {
  std::printf("VSC_INPUT_TYPE_Src : %d, Switch\n", static_cast<int>(source));
}

/// Asks for each source whether it is to run in addition to the shown one, brings those up and
/// prints what they receive.
void ConnectOfflineSources(const bool (&offline)[kSourceCount]) {
  for (K2V_VSC_INPUT_TYPE type = 0; type < kSourceCount; ++type) {
    if (!offline[type]) continue;
    const int32_t r = Api_vsc_Misc_SetInput_Source(type);
    console::Prompt("Offline Connect K2V_VSC_INPUTSRC_%s %s : %d\n", kSourceNames[type],
                    r == 0 ? "OK" : "NG", r);
    usleep(kSourceGapUs);
  }
  for (K2V_VSC_INPUT_TYPE type = 0; type < kSourceCount; ++type) {
    if (!offline[type]) continue;
    std::printf("%s Detect Timing : %d\n", kSourceNames[type], Api_vsc_Misc_GetTimingInfo(type, 0));
  }
}

/// Brings up the source that the operator chooses, and additional ones. Returns the chosen one.
K2V_VSC_INPUT_TYPE RunAllSources() {
  std::puts("Input Src");
  const K2V_VSC_INPUT_TYPE source = AskSourceType();
  bool offline[kSourceCount];
  for (K2V_VSC_INPUT_TYPE type = 0; type < kSourceCount; ++type) {
    console::Prompt("Offline Connect %s, 0(NO), 1(YES)\n", kSourceNames[type]);
    const int answer = console::ReadNumber();
    std::printf("\n Connect:%d\n", answer);
    offline[type] = answer == 1;
  }
  PrintSwitch(source);
  if (const int32_t r = Api_vsc_Misc_SetInput_Source(source); r != 0) {
    std::printf("Switch Src NG : %d\n", r);
  }
  usleep(kSourceGapUs);
  ConnectOfflineSources(offline);
  return source;
}

/// The demo's last source releases its window.
void LeaveDemoSource() {
  if (demoSource != K2V_VSC_INPUTSRC_JPEG && demoSource != K2V_VSC_INPUTSRC_VDEC &&
      demoSource != K2V_VSC_INPUTSRC_HDMI) {
    return;
  }
  const bool isHdmi = demoSource == K2V_VSC_INPUTSRC_HDMI;
  K2V_RHAL_VSC_SetWinBlank(K2V_VIDEO_WID_0, 1, K2V_VIDEO_DDI_WIN_COLOR_BLUE);
  K2V_RHAL_VSC_Disconnect(K2V_VIDEO_WID_0, {demoSource, 0, K2V_VSC_OUTPUT_DISPLAY_MODE});
  if (isHdmi) K2V_RHAL_VFE_HDMI_Disconnect(2);
  std::printf("%sHAL_VSC_Disconnect K2V_VSC_INPUTSRC_%s before Switch Source\n",
              isHdmi ? "" : "K2V_R", kSourceNames[demoSource]);
}

void ShowForZoom(__K2V_VIDEO_WID_T wid, K2V_VSC_INPUT_TYPE source) {
  Api_vsc_Misc2_SetWinBlank(1, 0, wid);
  if (const int32_t r = Api_vsc_Misc_GetTimingInfo(source, 0); r != 0) {
    std::printf("Detect Timing NG : %d\n", r);
  }
  if (const int32_t r = Api_vsc_Misc_Set2VSC_Connect(source, wid); r != 0) {
    std::printf("%s VSC Connect NG : %d\n", wid == K2V_VIDEO_WID_1 ? "sub" : "main", r);
  }
  sleep(3);
  Api_vsc_Misc_SetInOutregion();
  Api_vsc_Misc2_SetWinBlank(0, 0, wid);
  sleep(3);
}

}  // namespace

int VscTestCase::Vsc_functionality(char*) {
  while (console::AskNumberInBlue("VSC_FunctionTest_HAL_VSC_Switch_Source Exit, 0(No) 1(YES)\n") !=
         1) {
    WindowSources& sources = functionalitySources;
    if (ChooseSource(sources) &&
        ShowSource(SourceIn(sources, selectedWindow), {5, 4}) == Selection::kExit) {
      return 1;
    }
    while (!TakeSourceOut(sources)) {
    }
  }
  return 1;
}

int VscTestCase::Vsc_SwitchSource_AllSourceRun(char*) {
  for (;;) {
    WindowSources& sources = allRunSources;
    if (const K2V_VSC_INPUT_TYPE kept = OnlySource(sources); kept != kNoSource) {
      PrintSwitch(kept);
    } else {
      const K2V_VSC_INPUT_TYPE source = RunAllSources();
      const Selection selection = ShowSource(source, {20, 20});
      SourceIn(sources, Api_vsc_get_input_winid()) = source;
      if (selection == Selection::kExit) return 0;
    }
    TakeOnlySourceOut(sources);
  }
}

int VscTestCase::Vsc_FastSwitchSource_ForDemo(char*) {
  LeaveDemoSource();
  std::puts("Input Src");
  demoSource = AskSourceType();
  if (demoSource == K2V_VSC_INPUTSRC_VDEC) Api_vsc_Misc_SetInput_Source(demoSource);
  if (demoSource == K2V_VSC_INPUTSRC_HDMI) {
    sleep(1);
    K2V_RHAL_VSC_SetWinBlank(K2V_VIDEO_WID_0, 0, K2V_VIDEO_DDI_WIN_COLOR_BLACK);
  }
  return 0;
}

int VscTestCase::Vsc_ShowOSDSample_ForDemo(char*) {
  console::AskNumber("Set Vsc_ShowOSDSample_ForDemo yes or no\n0(no); 1(yes)\n");
  return 0;
}

int VscTestCase::Vsc_LiveZoomfunction(char*) {
  std::puts("Input main Src(only support hdmi for livezoom)");
  zoomSources.main = AskSourceType();
  if (const int32_t r = Api_vsc_Misc_SetInput_Source(zoomSources.main); r != 0) {
    std::printf("Main vfe Src init NG : %d\n", r);
  }
  sleep(3);
  ShowForZoom(K2V_VIDEO_WID_0, zoomSources.main);

  std::puts("Input sub Src(only support hdmi for livezoom)");
  zoomSources.sub = AskSourceType();
  ShowForZoom(K2V_VIDEO_WID_1, zoomSources.sub);
  std::puts("Please check main and sub picture, if ok means pip pass");
  return 0;
}

int VscTestCase::Vsc_functionality_OnlyMainWin(char*) {
  for (;;) {
    std::printf("%sChoose input Src:\n%s", ansi::kBlue, ansi::kReset);
    const int choice = console::AskNumberInBlue(
        "0(ATV/AV); 1(Component); 2(Hdmi); 3(DTV); 5(Playback); 99(Exit)\n");
    if (choice == kLeaveChoice) return 0;
    std::printf("Input Src:%d\n", choice);
    onlyMainSource = static_cast<K2V_VSC_INPUT_TYPE>(choice);
    Api_vsc_Misc_SetInput_Source_simple(onlyMainSource);
    if (onlyMainSource == kPlayback) continue;

    Selection selection = DetectForMainWindow(onlyMainSource);
    if (selection == Selection::kContinue) {
      ShowInMainWindow(onlyMainSource);
      selection = AskUserSelection();
    }
    if (selection != Selection::kChangeSource) return 0;
    ChangeMainSource(onlyMainSource);
  }
}

int VscTestCase::Vsc_HDMI_HDR10(char*) {
  PrintTraceName(__func__);
  Api_vsc_Misc_SetInput_HDMI_Directly(1);
  Api_vsc_Misc_SetInOutregion_simple();
  K2V_RHAL_VSC_SetWinBlank(K2V_VIDEO_WID_0, 0, K2V_VIDEO_DDI_WIN_COLOR_BLUE);
  return 0;
}

int VscTestCase::Vsc_SetWinBlank_Sync_memc(char*) {
  PrintTraceName(__func__);
  Api_vsc_Misc_SetInput_HDMI_Directly(0);
  sleep(1);
  Api_vsc_Misc_SetInOutregion_simple();
  sleep(1);
  K2V_RHAL_VSC_SetWinBlank_Sync_memc(K2V_VIDEO_WID_0, 0, K2V_VIDEO_DDI_WIN_COLOR_BLUE);
  return 0;
}
