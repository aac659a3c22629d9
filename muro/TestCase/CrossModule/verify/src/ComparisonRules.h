// Which rows of a stage are compared, and the tolerances: shared by its verifier and the analysis
// of frames.
#pragma once

#include <cstdint>

// Rows at the start that are only counted.
inline constexpr int32_t kOmxOutputWarmUpRows = 120;
inline constexpr int32_t kOmxInputWarmUpRows = 10;
inline constexpr int32_t kDvoFirstCheckedFrame = 120;
inline constexpr int32_t kAudioSkippedTicks = 90000;  // the first second

/// Seconds at the start in which the video output and the scaler may settle.
inline constexpr int32_t kSettlingSeconds = 2;

/// A rate of the OMX output that is off by no more than this only causes a warning.
inline constexpr int64_t kOmxRateTolerance = 6000;  // thousandths of a frame per second

// Added to thousandths of a frame per second before they become whole frames.
inline constexpr int32_t kVoRateRounding = 100;
inline constexpr int32_t kScalerRateRounding = 50;

/// Converts thousandths of a frame per second to frames per second.
constexpr int32_t WholeRate(int32_t milliFramesPerSecond, int32_t rounding) {
  return static_cast<int32_t>((int64_t{milliFramesPerSecond} + rounding) / 1000);
}

/// Number of frames in the first two seconds, which are not compared for OMX output and DVO.
constexpr int32_t StartUpFrames(int32_t milliFramesPerSecond) {
  return milliFramesPerSecond / 500;
}
