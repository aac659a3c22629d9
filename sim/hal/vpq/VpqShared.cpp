// Picture-quality functions that set or return, in another form, values that also exist as single
// numbers.
#include <algorithm>
#include <cmath>
#include <span>

#include "core/Call.h"
#include "vpq/Vpq.h"
#include "vpq/VpqText.h"

namespace sim {
namespace {

using enum VpqValue;

/// The meaning of the fields of a record, in order: stored number = origin + step * field.
struct Meaning {
  std::span<const VpqValue> keys;
  int32_t origin = 0;
  int32_t step = 1;
};

constexpr VpqValue kPicture[] = {kVPQ_SetContrast, kVPQ_SetBrightness, kVPQ_SetSaturation,
                                 kVPQ_SetHue};
constexpr VpqValue kTemperature[] = {kVPQ_SetColorTempRedGain,     kVPQ_SetColorTempGreenGain,
                                     kVPQ_SetColorTempBlueGain,    kVPQ_SetColorTempRedOffset,
                                     kVPQ_SetColorTempGreenOffset, kVPQ_SetColorTempBlueOffset};
constexpr VpqValue kMpegNoise[] = {kVPQ_SetDeBlocking, kVPQ_SetDeRinging};

constexpr Meaning kPictureControl = {kPicture};
constexpr Meaning kChipTemperature = {kTemperature};
// One step for the user is ten of the chip, relative to its neutral value.
constexpr Meaning kUserTemperature = {kTemperature, 512, 10};
constexpr Meaning kMpegNoiseReduction = {kMpegNoise};

template <const Meaning& meaning, typename Record>
int Keep(Board& board, const Record* record) {
  if (record == nullptr || !HasItsRanges(*record)) return K2V_RHAL_ERR_PARAM;
  const auto fields = k2v::FieldsOf(record);
  for (std::size_t i = 0; i < meaning.keys.size(); ++i) {
    const auto field = static_cast<int32_t>(k2v::GetField(record, fields[i]));
    SetValue(board.vpq, meaning.keys[i], meaning.origin + meaning.step * field);
  }
  return K2V_RHAL_OK;
}

// A number between two steps is rounded to the nearer one.
template <const Meaning& meaning, typename Record>
int Tell(Board& board, Record* record) {
  if (record == nullptr) return K2V_RHAL_ERR_PARAM;
  const auto fields = k2v::FieldsOf(record);
  for (std::size_t i = 0; i < meaning.keys.size(); ++i) {
    const int32_t fromOrigin = ValueOf(board.vpq, meaning.keys[i]) - meaning.origin;
    const auto steps =
        static_cast<int>(std::lround(static_cast<double>(fromOrigin) / meaning.step));
    k2v::SetField(record, fields[i], std::clamp(steps, fields[i].min, fields[i].max));
  }
  return K2V_RHAL_OK;
}

// The gains of a level are stored only if that level is selected.
int SetTemperatureOfLevel(Board& board, const K2V_VPQ_COLOR_TEMPERATURE_T* record) {
  if (record == nullptr || !HasItsRanges(*record)) return K2V_RHAL_ERR_PARAM;
  const auto chosen = static_cast<uint32_t>(ValueOf(board.vpq, kVPQ_SetColorTempLevel));
  if (record->eLevel != chosen) return K2V_RHAL_OK;
  SetValue(board.vpq, kVPQ_SetColorTempRedGain, record->nRedGain);
  SetValue(board.vpq, kVPQ_SetColorTempGreenGain, record->nGreenGain);
  SetValue(board.vpq, kVPQ_SetColorTempBlueGain, record->nBlueGain);
  return K2V_RHAL_OK;
}

int SetMotionCompensation(Board& board, int32_t blur, int32_t judder) {
  if (!AreInRange({{blur, 0, 10}, {judder, 0, 10}})) return K2V_RHAL_ERR_PARAM;
  SetValue(board.vpq, kVPQ_MEMC_SetBlurLevel, blur);
  SetValue(board.vpq, kVPQ_MEMC_SetJudderLevel, judder);
  return K2V_RHAL_OK;
}

int SetFilm(Board& board, int32_t mode, int32_t realCinema) {
  if (!AreInRange({{mode, 0, 2}, {realCinema, 0, 1}})) return K2V_RHAL_ERR_PARAM;
  SetValue(board.vpq, kVPQEX_SetFilmMode, mode != 0);
  return K2V_RHAL_OK;
}

}  // namespace
}  // namespace sim

using namespace sim;

int K2V_RHAL_VPQ_SetPictureCtrl(K2V_VPQ_PICTURE_CTRL_T* record) {
  return Call(__func__, Keep<kPictureControl, K2V_VPQ_PICTURE_CTRL_T>, record);
}

int K2V_RHAL_VPQ_SetColorTempExtend(K2V_VPQ_COLOR_TEMP_EXTEND_T* record) {
  return Call(__func__, Keep<kChipTemperature, K2V_VPQ_COLOR_TEMP_EXTEND_T>, record);
}

int K2V_RHAL_VPQ_GetColorTempGainOffset(K2V_VPQ_COLOR_TEMP_EXTEND_T* record) {
  return Call(__func__, Tell<kChipTemperature, K2V_VPQ_COLOR_TEMP_EXTEND_T>, Out{record});
}

int K2V_RHAL_VPQ_SetColorTemp(K2V_VPQ_COLOR_TEMP_T* record) {
  return Call(__func__, Keep<kUserTemperature, K2V_VPQ_COLOR_TEMP_T>, record);
}

int K2V_RHAL_VPQ_GetColorTemp(K2V_VPQ_COLOR_TEMP_T* record) {
  return Call(__func__, Tell<kUserTemperature, K2V_VPQ_COLOR_TEMP_T>, Out{record});
}

int K2V_RHAL_VPQ_SetColorTemperature(K2V_VPQ_COLOR_TEMPERATURE_T* record) {
  return Call(__func__, SetTemperatureOfLevel, record);
}

int K2V_RHAL_VPQ_SetMpegNoiseReduction(K2V_VPQ_MPEG_NOISE_REDUCTION_T* record) {
  return Call(__func__, Keep<kMpegNoiseReduction, K2V_VPQ_MPEG_NOISE_REDUCTION_T>, record);
}

int K2V_RHAL_VPQ_MEMC_SetMotionComp(int32_t nBlur, int32_t nJudder) {
  return Call(__func__, SetMotionCompensation, nBlur, nJudder);
}

int K2V_RHAL_VPQ_SetFilmMode(int32_t eMode, int32_t bRealCinema) {
  return Call(__func__, SetFilm, eMode, bRealCinema);
}
