#include "ReceiverPolling.h"

#include <unistd.h>

#include <cstdio>

#include "ConsoleInput.h"
#include "DriverTest.h"
#include "TestCase/sic_video/Vsc/src/commonVsc.h"

namespace {

constexpr useconds_t kPollPeriodUs = 100'000;
constexpr useconds_t kPictureSettleUs = 20'000;
constexpr uint8_t kPollsToQuestion = 101;

// States of the detection.
constexpr uint8_t kNoScaler = 0;
constexpr uint8_t kScalerOpen = 1;
constexpr uint8_t kWaiting = 2;
constexpr uint8_t kShowing = 3;

enum class Next { kPoll, kLeave, kClose };

bool HasSignal(const K2V_HDMI_TIMING_T& timing) {
  return timing.active.w != 0 && timing.active.h != 0;
}

K2V_HDMI_TIMING_T ReadTiming(const Receiver& receiver, uint8_t port) {
  K2V_HDMI_TIMING_T timing{};
  receiver.getTiming(port, timing);
  return timing;
}

void PrintTiming(const Receiver& receiver, const K2V_HDMI_TIMING_T& timing) {
  std::puts(receiver.timingTitle);
  PrintTimingFields(timing, receiver.has3dTiming);
}

bool Succeeds(const ReceiverStep& step, uint8_t port) {
  if (step.call(port) == 0) return true;
  std::puts(step.failure);
  step.undo(port);
  return false;
}

bool BringUp(const Receiver& receiver, uint8_t& port) {
  if (!Succeeds(receiver.initialize, port) || !Succeeds(receiver.open, port)) return false;
  receiver.prepare();
  port = static_cast<uint8_t>(AskPort(receiver.portList));
  return Succeeds(receiver.connect, port);
}

void TearDown(const Receiver& receiver, uint8_t port) {
  K2V_RHAL_VSC_Disconnect(K2V_VIDEO_WID_0, {K2V_VSC_INPUTSRC_HDMI, 0, 0});
  receiver.tearDown(port);
}

uint8_t OpenScaler(bool signal) {
  if (!signal) {
    std::puts("Try Again");
    return kNoScaler;
  }
  K2V_RHAL_VSC_Initialize();
  K2V_RHAL_VSC_Open(K2V_VIDEO_WID_0);
  return kScalerOpen;
}

void PrintSeparator() {
  std::printf("\033[31m==================\n\033[m");
}

// The helpers use the HDMI port that they brought up last, whatever this test shows.
void PlacePicture() {
  Api_vsc_Misc_CheckTimingInfo(K2V_VSC_INPUTSRC_HDMI);
  PrintSeparator();
  Api_vsc_Misc_SetInOutregion();
  PrintSeparator();
}

uint8_t ShowPicture(const Receiver& receiver, const K2V_HDMI_TIMING_T& timing,
                    const char* function) {
  if (!HasSignal(timing)) {
    std::puts("Wait");
    return kWaiting;
  }
  receiver.detection.inputType = K2V_VSC_INPUTSRC_HDMI;
  K2V_RHAL_VSC_Connect(K2V_VIDEO_WID_0, {receiver.detection.inputType, 0, 0});
  PrintTraceLine(function);
  PlacePicture();
  Api_vsc_Misc_SetWinBlank(0, 0);
  usleep(kPictureSettleUs);
  PrintTiming(receiver, timing);
  return kShowing;
}

/// One step of the detection: the effect of this poll's timing on the window.
void Detect(const Receiver& receiver, const K2V_HDMI_TIMING_T& timing, const char* function) {
  DetectionState& detection = receiver.detection;
  const bool signal = HasSignal(timing);
  switch (detection.state) {
    case kNoScaler:
      detection.state = OpenScaler(signal);
      break;
    case kScalerOpen:
      if (!signal) K2V_RHAL_VSC_Disconnect(K2V_VIDEO_WID_0, {detection.inputType, 0, 0});
      detection.state = kWaiting;
      break;
    case kWaiting:
      detection.state = ShowPicture(receiver, timing, function);
      break;
    case kShowing:
      if (signal) break;
      Api_vsc_Misc_SetWinBlank(1, 0);
      detection.state = kScalerOpen;
      break;
    default:
      detection.state = kNoScaler;
      break;
  }
}

void ChangePort(const Receiver& receiver, uint8_t& port) {
  const auto next = static_cast<uint8_t>(AskPort(receiver.changeList));
  receiver.changePort(port, next);
  port = next;
}

Next AskWhatNext(const Receiver& receiver, const PollingTest& test, const K2V_HDMI_TIMING_T& timing,
                 uint8_t& port) {
  console::Prompt("%s\n", test.question);
  const int answer = console::ReadNumber();
  if (answer == 1) return Next::kLeave;
  if (answer != kNoAnswer && answer == test.closeAnswer) return Next::kClose;
  if (answer == 0 && test.changesPort) ChangePort(receiver, port);
  if (answer == 0 && test.repeatsTiming) PrintTiming(receiver, timing);
  return Next::kPoll;
}

/// Polls until the operator leaves (kLeave) or closes (kClose). `port` is changed as the operator
/// requests.
Next Poll(const Receiver& receiver, const PollingTest& test, const char* function, uint8_t& port) {
  uint8_t polls = 0;
  bool shown = false;
  for (;;) {
    usleep(kPollPeriodUs);
    const K2V_HDMI_TIMING_T timing = ReadTiming(receiver, port);
    std::printf("%s:%d\n", receiver.testName, ++polls);
    if (polls == kPollsToQuestion) {
      polls = 0;
      const Next next = AskWhatNext(receiver, test, timing, port);
      if (next != Next::kPoll) return next;
    }
    Detect(receiver, timing, function);
    const bool showing = receiver.detection.state == kShowing;
    if (showing && !shown && test.showPort != nullptr) test.showPort(port);
    shown = showing;
  }
}

/// Advances the detection as far as this timing allows: up to the picture if there is a signal, one
/// step back if there is none.
void DetectOnce(const Receiver& receiver, uint8_t port, const char* function) {
  const K2V_HDMI_TIMING_T timing = ReadTiming(receiver, port);
  const uint8_t& state = receiver.detection.state;
  if (!HasSignal(timing)) {
    std::puts("No Signal");
    if (state == kShowing || state == kScalerOpen) Detect(receiver, timing, function);
    return;
  }
  if (state == kShowing) PrintTiming(receiver, timing);
  while (state != kShowing) Detect(receiver, timing, function);
}

}  // namespace

