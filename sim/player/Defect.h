// What can be wrong with a dump.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "DumpFormat.h"

namespace player {

enum class DefectKind {
  kChange,    // another value in one column
  kDrop,      // the row is missing
  kSkip,      // … and the following ones come earlier by its duration
  kRepeat,    // the row occurs twice
  kCopy,      // … without the marker of a repeated frame
  kFreeze,    // the previous row occurs in its place
  kInsert,    // a row of a frame that was never played comes before it
  kReorder,   // the row comes after the next one
  kCorrupt,   // the frame's content is damaged: different checksums
  kLate,      // this row and the following ones come later
  kEarly,     // … or earlier
  kJitter,    // only this row comes later
  kCut,       // the file ends before the row
  kTruncate,  // the file ends in the middle of the row
  kGarble,    // bytes of the row are overwritten with garbage
  kNothing    // no file is written
};

struct Defect {
  Stage stage;
  DefectKind kind;
  int64_t frame;
  const Column* column = nullptr;     // that changes
  std::optional<int64_t> value = {};  // of the column; or the milliseconds of a late or early row
  int64_t count = 1;                  // number of affected frames, starting with `frame`
};

/// The stage of that name, such as "VDEC" or "vdec". Throws std::invalid_argument with the valid
/// names.
Stage ParseStage(std::string_view name);

/// The words that `ParseDefect` expects, for help texts.
inline constexpr std::string_view kDefectWords =
    "STAGE change FRAME COLUMN[=VALUE], "
    "STAGE drop|skip|repeat|copy|freeze|insert|reorder|corrupt|garble FRAME [COUNT], "
    "STAGE late|early|jitter FRAME [MS], STAGE cut|truncate FRAME, STAGE nothing";

/// Parses a defect's words. Throws std::invalid_argument that says what is wrong and what is
/// allowed.
Defect ParseDefect(const std::vector<std::string>& words);

/// The same with ":" between the words, such as "VDEC:change:300:crc=255".
Defect ParseDefect(std::string_view text);

/// The defects that a stage's dump shows: its own, and those of upstream stages that the data
/// carries on. A lost, damaged or late frame stays so; a wrong value or a broken file affects only
/// one dump.
std::vector<Defect> DefectsSeenBy(Stage stage, std::span<const Defect> defects);

/// Whether the stage writes no file at all.
bool WritesNothing(Stage stage, std::span<const Defect> defects);

}  // namespace player
