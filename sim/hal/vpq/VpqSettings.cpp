// Picture-quality functions with several numbers, and those that store data of a special form:
// support points, factory colour temperatures, engineering menus, panel tables.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "core/Call.h"
#include "vpq/Vpq.h"
#include "vpq/VpqText.h"

namespace sim {
namespace {

constexpr int32_t kMaxLevel10Bit = 1023;
constexpr int32_t kNeutralGain = 512;

constexpr int32_t Last(unsigned count) {
  return static_cast<int32_t>(count) - 1;
}

int Checked(bool areRight) {
  return areRight ? K2V_RHAL_OK : K2V_RHAL_ERR_PARAM;
}

/// For functions with numbers that nothing reads back.
template <typename... Numbers>
int CallWithRanges(const char* function, std::initializer_list<Ranged> ranges, Numbers... numbers) {
  const bool areRight = AreInRange(ranges);
  return Call(
      function, [areRight](Board&, Numbers...) { return Checked(areRight); }, numbers...);
}

/// Like CallWithRanges, and stores the numbers.
template <auto kept, typename... Numbers>
int CallAndKeep(const char* function, std::initializer_list<Ranged> ranges, Numbers... numbers) {
  const bool areRight = AreInRange(ranges);
  const auto keep = [areRight](Board& board, Numbers... values) {
    if (areRight) board.vpq.*kept = {true, {values...}};
    return Checked(areRight);
  };
  return Call(function, keep, numbers...);
}

int SetTemperatureOffset(Board& board, int32_t index, int32_t red, int32_t green, int32_t blue) {
  if (!AreInRange({{index, 0, Last(kFactoryTemperatures)},
                   {red, INT8_MIN, INT8_MAX},
                   {green, INT8_MIN, INT8_MAX},
                   {blue, INT8_MIN, INT8_MAX}})) {
    return K2V_RHAL_ERR_PARAM;
  }
  auto& offsets = board.vpq.temperatureOffsets[index];
  offsets[0] = static_cast<int8_t>(red);
  offsets[1] = static_cast<int8_t>(green);
  offsets[2] = static_cast<int8_t>(blue);
  return K2V_RHAL_OK;
}

int GetFactoryTemperature(Board& board, K2V_VPQ_MAGIC_COLOR_TEMP_T* record) {
  if (record == nullptr || record->nIndex >= kFactoryTemperatures) return K2V_RHAL_ERR_PARAM;
  const auto* offsets = board.vpq.temperatureOffsets[record->nIndex];
  record->nRedGain = static_cast<uint32_t>(kNeutralGain + offsets[0]);
  record->nGreenGain = static_cast<uint32_t>(kNeutralGain + offsets[1]);
  record->nBlueGain = static_cast<uint32_t>(kNeutralGain + offsets[2]);
  return K2V_RHAL_OK;
}

int SetOsdMap(Board& board, int32_t item, int32_t point, int32_t value) {
  if (!AreInRange({{item, 0, Last(kOsdMapItems)},
                   {point, 0, Last(kOsdMapPoints)},
                   {value, 0, kMaxLevel10Bit}})) {
    return K2V_RHAL_ERR_PARAM;
  }
  board.vpq.osdMap[item][point] = static_cast<uint16_t>(value);
  return K2V_RHAL_OK;
}

int SetOsdMapByLevel(Board& board, int32_t item, int32_t level, int32_t value) {
  if (level < 0 || level > 100) return K2V_RHAL_ERR_PARAM;
  return SetOsdMap(board, item, level / 10, value);  // the support point of that level
}

int GetOsdMap(Board& board, K2V_VPQ_COLOR_OSD_MAP_T* record) {
  if (record == nullptr || record->eItem >= kOsdMapItems) return K2V_RHAL_ERR_PARAM;
  std::ranges::copy(board.vpq.osdMap[record->eItem], record->nPoint);
  return K2V_RHAL_OK;
}

int SetEngineering(Board& board, const K2V_VPQ_ENG_ID_T* record) {
  if (record == nullptr || !HasItsRanges(*record)) return K2V_RHAL_ERR_PARAM;
  board.vpq.engineering[record->nId] = static_cast<uint16_t>(record->nValue);
  return K2V_RHAL_OK;
}

int GetEngineering(Board& board, K2V_VPQ_ENG_ID_T* record) {
  if (record == nullptr || record->nId >= kEngineeringItems) return K2V_RHAL_ERR_PARAM;
  record->nValue = board.vpq.engineering[record->nId];
  return K2V_RHAL_OK;
}

int GetEngineeringMenu(Board& board, K2V_VPQ_ENG_MENU_T* record) {
  if (record == nullptr) return K2V_RHAL_ERR_PARAM;
  record->nItems = kEngineeringItems;
  std::ranges::copy(board.vpq.engineering, record->nValue);
  return K2V_RHAL_OK;
}

int GetEngineeringMenuSize(Board&, int32_t* value) {
  if (value == nullptr) return K2V_RHAL_ERR_PARAM;
  *value = kEngineeringItems;
  return K2V_RHAL_OK;
}

int SetLayeredEngineering(Board& board, int32_t layer, int32_t id, int32_t value) {
  if (!AreInRange({{layer, 0, Last(kEngineeringLayers)},
                   {id, 0, Last(kEngineeringLayerItems)},
                   {value, 0, kMaxLevel10Bit}})) {
    return K2V_RHAL_ERR_PARAM;
  }
  board.vpq.layeredEngineering[layer][id] = static_cast<uint16_t>(value);
  return K2V_RHAL_OK;
}

int GetLayeredEngineering(Board& board, K2V_VPQ_ENG_TWO_LAYER_ID_T* record) {
  if (record == nullptr || record->nLayer >= kEngineeringLayers ||
      record->nId >= kEngineeringLayerItems) {
    return K2V_RHAL_ERR_PARAM;
  }
  record->nValue = board.vpq.layeredEngineering[record->nLayer][record->nId];
  return K2V_RHAL_OK;
}

// The values of the first layers, as many as fit into the record.
int GetLayeredEngineeringMenu(Board& board, K2V_VPQ_ENG_MENU_T* record) {
  if (record == nullptr) return K2V_RHAL_ERR_PARAM;
  record->nItems = static_cast<uint32_t>(std::size(record->nValue));
  for (std::size_t i = 0; i < std::size(record->nValue); ++i) {
    record->nValue[i] =
        board.vpq.layeredEngineering[i / kEngineeringLayerItems][i % kEngineeringLayerItems];
  }
  return K2V_RHAL_OK;
}

int GetGammaCount(Board&, int32_t* value) {
  if (value == nullptr) return K2V_RHAL_ERR_PARAM;
  *value = 10;  // SetGamma takes 0 to 9
  return K2V_RHAL_OK;
}

int GetFrameDelay(Board& board, int32_t* value) {
  if (value == nullptr) return K2V_RHAL_ERR_PARAM;
  *value = ValueOf(board.vpq, VpqValue::kVPQ_MEMC_LowDelayMode) == 0 ? 3 : 1;  // frames
  return K2V_RHAL_OK;
}

int LoadPanelTables(Board& board) {
  board.vpq.panelTables = true;
  return K2V_RHAL_OK;
}

int LoadOnePanelTable(Board& board, const char* name) {
  if (name == nullptr || *name == '\0') return K2V_RHAL_ERR_PARAM;
  return LoadPanelTables(board);
}

int GetDataAccess(Board& board, K2V_VPQ_DATA_ACCESS_T* record) {
  if (record == nullptr) return K2V_RHAL_ERR_PARAM;
  *record = {board.vpq.panelTables, 1};
  return K2V_RHAL_OK;
}

}  // namespace
}  // namespace sim

