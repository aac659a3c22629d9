#include "core/Areas.h"

#include <sstream>

namespace sim {

std::span<const Area* const> Areas() {
  static constexpr const Area* kAreas[] = {
      &kHdmiArea,    &kVby1Area,         &kTestPictureArea, &kSignalLockArea, &kScalerArea,
      &kDisplayArea, &kFormatter3dArea,  &kTransmitterArea, &kGraphicsArea,   &kVpqArea,
      &kHdcp2Area,   &kDeviceArea,       &kThermalArea,     &kLinkArea,       &kMediaArea,
      &kFailureArea, &kMisbehaviourArea, &kEventArea,
  };
  return kAreas;
}

std::string Describe(const Board& board) {
  std::ostringstream out;
  for (const Area* area : Areas()) area->describe(board, out);
  return out.str();
}

}  // namespace sim
