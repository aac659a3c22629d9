#include "Problem.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "Text.h"

namespace runner {

void PrintProblem(std::string_view problem) {
  std::fprintf(stderr, "cvntester: %s\n", CleanLine(problem).c_str());
}

void PrintSystemProblem(std::string_view problem) {
  const char* reason = std::strerror(errno);
  PrintProblem(std::string(problem) + ": " + reason);
}

}  // namespace runner
