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
  kDrop,      // the row is not there
  kSkip,      // … and what follows comes earlier by its time
  kRepeat,    // the row is there twice
  kCopy,      // … without the marker of a repeated frame
  kFreeze,    // the row before is there in its place
  kInsert,    // a row that was never played comes before it
  kReorder,   // the row comes behind the next one
  kCorrupt,   // the frame's content is damaged: other checksums
  kLate,      // this row and those behind it come later
  kEarly,     // … or earlier
  kJitter,    // this row alone comes later
  kCut,       // the file ends before the row
  kTruncate,  // the file ends in the middle of the row
  kGarble,    // bytes of the row are rubbish
  kNothing    // no file is written
};

struct Defect {
  Stage stage;
  DefectKind kind;
  int64_t frame;
  const Column* column = nullptr;     // that changes
  std::optional<int64_t> value = {};  // the new one; the milliseconds of a late or early row
  int64_t count = 1;                  // frames that have it, from `frame` on
};

/// The stage of that name, such as "VDEC" or "vdec". Throws std::invalid_argument with the
/// names.
Stage ParseStage(std::string_view name);

/// How `ParseDefect` wants its words, for help texts.
inline constexpr std::string_view kDefectWords =
    "STAGE change FRAME COLUMN[=VALUE], "
    "STAGE drop|skip|repeat|copy|freeze|insert|reorder|corrupt|garble FRAME [COUNT], "
    "STAGE late|early|jitter FRAME [MS], STAGE cut|truncate FRAME, STAGE nothing";

/// Parses a defect's words. Throws std::invalid_argument with what is wrong and what is
/// allowed.
Defect ParseDefect(const std::vector<std::string>& words);

/// As above, with ":" between the words, such as "VDEC:change:300:crc=255".
Defect ParseDefect(std::string_view text);

/// What a stage's dump shows of the defects: those of the stage, and of the stages before it what
/// the data carries on. A lost, damaged or late frame stays so; a wrong value or a broken file is
/// a matter of one dump.
std::vector<Defect> DefectsSeenBy(Stage stage, std::span<const Defect> defects);

/// Whether the stage writes no file at all.
bool WritesNothing(Stage stage, std::span<const Defect> defects);

}  // namespace player