using namespace sim;

int K2V_RHAL_VPQEX_SetMagicColorTempOffset(int32_t nIndex, int32_t nRed, int32_t nGreen,
                                           int32_t nBlue) {
  return Call(__func__, SetTemperatureOffset, nIndex, nRed, nGreen, nBlue);
}

int K2V_RHAL_VPQEX_GetMagicColorTempByIndex(K2V_VPQ_MAGIC_COLOR_TEMP_T* record) {
  return Call(__func__, GetFactoryTemperature, Out{record});
}

int K2V_RHAL_VPQ_SetColorFacOSDMap(int32_t eItem, int32_t nPoint, int32_t nValue) {
  return Call(__func__, SetOsdMap, eItem, nPoint, nValue);
}

int K2V_RHAL_VPQ_SetColorFacOSDMapByLv(int32_t eItem, int32_t nLevel, int32_t nValue) {
  return Call(__func__, SetOsdMapByLevel, eItem, nLevel, nValue);
}

int K2V_RHAL_VPQ_GetColorFacOSDMap(K2V_VPQ_COLOR_OSD_MAP_T* record) {
  return Call(__func__, GetOsdMap, Out{record});
}

int K2V_RHAL_VPQ_SetENG_ID(K2V_VPQ_ENG_ID_T* record) {
  return Call(__func__, SetEngineering, record);
}

int K2V_RHAL_VPQ_GetENG_ID(K2V_VPQ_ENG_ID_T* record) {
  return Call(__func__, GetEngineering, Out{record});
}

