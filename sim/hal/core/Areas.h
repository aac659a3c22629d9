// The areas of the board, each with its commands and its part of the state text.
#pragma once

#include <ostream>
#include <span>

#include "core/Command.h"

namespace sim {

struct Area {
  std::span<const Command> commands;
  void (*describe)(const Board& board, std::ostream& out);
  /// Does what becomes due by time alone; `nowMs` is simulated time.
  void (*passTime)(Board& board, int64_t nowMs) = nullptr;
};

// Each is defined in the area's own file.
extern const Area kHdmiArea;
extern const Area kVby1Area;
extern const Area kTestPictureArea;
extern const Area kSignalLockArea;
extern const Area kScalerArea;
extern const Area kDisplayArea;
extern const Area kFormatter3dArea;
extern const Area kTransmitterArea;
extern const Area kGraphicsArea;
extern const Area kVpqArea;
extern const Area kHdcp2Area;
extern const Area kMediaArea;
extern const Area kDeviceArea;
extern const Area kThermalArea;
extern const Area kLinkArea;
extern const Area kFailureArea;
extern const Area kMisbehaviourArea;
extern const Area kEventArea;

/// All areas, in the order in which help and state show them.
std::span<const Area* const> Areas();

/// The state of the whole board as human-readable text.
std::string Describe(const Board& board);

}  // namespace sim
