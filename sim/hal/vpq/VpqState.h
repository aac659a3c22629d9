// The state of the picture quality, generated from the list of its functions.
#pragma once

#include <cstdint>

#include "k2v/vpq.h"

namespace sim {

/// The stored numbers, by the function that takes them.
enum class VpqValue : unsigned {
#define VPQ_VALUE(function, atPowerOn, min, max) k##function,
#include "vpq/VpqFunctions.def"
  kCount
};

/// The stored records, by the function that takes them; zero until it is called.
struct VpqRecords {
#define VPQ_RECORD(function, type) type function;
#include "vpq/VpqFunctions.def"
};

constexpr unsigned kOsdMapItems = 5;
constexpr unsigned kOsdMapPoints = 11;
constexpr unsigned kFactoryTemperatures = 10;
constexpr unsigned kGamutSections = 8;
constexpr unsigned kGamutPoints = 128;
constexpr unsigned kEngineeringItems = 64;
constexpr unsigned kEngineeringLayers = 8;
constexpr unsigned kEngineeringLayerItems = 16;

/// The arguments of the last call of a function with several numbers.
template <unsigned count>
struct VpqNumbers {
  bool areSet;
  int32_t numbers[count];
};

struct Vpq {
  bool initialized;
  bool open;
  bool extensionInitialized;
  bool extensionOpen;
  bool panelTables;     // loaded
  int32_t noiseLevel;   // of the source
  int32_t motionLevel;  // of the source
  /// As differences from the values at power-on, so that a board of zero bytes has the latter.
  int32_t values[static_cast<unsigned>(VpqValue::kCount)];
  VpqRecords records;
  VpqNumbers<2> whitePattern;  // on, level
  VpqNumbers<4> irePattern;    // on, red, green, blue
  VpqNumbers<3> colorGain;     // red, green, blue
  VpqNumbers<2> motionDemo;    // on, position of the bar
  uint16_t osdMap[kOsdMapItems][kOsdMapPoints];
  int8_t temperatureOffsets[kFactoryTemperatures][3];  // red, green, blue
  uint16_t gamutSections[kGamutSections][kGamutPoints];
  uint16_t engineering[kEngineeringItems];
  uint16_t layeredEngineering[kEngineeringLayers][kEngineeringLayerItems];
};

}  // namespace sim
