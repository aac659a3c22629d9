// Temperature sensor and its notifier thread.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "core/Areas.h"
#include "core/Call.h"
#include "core/Events.h"
#include "k2v/thermal.h"

namespace sim {

// Found by argument-dependent lookup from CallText.h, so not in the unnamed namespace.
static void Put(CallText& out, K2V_THERMAL_CALLBACK callback) {
  out.text << (callback == nullptr ? "NULL" : "{callback}");
}

namespace {

constexpr auto kWatchPeriod = std::chrono::milliseconds(10);

std::atomic<K2V_THERMAL_CALLBACK> listener{nullptr};
std::atomic<pid_t> watchingProcess{0};  // a forked child inherits the listener, not the thread

struct Reading {
  int degrees;
  uint32_t settings;
  int64_t atMs;  // simulated time
  uint32_t periodMs;
};

int Degrees(const Thermal& thermal) {
  return kNominalDegrees + thermal.degreesOverNominal;
}

uint32_t PeriodMs(const Thermal& thermal) {
  return thermal.periodMs == 0 ? kNominalPeriodMs : thermal.periodMs;
}

Reading ReadSensor() {
  const BoardLock board;
  const Thermal& thermal = board->device.thermal;
  return {Degrees(thermal), thermal.settings, SimulatedMs(board->clock), PeriodMs(thermal)};
}

bool IsWorthTelling(const Reading& now, const Reading& told) {
  if (now.settings != told.settings) return true;
  return now.periodMs != kForEver && now.atMs - told.atMs >= now.periodMs;
}

void TellTemperatures(Reading told) {
  for (;;) {
    std::this_thread::sleep_for(kWatchPeriod);
    const Reading now = ReadSensor();
    if (!IsWorthTelling(now, told)) continue;
    told = now;
    listener.load()(now.degrees);
    const BoardLock board;
    Note("thermal notifier called with " + std::to_string(now.degrees));
  }
}

int Accept(Board&, K2V_THERMAL_CALLBACK callback) {
  return callback == nullptr ? K2V_RHAL_ERR_PARAM : K2V_RHAL_OK;
}

// Like the driver's own thread, the watching thread lives as long as the process.
void Watch(K2V_THERMAL_CALLBACK callback) {
  listener = callback;
  if (watchingProcess.exchange(getpid()) == getpid()) return;
  std::thread(TellTemperatures, ReadSensor()).detach();
}

Action ParseTemperature(const Words& words) {
  const auto degrees = static_cast<int32_t>(ParseNumber(words[0], "temperature", -40, 150));
  return [degrees](Board& board) {
    board.device.thermal.degreesOverNominal = degrees - kNominalDegrees;
    ++board.device.thermal.settings;
  };
}

Action ParseThermal(const Words& words) {
  constexpr double kHourS = 60 * 60;
  const double periodS =
      words[0] == "off" ? 0 : ParseDecimal(words[0], "period; off or seconds", 0.1, kHourS);
  const uint32_t periodMs = periodS > 0 ? static_cast<uint32_t>(periodS * 1e3) : kForEver;
  return [periodMs](Board& board) { board.device.thermal.periodMs = periodMs; };
}

constexpr Command kCommands[] = {
    {"temperature", "DEGREES", "set the chip's temperature; its notifier is called immediately", 1,
     1, ParseTemperature},
    {"thermal", "SECONDS|off", "how often the notifier repeats an unchanged temperature", 1, 1,
     ParseThermal},
};

void Describe(const Board& board, std::ostream& out) {
  const uint32_t periodMs = PeriodMs(board.device.thermal);
  out << "thermal sensor: " << Degrees(board.device.thermal) << " degrees, notified ";
  if (periodMs == kForEver) {
    out << "on change\n";
  } else {
    out << "every " << periodMs / 1e3 << " s\n";
  }
}

}  // namespace

constinit const Area kThermalArea = {kCommands, Describe};

}  // namespace sim

using namespace sim;

int K2V_RHAL_register_thermal_notifier(K2V_THERMAL_CALLBACK callback) {
  const int result = Call(__func__, Accept, callback);
  if (result == K2V_RHAL_OK) Watch(callback);
  return result;
}
