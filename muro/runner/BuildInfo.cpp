#include "BuildInfo.h"

namespace runner {

std::string VersionText() {
  return std::string("cvntester " CVN_VERSION "\ncommit ")
      .append(kCommit)
      .append("\nbuild " CVN_BUILD "\nHAL interface ")
      .append(kHalFingerprint)
      .append("\n");
}

}  // namespace runner
