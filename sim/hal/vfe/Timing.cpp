#include "vfe/Timing.h"

#include <cmath>
#include <cstdio>
#include <optional>
#include <regex>

#include "core/Command.h"

namespace sim {
namespace {

struct Mode {
  uint16_t width;
  uint16_t height;
  uint16_t scanType;
  double rateHz;  // of fields if interlaced, of frames if progressive
};

// The timings of CEA-861. If one has two codes, the 16:9 one is used. Pixels that are sent twice
// (720x480i, 720x576i) count once, as the receiver outputs them.
struct CeaTiming {
  uint16_t code;
  uint16_t width, height, scanType, rateHz;
  uint16_t hTotal, vTotal;
  uint16_t hSync, hBack;  // pixels
  uint16_t vSync, vBack;  // lines, of the first field
};

constexpr uint16_t kI = K2V_HDMI_SCAN_INTERLACED;
constexpr uint16_t kP = K2V_HDMI_SCAN_PROGRESSIVE;

constexpr CeaTiming kCeaTimings[] = {
    {1, 640, 480, kP, 60, 800, 525, 96, 48, 2, 33},
    {3, 720, 480, kP, 60, 858, 525, 62, 60, 6, 30},
    {7, 720, 480, kI, 60, 858, 525, 62, 57, 3, 15},
    {4, 1280, 720, kP, 60, 1650, 750, 40, 220, 5, 20},
    {5, 1920, 1080, kI, 60, 2200, 1125, 44, 148, 5, 15},
    {16, 1920, 1080, kP, 60, 2200, 1125, 44, 148, 5, 36},
    {18, 720, 576, kP, 50, 864, 625, 64, 68, 5, 39},
    {22, 720, 576, kI, 50, 864, 625, 63, 69, 3, 19},
    {19, 1280, 720, kP, 50, 1980, 750, 40, 220, 5, 20},
    {20, 1920, 1080, kI, 50, 2640, 1125, 44, 148, 5, 15},
    {31, 1920, 1080, kP, 50, 2640, 1125, 44, 148, 5, 36},
    {32, 1920, 1080, kP, 24, 2750, 1125, 44, 148, 5, 36},
    {33, 1920, 1080, kP, 25, 2640, 1125, 44, 148, 5, 36},
    {34, 1920, 1080, kP, 30, 2200, 1125, 44, 148, 5, 36},
    {41, 1280, 720, kP, 100, 1980, 750, 40, 220, 5, 20},
    {47, 1280, 720, kP, 120, 1650, 750, 40, 220, 5, 20},
    {60, 1280, 720, kP, 24, 3300, 750, 40, 220, 5, 20},
    {61, 1280, 720, kP, 25, 3960, 750, 40, 220, 5, 20},
    {62, 1280, 720, kP, 30, 3300, 750, 40, 220, 5, 20},
    {63, 1920, 1080, kP, 120, 2200, 1125, 44, 148, 5, 36},
    {64, 1920, 1080, kP, 100, 2640, 1125, 44, 148, 5, 36},
    {86, 2560, 1080, kP, 24, 3750, 1100, 44, 148, 5, 11},
    {87, 2560, 1080, kP, 25, 3200, 1125, 44, 148, 5, 36},
    {88, 2560, 1080, kP, 30, 3520, 1125, 44, 148, 5, 36},
    {89, 2560, 1080, kP, 50, 3300, 1125, 44, 148, 5, 36},
    {90, 2560, 1080, kP, 60, 3000, 1100, 44, 148, 5, 11},
    {91, 2560, 1080, kP, 100, 2970, 1250, 44, 148, 5, 161},
    {92, 2560, 1080, kP, 120, 3300, 1250, 44, 148, 5, 161},
    {93, 3840, 2160, kP, 24, 5500, 2250, 88, 296, 10, 72},
    {94, 3840, 2160, kP, 25, 5280, 2250, 88, 296, 10, 72},
    {95, 3840, 2160, kP, 30, 4400, 2250, 88, 296, 10, 72},
    {96, 3840, 2160, kP, 50, 5280, 2250, 88, 296, 10, 72},
    {97, 3840, 2160, kP, 60, 4400, 2250, 88, 296, 10, 72},
    {98, 4096, 2160, kP, 24, 5500, 2250, 88, 296, 10, 72},
    {99, 4096, 2160, kP, 25, 5280, 2250, 88, 128, 10, 72},
    {100, 4096, 2160, kP, 30, 4400, 2250, 88, 128, 10, 72},
    {101, 4096, 2160, kP, 50, 5280, 2250, 88, 128, 10, 72},
    {102, 4096, 2160, kP, 60, 4400, 2250, 88, 128, 10, 72},
    {117, 3840, 2160, kP, 100, 5280, 2250, 88, 296, 10, 72},
    {118, 3840, 2160, kP, 120, 4400, 2250, 88, 296, 10, 72},
};

uint16_t Rounded(double value) {
  return static_cast<uint16_t>(std::lround(value));
}

// 23.976, 29.97, 59.94 and 119.88 Hz are exactly the next whole number / 1.001.
double ExactRate(double rateHz) {
  const double whole = std::ceil(rateHz);
  const double reduced = whole / 1.001;
  const bool isReduced = std::fmod(whole, 24) == 0 || std::fmod(whole, 30) == 0;
  return isReduced && std::abs(rateHz - reduced) < 0.006 ? reduced : rateHz;
}

// A code applies to the whole rate and to the one 1.001 times slower.
bool IsCea(const CeaTiming& cea, const Mode& mode) {
  const bool sameRate = mode.rateHz == cea.rateHz || mode.rateHz == cea.rateHz / 1.001;
  return cea.width == mode.width && cea.height == mode.height && cea.scanType == mode.scanType &&
         sameRate;
}

// Blanking for a size that CEA-861 does not list, by the rule of VESA's reduced blanking: 160
// pixels per line, 48 of them before the sync; vertically at least 460 us, 3 lines of that before
// the sync. An interlaced frame is two such fields and the half lines between them.
CeaTiming ReducedBlanking(const Mode& mode) {
  constexpr int kHBlank = 160, kHFront = 48, kVFront = 3, kMinVBlank = 3 + 4 + 6;
  constexpr double kMinVBlankUs = 460;
  const int fields = mode.scanType == kI ? 2 : 1;
  const int fieldLines = mode.height / fields;
  const double lineUs = (1e6 / mode.rateHz - kMinVBlankUs) / fieldLines;
  const int vBlank = std::max(kMinVBlank, static_cast<int>(kMinVBlankUs / lineUs) + 1);
  CeaTiming timing = {};
  timing.hTotal = static_cast<uint16_t>(mode.width + kHBlank);
  timing.vTotal = static_cast<uint16_t>(mode.height + vBlank * fields + (fields - 1));
  timing.hBack = kHBlank - kHFront;
  timing.vBack = static_cast<uint16_t>(vBlank - kVFront);
  return timing;
}

CeaTiming FindBlanking(const Mode& mode) {
  for (const CeaTiming& cea : kCeaTimings) {
    if (IsCea(cea, mode)) return cea;
  }
  return ReducedBlanking(mode);
}

std::optional<Mode> ParseMode(const std::string& name) {
  static const std::regex kPattern(R"((\d{2,4})x(\d{2,4})([ip])(\d{2,3}(?:\.\d{1,3})?))");
  std::smatch match;
  if (!std::regex_match(name, match, kPattern)) return std::nullopt;
  const int width = std::stoi(match[1]), height = std::stoi(match[2]);
  const double rateHz = std::stod(match[4]);
  if (width < 64 || width > 8192 || height < 64 || height > 4320) return std::nullopt;
  if (rateHz < 10 || rateHz > 120) return std::nullopt;
  return Mode{static_cast<uint16_t>(width), static_cast<uint16_t>(height),
              match[3] == "i" ? kI : kP, ExactRate(rateHz)};
}

}  // namespace

K2V_HDMI_TIMING_T ParseTiming(const std::string& name) {
  const auto mode = ParseMode(name);
  if (!mode) {
    RefuseWord("invalid timing", name,
               "WIDTHxHEIGHT, p or i, and the rate, such as 3840x2160p60 or 1920x1080i59.94 (64x64 "
               "to 8192x4320, 10 to 120 Hz)");
  }
  const CeaTiming blanking = FindBlanking(*mode);
  const double frameRateHz = mode->scanType == kI ? mode->rateHz / 2 : mode->rateHz;
  K2V_HDMI_TIMING_T timing = {};
  timing.format = blanking.code;
  timing.hFreq = Rounded(blanking.vTotal * frameRateHz / 10);
  timing.vFreq = Rounded(mode->rateHz * 100);
  timing.hTotal = blanking.hTotal;
  timing.vTotal = blanking.vTotal;
  timing.hPorch = static_cast<uint16_t>(blanking.hSync + blanking.hBack);
  timing.vPorch = static_cast<uint16_t>(blanking.vSync + blanking.vBack);
  timing.active = {0, 0, mode->width, mode->height};
  timing.scanType = mode->scanType;
  timing.mode = K2V_HDMI_MODE_HDMI;
  return timing;
}

std::string TimingName(const K2V_HDMI_TIMING_T& timing) {
  char name[64];
  std::snprintf(name, sizeof(name), "%ux%u%c%u.%02u", timing.active.w, timing.active.h,
                timing.scanType == kI ? 'i' : 'p', timing.vFreq / 100U, timing.vFreq % 100U);
  return name;
}

}  // namespace sim