int RunPolling(const Receiver& receiver, const PollingTest& test, const char* function) {
  uint8_t port = 0;
  if (!BringUp(receiver, port)) return 1;
  if (Poll(receiver, test, function, port) == Next::kLeave) TearDown(receiver, port);
  return 0;
}

int RunDetectOnce(const Receiver& receiver, const DetectOnceTest& test, const char* function) {
  uint8_t port = 0;
  if (!BringUp(receiver, port)) return 1;
  int again = 0;
  do {
    usleep(kPollPeriodUs);
    std::puts(test.title);
    DetectOnce(receiver, port, function);
    console::Prompt("%s\n", test.question);
    again = console::ReadNumber();
    if (test.printsAnswer) std::printf("\n ucReDetectFlag:%d\n", again);
  } while (again == 1);
  TearDown(receiver, port);
  return 0;
}

int AskPort(const char* portList) {
  console::Prompt("%s\n", portList);
  return console::ReadNumber();
}

void PrintTimingFields(const K2V_HDMI_TIMING_T& timing, bool with3d) {
  const struct {
    const char* name;
    uint32_t value;
  } fields[] = {
      {"format", timing.format},     {"h_freq", timing.hFreq},      {"v_freq", timing.vFreq},
      {"h_total", timing.hTotal},    {"v_total", timing.vTotal},    {"h_porch", timing.hPorch},
      {"v_porch", timing.vPorch},    {"active.x", timing.active.x}, {"active.y", timing.active.y},
      {"active.w", timing.active.w}, {"active.h", timing.active.h}, {"scan_type", timing.scanType},
  };
  for (const auto& [name, value] : fields) std::printf("%s:%d\n", name, static_cast<int>(value));
  if (!with3d) return;
  std::printf("full_3d_timing:%d\n", static_cast<int>(timing.full_3d_timing));
  std::printf("video_lr_order:%d\n", static_cast<int>(timing.video_LR_order));
}
