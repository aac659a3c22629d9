// The clips of the board's test cases, under the names used in their dumps' file names.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "DumpGenerator.h"

namespace player {

struct PlayedCase {
  int number;
  std::string_view name;
  Clip clip;
};

std::span<const PlayedCase> PlayedCases();

/// The test case of that number. Throws std::invalid_argument with the valid numbers.
const PlayedCase& FindCase(int64_t number);

/// Name of a stage's golden file and kept dump, such as "dump-101-h264-FrtChg-VDEC.txt".
std::string DumpNameOf(const PlayedCase& played, Stage stage);

}  // namespace player
