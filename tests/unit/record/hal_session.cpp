// A session of six tests with five calls each and one fault: hal_session
// [argument|order|missing|surplus|again|ignore CALL]; `ignore` ignores the failure of this call.
// With `thread CALLS` another thread makes that many calls after the tests.
// With `endless PIPE` it makes calls endlessly and writes a byte to the pipe before each call. With
// `handlers` it registers a handler that is called.
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "CallMarks.h"
#include "k2v/thermal.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vpq.h"
#include "k2v/vsc.h"

namespace {

constexpr int kTests = 6;
constexpr int kCallsOfTest = 5;

int Call(int number, bool isChanged) {
  const int value = number + (isChanged ? 100 : 0);
  const auto small = static_cast<uint16_t>(value);
  uint8_t edid[K2V_HDMI_EDID_BYTES] = {};
  edid[number] = static_cast<uint8_t>(value);
  switch (number % 5) {
    case 0:
      return K2V_RHAL_VSC_SetWinBlank(0, 1, static_cast<uint32_t>(value));
    case 1:
      return K2V_RHAL_VSC_SetInputRegion(0, {1, 2, 3, small});
    case 2:
      return K2V_RHAL_VPQ_SetHue(value);
    case 3: {
      K2V_VPQ_PICTURE_CTRL_T record = {static_cast<uint8_t>(value), 0, 0, 0};
      return K2V_RHAL_VPQ_SetPictureCtrl(isChanged ? nullptr : &record);
    }
    default:
      return K2V_RHAL_VFE_HDMI_WriteEDID(1, edid);
  }
}

[[noreturn]] void CallForEver(int pipe) {
  for (uint32_t number = 0;; ++number) {
    if (write(pipe, &number, sizeof number) != sizeof number) _exit(1);
    K2V_RHAL_VSC_SetWinBlank(0, number, 0);
  }
}

std::atomic<int> heard{0};

// The number of handler calls so far differs if the handler is called at another place.
int CountHandlers() {
  K2V_RHAL_register_thermal_notifier([](int degrees) { heard += degrees; });
  for (int i = 0; i < 50; ++i) {
    std::printf("%d ", heard.load());
    K2V_RHAL_VSC_DM_Open();
  }
  std::printf("%d\n", heard.load());
  return 0;
}

struct Fault {
  std::string kind;
  int at = -1;
};

/// One of the session's tests. After its first call has failed, it makes no further call.
bool Passes(int test, const Fault& fault) {
  bool passes = true;
  const int first = test * kCallsOfTest, end = first + kCallsOfTest;
  for (int i = first; i < end && (passes || i != first + 1); ++i) {
    const bool isHere = i == fault.at;
    if (isHere && fault.kind == "missing") continue;
    if (isHere && fault.kind == "surplus") K2V_RHAL_VSC_DM_Open();
    if (isHere && fault.kind == "order") {
      Call(i + 1, false);
      Call(i++, false);
      continue;
    }
    if (isHere && fault.kind == "again") Call(i, false);
    const int result = Call(i, isHere && fault.kind == "argument");
    passes = passes && (result == 0 || (isHere && fault.kind == "ignore"));
  }
  return passes;
}

}  // namespace

int main(int argc, char** argv) {
  const Fault fault = argc > 2 ? Fault{argv[1], std::atoi(argv[2])} : Fault{};
  if (fault.kind == "endless") CallForEver(fault.at);
  if (argc == 2) return CountHandlers();
  for (int test = 0; test < kTests; ++test) {
    callmarks::TestBegins(test, "Session", "five calls");
    const bool passes = Passes(test, fault);
    callmarks::TestEnds(test, "Session", "five calls", passes ? "PASS" : "FAIL");
  }
  if (fault.kind == "thread") {
    std::thread([&] {
      for (int i = 0; i < fault.at; ++i) K2V_RHAL_VSC_DM_Open();
    }).join();
  }
  return 0;
}
