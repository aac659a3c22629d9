#include "UTVpqTestCase.h"

#include "UTVpqRunners.h"

namespace {

// Within the included list, __FILE__ would be the list's name.
constexpr const char* kSource = __FILE__;

void PrintTraceLine(const char* function, int line) {
  std::printf("\n\033[1;31m %s,%s ,%d \n\033[m", kSource, function, line);
}

}  // namespace

using namespace utvpq;

#define UTVPQ(name, run)                   \
  int UTVpqTestCase::UTVpq_##name(char*) { \
    PrintTraceLine(__func__, __LINE__);    \
    run;                                   \
    return 0;                              \
  }
#include "UTVpqTests.def"
