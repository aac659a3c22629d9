// Pictures as a stage records them, and the text of a dump with them.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "CauseReport.h"
#include "Stage.h"

inline constexpr int64_t kFrame90k = 3000;

/// A row of any stage; each stage records the values that it has columns for.
struct Picture {
  int64_t frame = 0;
  int64_t pts = 0;
  int64_t clock = 0;    // 90 kHz counter
  int64_t content = 0;  // checksum or size
  int64_t other = 7;    // width, flags and the like
  bool broken = false;  // a malformed row
};
using Pictures = std::vector<Picture>;

/// The picture's value in a column, in its notation.
inline std::string Value(const StageColumn& column, const Picture& picture) {
  const std::string name = column.name;
  int64_t value = 0;
  if (column.unit == Unit::kFrame) value = picture.frame;
  if (column.unit == Unit::kChecksum || column.unit == Unit::kBytes) value = picture.content;
  if (column.unit == Unit::kMilliFramesPerSecond) value = 30000;
  if (name == "90k_counter") value = picture.clock;
  if (name == "pts" || name == "pts.L") value = picture.pts;
  if (name == "width" || name == "hdrInfo" || name == "channel_no" || name == "input_flags" ||
      name == "frame_kind")
    value = picture.other;
  char text[24];
  const bool isHex = column.notation == Notation::kHexadecimal;
  std::snprintf(text, sizeof text, isHex ? "%x" : "%u", static_cast<unsigned>(value));
  return text;
}

/// A dump of the pictures, with its title.
inline std::string FileText(const Stage& stage, const Pictures& pictures) {
  std::string text = "title\n";
  for (const Picture& picture : pictures) {
    for (const StageColumn& column : stage.columns) {
      if (&column != stage.columns.data()) text += ',';
      text += picture.broken ? std::string("?!") : Value(column, picture);
    }
    text += '\n';
  }
  return text;
}

/// Different pictures at 30 per second.
inline Pictures PlainPictures(std::size_t count) {
  Pictures pictures(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto n = static_cast<int64_t>(i);
    pictures[i] = {n, 90000 + n * kFrame90k, 500000 + n * kFrame90k, 1000 + n * 7919, 7, false};
  }
  return pictures;
}

/// The events and the pacing of one stage, a line each.
inline std::string Described(const StageEvents& stage) {
  const CaseEvents found{"", {stage}};
  std::string text;
  const auto add = [&](const std::string& name, const std::string& line) {
    text += "  " + line.substr(line.find('"' + name)) + "\n";
  };
  for (const FrameEvent& event : stage.events) add("kind", EventJson(found, event));
  if (stage.pacing) add("rate", PacingJson(found, stage));
  return text;
}
