#include "CrossModuleLog.h"

#include <iostream>

#include "Ansi.h"

std::ostream& CmLog(const char* function) {
  return CmLog(function, std::cout);
}

std::ostream& CmLog(const char* function, std::ostream& out) {
  return out << ansi::kHeading << "[CrossModule][" << function << "] " << ansi::kPlain;
}

std::string Printable(std::string_view text) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string printable;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= ' ' && byte < 0x7F) {
      printable += c;
    } else {
      printable.append("\\x").append({kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return printable;
}