int K2V_RHAL_VPQ_GetENGMENU(K2V_VPQ_ENG_MENU_T* record) {
  return Call(__func__, GetEngineeringMenu, Out{record});
}

int K2V_RHAL_VPQ_GetENGMENU_size(int32_t* value) {
  return Call(__func__, GetEngineeringMenuSize, Out{value});
}

int K2V_RHAL_VPQ_SetENG_TWOLAYER_ID(int32_t nLayer, int32_t nId, int32_t nValue) {
  return Call(__func__, SetLayeredEngineering, nLayer, nId, nValue);
}

int K2V_RHAL_VPQ_GetENG_TWOLAYER_ID(K2V_VPQ_ENG_TWO_LAYER_ID_T* record) {
  return Call(__func__, GetLayeredEngineering, Out{record});
}

int K2V_RHAL_VPQ_GetENG_TWOLAYER_MENU(K2V_VPQ_ENG_MENU_T* record) {
  return Call(__func__, GetLayeredEngineeringMenu, Out{record});
}

int K2V_RHAL_VPQ_GetGammaNum(int32_t* value) {
  return Call(__func__, GetGammaCount, Out{value});
}

int K2V_RHAL_VPQ_MEMC_GetFrameDelay(int32_t* value) {
  return Call(__func__, GetFrameDelay, Out{value});
}

int K2V_RHAL_VPQEX_AutoLoadPanelTables() {
  return Call(__func__, LoadPanelTables);
}

int K2V_RHAL_VPQEX_LoadOnePanelTables(const char* name) {
  return Call(__func__, LoadOnePanelTable, name);
}

int K2V_RHAL_VPQEX_GetDataAccess(K2V_VPQ_DATA_ACCESS_T* record) {
  return Call(__func__, GetDataAccess, Out{record});
}

int K2V_RHAL_VPQ_SET_INTERNAL_PARTTEN_1W(int32_t bEnable, int32_t nWhite) {
  return CallAndKeep<&Vpq::whitePattern>(__func__, {{bEnable, 0, 1}, {nWhite, 0, kMaxLevel10Bit}},
                                         bEnable, nWhite);
}

int K2V_RHAL_VPQ_MEMC_SetVideoBlock(int32_t x, int32_t y, int32_t w, int32_t h) {
  return CallWithRanges(
      __func__, {{x, 0, kPanel.w - 1}, {y, 0, kPanel.h - 1}, {w, 0, kPanel.w}, {h, 0, kPanel.h}}, x,
      y, w, h);
}

int K2V_RHAL_VPQ_MEMC_SetBypassRegion(int32_t nRegion, int32_t x, int32_t y, int32_t w, int32_t h) {
  return CallWithRanges(__func__,
                        {{nRegion, 0, 3},
                         {x, 0, kPanel.w - 1},
                         {y, 0, kPanel.h - 1},
                         {w, 0, kPanel.w},
                         {h, 0, kPanel.h}},
                        nRegion, x, y, w, h);
}

int K2V_RHAL_VPQ_MEMC_SetDemoBar(int32_t bEnable, int32_t nPosition) {
  return CallAndKeep<&Vpq::motionDemo>(__func__, {{bEnable, 0, 1}, {nPosition, 0, kPanel.w - 1}},
                                       bEnable, nPosition);
}

int K2V_RHAL_VPQ_LED_Initialize(int32_t ePanel, int32_t eBar) {
  return CallWithRanges(__func__, {{ePanel, 0, 3}, {eBar, 0, 15}}, ePanel, eBar);
}

int K2V_RHAL_VPQ_LED_LDCtrlDemoMode(int32_t eMode, int32_t bCtrl) {
  return CallWithRanges(__func__, {{eMode, 0, 3}, {bCtrl, 0, 1}}, eMode, bCtrl);
}

int K2V_RHAL_VPQ_SetColorGain(int32_t nRed, int32_t nGreen, int32_t nBlue) {
  return CallAndKeep<&Vpq::colorGain>(
      __func__,
      {{nRed, 0, kMaxLevel10Bit}, {nGreen, 0, kMaxLevel10Bit}, {nBlue, 0, kMaxLevel10Bit}}, nRed,
      nGreen, nBlue);
}

int K2V_RHAL_VPQ_SetIREInnerPattern(int32_t bOnOff, int32_t nRed, int32_t nGreen, int32_t nBlue) {
  return CallAndKeep<&Vpq::irePattern>(__func__,
                                       {{bOnOff, 0, 1},
                                        {nRed, 0, kMaxLevel10Bit},
                                        {nGreen, 0, kMaxLevel10Bit},
                                        {nBlue, 0, kMaxLevel10Bit}},
                                       bOnOff, nRed, nGreen, nBlue);
}
