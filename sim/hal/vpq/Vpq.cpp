// Picture-quality functions that only store or return something, all from one list, and those for
// start-up and shutdown.
#include "vpq/Vpq.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <ostream>

#include "core/Areas.h"
#include "core/Call.h"
#include "vpq/VpqText.h"
#include "vsc/Picture.h"

namespace sim {

namespace {

constexpr std::size_t kMostShownElements = 11;

// Prints a few elements as they are, more as the CRC-32 of the elements as 32-bit numbers.
void PutArray(CallText& out, const void* record, const k2v::RecordField& field) {
  std::vector<int32_t> elements(field.count);
  for (std::size_t i = 0; i < field.count; ++i) {
    elements[i] = static_cast<int32_t>(k2v::GetField(record, field, i));
  }
  if (field.count > kMostShownElements) {
    out.text << field.count << " elements crc32="
             << Crc32Text(elements.data(), elements.size() * sizeof elements[0]);
    return;
  }
  for (std::size_t i = 0; i < field.count; ++i) out.text << (i == 0 ? '[' : ' ') << elements[i];
  out.text << ']';
}

}  // namespace

void PutRecord(CallText& out, const void* record, std::span<const k2v::RecordField> fields) {
  const char* separator = "{";
  for (const k2v::RecordField& field : fields) {
    out.text << separator << field.name << '=';
    separator = ", ";
    if (field.count == 1) {
      out.text << k2v::GetField(record, field);
    } else {
      PutArray(out, record, field);
    }
  }
  out.text << '}';
}

bool AreInRange(std::initializer_list<Ranged> values) {
  return std::ranges::all_of(values,
                             [](const Ranged& v) { return v.value >= v.min && v.value <= v.max; });
}

namespace {

// By VpqValue.
constexpr int32_t kAtPowerOn[] = {
#define VPQ_VALUE(function, atPowerOn, min, max) atPowerOn,
#include "vpq/VpqFunctions.def"
};

}  // namespace

int32_t ValueOf(const Vpq& vpq, VpqValue key) {
  const auto index = static_cast<unsigned>(key);
  return vpq.values[index] + kAtPowerOn[index];
}

void SetValue(Vpq& vpq, VpqValue key, int32_t value) {
  const auto index = static_cast<unsigned>(key);
  vpq.values[index] = value - kAtPowerOn[index];
}

namespace {

/// Side effects of storing a number or a record.
template <VpqValue key>
void Act(Board&, int32_t) {}

template <>
void Act<VpqValue::kVPQ_MEMC_Freeze>(Board& board, int32_t on) {
  FreezeMotion(board, on == 1);
}

template <typename Record>
void Act(Board&, const Record&) {}

void Act(Board& board, const K2V_VPQ_GAMUT_LUT_T& record) {
  std::ranges::copy(record.nLut, board.vpq.gamutSections[record.nSection]);
}

template <VpqValue key, int32_t min, int32_t max>
int KeepValue(Board& board, int32_t value) {
  if (value < min || value > max) return K2V_RHAL_ERR_PARAM;
  Act<key>(board, value);
  SetValue(board.vpq, key, value);
  return K2V_RHAL_OK;
}

template <VpqValue key>
int TellValue(Board& board, int32_t* value) {
  if (value == nullptr) return K2V_RHAL_ERR_PARAM;
  *value = ValueOf(board.vpq, key);
  return K2V_RHAL_OK;
}

template <auto kept, typename Record>
int KeepRecord(Board& board, const Record* record) {
  if (record == nullptr || !HasItsRanges(*record)) return K2V_RHAL_ERR_PARAM;
  board.vpq.records.*kept = *record;
  Act(board, *record);
  return K2V_RHAL_OK;
}

template <auto kept, typename Record>
int TellRecord(Board& board, Record* record) {
  if (record == nullptr) return K2V_RHAL_ERR_PARAM;
  *record = board.vpq.records.*kept;
  return K2V_RHAL_OK;
}

int NoteOnly(Board&) {
  return K2V_RHAL_OK;
}

// Start-up and shutdown of the picture quality and of its extension.

template <bool Vpq::*initialized>
int Initialize(Board& board) {
  board.vpq.*initialized = true;
  return K2V_RHAL_OK;
}

template <bool Vpq::*initialized, bool Vpq::*open>
int Uninitialize(Board& board) {
  if (!(board.vpq.*initialized)) return K2V_RHAL_ERR_ORDER;
  board.vpq.*initialized = board.vpq.*open = false;
  return K2V_RHAL_OK;
}

template <bool Vpq::*initialized, bool Vpq::*open>
int Open(Board& board) {
  if (!(board.vpq.*initialized)) return K2V_RHAL_ERR_ORDER;
  board.vpq.*open = true;
  return K2V_RHAL_OK;
}

template <bool Vpq::*open>
int Close(Board& board) {
  if (!(board.vpq.*open)) return K2V_RHAL_ERR_ORDER;
  board.vpq.*open = false;
  return K2V_RHAL_OK;
}

void ResetValues(Board& board, std::initializer_list<VpqValue> keys) {
  for (const VpqValue key : keys) board.vpq.values[static_cast<unsigned>(key)] = 0;
}

int ResetPictureMode(Board& board) {
  using enum VpqValue;
  ResetValues(board, {kVPQ_SetBrightness, kVPQ_SetContrast, kVPQ_SetSaturation, kVPQ_SetHue,
                      kVPQ_SetSharpnessExtend, kVPQ_SetBackLight});
  board.vpq.records.VPQ_SetSharpness = {};
  return K2V_RHAL_OK;
}

int ResetColorTemperature(Board& board) {
  using enum VpqValue;
  ResetValues(board, {kVPQ_SetColorTempRedGain, kVPQ_SetColorTempGreenGain,
                      kVPQ_SetColorTempBlueGain, kVPQ_SetColorTempRedOffset,
                      kVPQ_SetColorTempGreenOffset, kVPQ_SetColorTempBlueOffset});
  return K2V_RHAL_OK;
}

int ResetOsdMap(Board& board) {
  for (auto& item : board.vpq.osdMap) std::ranges::fill(item, uint16_t{0});
  return K2V_RHAL_OK;
}

void DescribeStep(const char* name, bool initialized, bool open, std::ostream& out) {
  out << name << (open ? "open" : initialized ? "initialised" : "not initialised");
}

// The values that differ from those at power-on.
void Describe(const Board& board, std::ostream& out) {
  static constexpr const char* kNames[] = {
#define VPQ_VALUE(function, atPowerOn, min, max) #function,
#include "vpq/VpqFunctions.def"
  };
  const Vpq& vpq = board.vpq;
  DescribeStep("picture quality: ", vpq.initialized, vpq.open, out);
  DescribeStep(", extension ", vpq.extensionInitialized, vpq.extensionOpen, out);
  out << ", source noise " << vpq.noiseLevel << " motion " << vpq.motionLevel << '\n';
  for (std::size_t i = 0; i < std::size(kNames); ++i) {
    if (vpq.values[i] != 0)
      out << "  " << kNames[i] << ' ' << vpq.values[i] + kAtPowerOn[i] << '\n';
  }
}

template <int32_t Vpq::*level>
Action ParseLevel(const Words& words) {
  const auto value = static_cast<int32_t>(ParseNumber(words[0], "level", 0, 255));
  return [=](Board& board) { board.vpq.*level = value; };
}

/// Resets the settings; the levels of the source and what is initialised, open or loaded stay.
Action ParseNeutral(const Words&) {
  return [](Board& board) {
    Vpq& vpq = board.vpq;
    const Vpq before = vpq;
    std::memset(&vpq, 0, sizeof(vpq));
    vpq.initialized = before.initialized;
    vpq.open = before.open;
    vpq.extensionInitialized = before.extensionInitialized;
    vpq.extensionOpen = before.extensionOpen;
    vpq.panelTables = before.panelTables;
    vpq.noiseLevel = before.noiseLevel;
    vpq.motionLevel = before.motionLevel;
  };
}

constexpr Command kCommands[] = {
    {"neutral", "", "reset all picture-quality settings to their power-on values", 0, 0,
     ParseNeutral},
    {"noise", "LEVEL", "set the noise of the shown source, 0 to 255", 1, 1,
     ParseLevel<&Vpq::noiseLevel>},
    {"motion", "LEVEL", "set the motion of the shown source, 0 to 255", 1, 1,
     ParseLevel<&Vpq::motionLevel>},
};

}  // namespace

constinit const Area kVpqArea = {kCommands, Describe};

}  // namespace sim

