#include "Number.h"

#include <charconv>
#include <stdexcept>

namespace player {

int64_t ParseNumber(const std::string& text, const std::string& what, int64_t min, int64_t max) {
  int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && rest == end && number >= min && number <= max) return number;
  throw std::invalid_argument("invalid " + what + " '" + text + "': expected " +
                              std::to_string(min) + " to " + std::to_string(max));
}

}  // namespace player
