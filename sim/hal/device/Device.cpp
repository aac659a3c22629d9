// Device: readiness, health, clocks and the registers of the broadcast clock.
#include <charconv>
#include <cstdio>
#include <optional>

#include "core/Areas.h"
#include "core/Call.h"
#include "core/Events.h"
#include "device/BroadcastClock.h"
#include "k2v/device.h"

namespace sim {
namespace {

constexpr double kTicksPerNs = 90'000 / 1e9;

// The speed register: an 11-bit number of steps in two's complement, each 1/8192 of the speed.
constexpr uint32_t kStepMask = 0x7FF;
constexpr uint32_t kStepSign = 0x400;
constexpr double kStepsPerSpeed = 8192;

enum Register : uint32_t {
  kSpeed = 0xB8000474,
  kLoad = 0xB8000480,   // a write with bit 0 set applies the speed
  kLatch = 0xB8014F38,  // a read latches the count for kCounter
  kCounter = 0xB801B6B8,
};

int64_t SincePowerOnNs(const Board& board) {
  return MonotonicNs() - board.clock.powerOnNs;
}

int32_t StepOf(uint32_t speedRegister) {
  const uint32_t field = speedRegister & kStepMask;
  return static_cast<int32_t>(field ^ kStepSign) - static_cast<int32_t>(kStepSign);
}

double TicksAt(const BroadcastClock& clock, int64_t ns) {
  const double speed = 1 + clock.step / kStepsPerSpeed;
  return clock.baseTicks + static_cast<double>(ns - clock.baseNs) * kTicksPerNs * speed;
}

// The counter continues from its present value at the new speed.
void LoadSpeed(Board& board) {
  BroadcastClock& clock = board.device.broadcast;
  const int64_t now = SincePowerOnNs(board);
  clock.baseTicks = TicksAt(clock, now);
  clock.baseNs = now;
  clock.step = StepOf(clock.speedRegister);
}

void WriteRegister(Board& board, uint32_t address, uint32_t value) {
  if (address == kSpeed) board.device.broadcast.speedRegister = value;
  if (address == kLoad && (value & 1) != 0) LoadSpeed(board);
}

uint32_t ReadRegister(Board& board, uint32_t address) {
  BroadcastClock& clock = board.device.broadcast;
  switch (address) {
    case kSpeed:
      return clock.speedRegister;
    case kLatch:
      return clock.latchedCount = static_cast<uint32_t>(BroadcastTicks(board));
    case kCounter:
      return clock.latchedCount;
    default:
      return 0;
  }
}

std::optional<uint32_t> ParseHex(const std::string& word) {
  if (!word.starts_with("0x") && !word.starts_with("0X")) return std::nullopt;
  uint32_t number = 0;
  const char* last = word.data() + word.size();
  const auto [end, error] = std::from_chars(word.data() + 2, last, number, 16);
  if (error != std::errc() || end != last) return std::nullopt;
  return number;
}

template <int32_t Device::*member>
int Tell(Board& board, int* out) {
  if (out == nullptr) return K2V_RHAL_ERR_PARAM;
  *out = board.device.*member;
  return K2V_RHAL_OK;
}

uint64_t ClockValue(Board& board, int which) {
  switch (which) {
    case K2V_CLOCK_MEDIA:
      return MediaTicks(board);
    case K2V_CLOCK_BROADCAST:
      return BroadcastTicks(board);
    default:
      return 0;
  }
}

int SlaveReady(Board& board) {
  return board.link.silent ? 0 : 1;
}

Action ParseDevice(const Words& words) {
  const auto member =
      ParseChoice(words[0], "ready", "healthy") ? &Device::notReady : &Device::notHealthy;
  const auto code = static_cast<int32_t>(ParseNumber(words[1], "code", INT32_MIN, INT32_MAX));
  return [=](Board& board) { board.device.*member = code; };
}

constexpr Command kCommands[] = {
    {"device", "ready|healthy CODE",
     "error code that the device reports instead of being ready or healthy; 0 is no error", 2, 2,
     ParseDevice},
};

void Describe(const Board& board, std::ostream& out) {
  out << "device: ready " << board.device.notReady << ", healthy " << board.device.notHealthy
      << ", broadcast clock at speed step " << board.device.broadcast.step << '\n';
}

}  // namespace

constinit const Area kDeviceArea = {kCommands, Describe};

uint64_t MediaTicks(const Board& board) {
  return static_cast<uint64_t>(static_cast<double>(SincePowerOnNs(board)) * kTicksPerNs);
}

uint64_t BroadcastTicks(const Board& board) {
  return static_cast<uint64_t>(TicksAt(board.device.broadcast, SincePowerOnNs(board)));
}

void WriteRegisterFile(Board& board, const std::string& line) {
  const Words words = Split(line);
  const auto address = words.empty() ? std::nullopt : ParseHex(words[0]);
  const auto value = words.size() < 2 ? std::nullopt : ParseHex(words[1]);
  if (!address || words.size() > 2 || (words.size() == 2 && !value)) {
    Note("# register: invalid access '" + line + "': expected 0xADDRESS or 0xADDRESS 0xVALUE");
  } else if (value) {
    WriteRegister(board, *address, *value);
    Note("register " + words[0] + " = " + words[1]);
  } else {
    board.device.broadcast.address = *address;
  }
}

std::string ReadRegisterFile(Board& board) {
  const uint32_t address = board.device.broadcast.address;
  char line[64];
  std::snprintf(line, sizeof(line), "reg addr = 0x%08x , val = 0x%08x\n", address,
                ReadRegister(board, address));
  return line;
}

}  // namespace sim

using namespace sim;

int K2V_RHAL_DEVICE_Ready(int* out) {
  return Call(__func__, Tell<&Device::notReady>, Out{out});
}

int K2V_RHAL_DEVICE_Healthy(int* out) {
  return Call(__func__, Tell<&Device::notHealthy>, Out{out});
}

uint64_t K2V_RHAL_DEVICE_Get_Clock_Value(int which) {
  return Call(__func__, ClockValue, which);
}

int K2V_RHAL_slave_ready() {
  return Call(__func__, SlaveReady);
}