using namespace sim;

#define VPQ_VALUE(function, atPowerOn, min, max)                              \
  int K2V_RHAL_##function(int32_t value) {                                    \
    return Call(__func__, KeepValue<VpqValue::k##function, min, max>, value); \
  }
#define VPQ_VALUE_TOO(function, setter, min, max)                           \
  int K2V_RHAL_##function(int32_t value) {                                  \
    return Call(__func__, KeepValue<VpqValue::k##setter, min, max>, value); \
  }
#define VPQ_VALUE_OF(function, setter)                                 \
  int K2V_RHAL_##function(int32_t* value) {                            \
    return Call(__func__, TellValue<VpqValue::k##setter>, Out{value}); \
  }
#define VPQ_RECORD(function, type)                                                           \
  int K2V_RHAL_##function(decltype(VpqRecords::function)* record) {                          \
    return Call(__func__, KeepRecord<&VpqRecords::function, decltype(VpqRecords::function)>, \
                record);                                                                     \
  }
#define VPQ_RECORD_OF(function, setter)                                                  \
  int K2V_RHAL_##function(decltype(VpqRecords::setter)* record) {                        \
    return Call(__func__, TellRecord<&VpqRecords::setter, decltype(VpqRecords::setter)>, \
                Out{record});                                                            \
  }
