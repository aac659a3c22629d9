// Numbers as the templates in texts.txt have them printed.
#pragma once

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace haltext {

/// `number` as `format` has it: "x", "08x", "ip" (0 is i, all else p) or ".2" (hundredths).
inline std::string NumberText(uint64_t number, std::string_view format) {
  if (format == "ip") return number == 0 ? "i" : "p";
  char text[32];
  if (format == ".2") {
    std::snprintf(text, sizeof text, "%" PRIu64 ".%02" PRIu64, number / 100, number % 100);
  } else {
    std::snprintf(text, sizeof text, format == "08x" ? "%08" PRIx64 : "%" PRIx64, number);
  }
  return text;
}

}  // namespace haltext
