// The dump files that the drivers of the pipeline's stages write: one row per frame or audio block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

namespace player {

/// All facts that one row can contain about a frame or an audio block. A stage writes the values it
/// has columns for. Times are ticks of 90 kHz, rates thousandths of a frame per second.
struct FrameValues {
  int64_t frameNumber = 0;
  int64_t clock90k = 0;  // when the stage handled it: differs from run to run
  int64_t pts90k = 0;
  int64_t ptsHigh = 0;
  int64_t frameRateMilliHz = 0;
  int64_t width = 0;
  int64_t height = 0;
  int64_t inputSize = 0;
  int64_t inputFlags = 0;
  int64_t frameKind = 0;
  int64_t repeatDrop = 0;  // 1: shown again, negative: dropped
  int64_t repeatCount = 0;
  int64_t colourFormat = 0;
  int64_t memcCadence = 0;

  int64_t hdrType = 0;
  int64_t primaryX1 = 0, primaryX2 = 0, primaryX3 = 0;
  int64_t primaryY1 = 0, primaryY2 = 0, primaryY3 = 0;
  int64_t whiteX = 0, whiteY = 0;
  int64_t maxLuminance = 0, minLuminance = 0;
  int64_t transfer = 0, matrix = 0, primaries = 0, fullRange = 0;
  int64_t maxCll = 0, maxFall = 0;

  // Checksums along the path: decoder, video output, scaler input, scaler blocks, panel.
  int64_t crcDecoded = 0, crcOutput = 0, crcScalerInput = 0;
  int64_t crcRgbToYuv = 0, crcDeinterlaceHzd = 0, crcDeinterlace = 0;
  int64_t crcDownscaleH = 0, crcDownscaleV = 0, crcCapture = 0, crcMemory = 0, crcUpscale = 0;
  int64_t crcSharpness = 0, crcColour = 0, crcMemcIn = 0, crcMemcOut = 0, crcOverdrive = 0;
  int64_t crcPanel = 0;

  int64_t sampleRate = 0, channelCount = 0;
  int64_t audioCheck = 0;  // above 1000000: audible
  int64_t audioDelay90k = 0;
};

enum class Stage { kOmxIn, kOmxOut, kVdec, kDvo, kVo, kScaler, kAudio };

inline constexpr Stage kAllStages[] = {Stage::kOmxIn, Stage::kOmxOut, Stage::kVdec, Stage::kDvo,
                                       Stage::kVo,    Stage::kScaler, Stage::kAudio};

struct Column {
  std::string_view name;
  int64_t FrameValues::*value;
  bool hexadecimal = false;
};

/// How a stage's driver writes its dump.
struct DumpFormat {
  std::string_view stageName;  // in file names, such as "VDEC"
  std::string_view fileName;   // the driver's own, such as "dump_vdec.txt"
  std::string_view titleSeparator;
  std::string_view separator;
  std::span<const Column> columns;
  std::string_view lastTitle = {};  // instead of the last column's name
  std::string_view lastRow = {};    // ends the stream
};

const DumpFormat& FormatOf(Stage stage);

/// The column of that name; null if the stage has none.
const Column* FindColumn(const DumpFormat& format, std::string_view name);

/// The first line of a dump, with its newline.
std::string TitleOf(const DumpFormat& format);

/// One row, with its newline.
std::string RowOf(const DumpFormat& format, const FrameValues& values);

/// The line after the last row, with its newline; empty for most stages.
std::string EndOf(const DumpFormat& format);

}  // namespace player
