// What can be wrong with a dump.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "DumpFormat.h"

namespace player {

enum class DefectKind {
  kChange,    // another value in one column
  kDrop,      // the row is not there
  kRepeat,    // the row is there twice
  kSwap,      // the row comes behind the next one
  kLate,      // this row and those behind it come later
  kTruncate,  // the file ends in the middle of the row
  kGarble     // bytes of the row are rubbish
};

struct Defect {
  Stage stage;
  DefectKind kind;
  int64_t frame;
  const Column* column = nullptr;     // that changes
  std::optional<int64_t> value = {};  // the new one; the milliseconds of a late row
};

/// The stage of that name, such as "VDEC". Throws std::invalid_argument that tells the names.
Stage ParseStage(std::string_view name);

/// Reads "STAGE:KIND:FRAME[:COLUMN[=VALUE]]" or "STAGE:late:FRAME[:MS]". Throws
/// std::invalid_argument that tells what is wrong and what is allowed.
Defect ParseDefect(std::string_view text);

}  // namespace player