#define VPQ_TEXT(function, content)                                       \
  int K2V_RHAL_##function(char* text) {                                   \
    const auto tell = [](Board&, char* buffer) {                          \
      if (buffer == nullptr) return static_cast<int>(K2V_RHAL_ERR_PARAM); \
      static_assert(sizeof(content) <= K2V_VPQ_TEXT_BYTES);               \
      std::memcpy(buffer, (content), sizeof(content));                    \
      return static_cast<int>(K2V_RHAL_OK);                               \
    };                                                                    \
    return Call(__func__, tell, TextOut{text});                           \
  }
#define VPQ_NOTED(function)          \
  int K2V_RHAL_##function() {        \
    return Call(__func__, NoteOnly); \
  }
#include "vpq/VpqFunctions.def"

int K2V_RHAL_VPQ_Initialize() {
  return Call(__func__, Initialize<&Vpq::initialized>);
}

int K2V_RHAL_VPQ_Uninitialize() {
  return Call(__func__, Uninitialize<&Vpq::initialized, &Vpq::open>);
}

int K2V_RHAL_VPQ_Open() {
  return Call(__func__, Open<&Vpq::initialized, &Vpq::open>);
}

int K2V_RHAL_VPQ_Close() {
  return Call(__func__, Close<&Vpq::open>);
}

int K2V_RHAL_VPQEX_Init() {
  return Call(__func__, Initialize<&Vpq::extensionInitialized>);
}

int K2V_RHAL_VPQEX_Uninit() {
  return Call(__func__, Uninitialize<&Vpq::extensionInitialized, &Vpq::extensionOpen>);
}

int K2V_RHAL_VPQEX_Open() {
  return Call(__func__, Open<&Vpq::extensionInitialized, &Vpq::extensionOpen>);
}

int K2V_RHAL_VPQEX_Close() {
  return Call(__func__, Close<&Vpq::extensionOpen>);
}

int K2V_RHAL_VPQ_ResetCurPicModeData() {
  return Call(__func__, ResetPictureMode);
}

int K2V_RHAL_VPQ_ResetCurColorTempData() {
  return Call(__func__, ResetColorTemperature);
}

int K2V_RHAL_VPQ_ResetCurColorFacOSDMap() {
  return Call(__func__, ResetOsdMap);
}
