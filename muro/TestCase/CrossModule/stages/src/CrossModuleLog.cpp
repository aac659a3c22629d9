#include "CrossModuleLog.h"

#include <iostream>

#include "Ansi.h"

std::ostream& CmLog(const char* function) {
  return CmLog(function, std::cout);
}

std::ostream& CmLog(const char* function, std::ostream& out) {
  return out << ansi::kHeading << "[CrossModule][" << function << "] " << ansi::kPlain;
}
