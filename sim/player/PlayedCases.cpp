#include "PlayedCases.h"

#include <stdexcept>

namespace player {

namespace {

constexpr Clip kSdrClip = {};
constexpr Clip kHdrClip = {.width = 3840, .height = 2160, .hdr = true};
constexpr Clip kSyncClip = {.frameRateMilliHz = 25000, .flashesAndBeeps = true};

constexpr PlayedCase kCases[] = {
    {101, "h264-FrtChg", kSdrClip}, {102, "h264-ResChg", kSdrClip}, {201, "hevc-FrtChg", kSdrClip},
    {202, "hevc-ResChg", kSdrClip}, {301, "vp9-FrtChg", kSdrClip},  {302, "vp9-ResChg", kSdrClip},
    {401, "memc", kSdrClip},        {501, "avSync", kSyncClip},     {601, "hdr10-sdr", kHdrClip},
    {602, "hlg-hdr10", kHdrClip},   {603, "hlg-sdr", kHdrClip},     {604, "sdr-hlg", kHdrClip},
};

}  // namespace

std::span<const PlayedCase> PlayedCases() {
  return kCases;
}

const PlayedCase& FindCase(int64_t number) {
  std::string numbers;
  for (const PlayedCase& played : kCases) {
    if (played.number == number) return played;
    numbers.append(numbers.empty() ? "" : ", ").append(std::to_string(played.number));
  }
  throw std::invalid_argument("unknown test case " + std::to_string(number) + ": expected " +
                              numbers);
}

std::string DumpNameOf(const PlayedCase& played, Stage stage) {
  return "dump-" + std::to_string(played.number) + "-" + std::string(played.name) + "-" +
         std::string(FormatOf(stage).stageName) + ".txt";
}

}  // namespace player
