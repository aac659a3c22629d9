// Numbers in options.
#pragma once

#include <cstdint>
#include <string>

namespace player {

/// Parses all of `text` as a decimal number from `min` to `max`. Throws std::invalid_argument that
/// names `what` and the range.
int64_t ParseNumber(const std::string& text, const std::string& what, int64_t min, int64_t max);

}  // namespace player
