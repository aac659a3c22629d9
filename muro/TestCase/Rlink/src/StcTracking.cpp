// The tool that tracks and trims the system time clock through the board's register file.
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "ConsoleInput.h"
#include "RlinkTestCase.h"
#include "Shell.h"

namespace {

// The speed register: an 11-bit step in two's complement in the low bits, and bits that enable the
// trimming above it.
constexpr long kLowestStep = -1024;
constexpr long kHighestStep = 1023;
constexpr unsigned long kStepMask = 0x7FF;
constexpr unsigned long kTrimmingOn = 0x00010000;

constexpr useconds_t kSamplePeriodUs = 10000;
constexpr int64_t kSampledUs = 9'000'000;
constexpr int64_t kTicksPerSecond = 90000;

long speedStep = 0;  // the register's value after the last trimming by this program

void WriteSpeed(unsigned long value) {
  char command[80];
  std::snprintf(command, sizeof command, "echo \"0xB8000474 0x%08lX\" > //sys//crt//register",
                value);
  RunShell(command);
  RunShell("echo \"0xB8000480 0x58200016\" > //sys//crt//register");
  RunShell("echo \"0xB8000480 0x58200017\" > //sys//crt//register");
}

/// Writes the step and returns the resulting value of the register.
unsigned long SetSpeedStep(long step) {
  speedStep = std::clamp(step, kLowestStep, kHighestStep);
  const unsigned long value = kTrimmingOn | (static_cast<unsigned long>(speedStep) & kStepMask);
  WriteSpeed(value);
  return value;
}

void TellSpeed(const char* title) {
  std::printf("\033[1;32mSpeed = %ld\033[m\n", speedStep);
  std::puts(title);
}

/// Reads the register selected by `select`; empty, after a message, on failure.
std::optional<uint32_t> ReadRegister(const char* select) {
  RunShell(select);
  unsigned long address = 0;
  unsigned long value = 0;
  int fields = 0;
  if (std::FILE* reply = popen("cat /sys/crt/register", "r"); reply != nullptr) {
    fields = std::fscanf(reply, "reg addr = 0x%lx , val = 0x%lx", &address, &value);
    pclose(reply);
  }
  if (fields == 2) return static_cast<uint32_t>(value);
  std::puts("open /sys/crt/register fail");
  return std::nullopt;
}

int64_t NowUs() {
  timeval now{};
  gettimeofday(&now, nullptr);
  return int64_t{now.tv_sec} * 1'000'000 + now.tv_usec;
}

struct Sample {
  uint32_t count;
  int64_t atUs;
};

/// Reading the first register latches the count for the second one.
std::optional<Sample> TakeSample() {
  if (!ReadRegister("echo \"0xb8014f38\" > //sys//crt//register")) return std::nullopt;
  const int64_t nowUs = NowUs();
  const auto count = ReadRegister("echo \"0xB801B6B8\" > //sys//crt//register");
  if (!count) return std::nullopt;
  return Sample{*count, nowUs};
}

/// Prints the difference between two samples in ticks per second. The counter may wrap between
/// them.
void PrintDifference(const Sample& before, const Sample& after) {
  const int64_t ticks = uint32_t{after.count - before.count};
  const int64_t clockTicks = (after.atUs - before.atUs) * kTicksPerSecond / 1'000'000;
  if (clockTicks <= 0) return;  // the clock was set back meanwhile
  std::printf("stc_diff=%d\n", static_cast<int>(ticks * kTicksPerSecond / clockTicks));
}

void ShowDifferences() {
  std::optional<Sample> before = TakeSample();
  if (!before) return;
  const int64_t endUs = NowUs() + kSampledUs;
  while (NowUs() < endUs) {
    usleep(kSamplePeriodUs);
    const std::optional<Sample> after = TakeSample();
    if (!after) return;
    PrintDifference(*before, *after);
    before = after;
  }
}

void SpeedUp() {
  SetSpeedStep(speedStep + 1);
  TellSpeed("-----------Speed UP-----------");
}

void SpeedDown() {
  std::printf("0x%08lX\n", SetSpeedStep(speedStep - 1));
  TellSpeed("-----------Speed Down-----------");
}

void ResetSpeed() {
  SetSpeedStep(0);
  TellSpeed("-----------Speed Reset-----------");
}

int AskChoice() {
  return console::AskNumber(
      "1 -> speed Up\n2 -> speed Down\n3 -> speed Reset To 90K\n"
      "4 -> Show STC diff per second\n5 -> Exit\ninput:\n");
}

}  // namespace

int TestFunc_STC_Tracking() {
  static constexpr void (*kActions[])() = {SpeedUp, SpeedDown, ResetSpeed, ShowDifferences};
  RunShell("chmod 777 //sys//crt//register");
  for (;;) {
    const int choice = AskChoice();
    if (choice == 5) return 1;
    if (choice >= 1 && choice <= 4) kActions[choice - 1]();
  }
}
