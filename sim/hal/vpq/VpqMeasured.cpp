// What the picture quality measures in the picture of the main window.
#include <algorithm>

#include "core/Call.h"
#include "vfe/Hdmi.h"
#include "vpq/Vpq.h"
#include "vpq/VpqText.h"
#include "vsc/Picture.h"

namespace sim {
namespace {

constexpr uint32_t kSampleStep = 8;  // every eighth pixel of every eighth line is sampled
constexpr unsigned kLumaStepsPerBin = 32;

bool HasPicture(const Board& board) {
  return ShownPicture(board, board.scaler.windows[0]).width > 0;
}

K2V_VPQ_HISTOGRAM_T Measure(const Board& board) {
  const Window& window = board.scaler.windows[0];
  const Picture picture = ShownPicture(board, window);
  const Frame frame(window, picture);
  K2V_VPQ_HISTOGRAM_T result{};
  result.nMinimum = 1023;
  uint64_t sum = 0;
  for (uint32_t y = 0; y < picture.height; y += kSampleStep) {
    for (uint32_t x = 0; x < picture.width; x += kSampleStep) {
      const auto luma = std::min<uint16_t>(frame.At(x, y).y, 1023);
      result.nMinimum = std::min(result.nMinimum, luma);
      result.nMaximum = std::max(result.nMaximum, luma);
      result.nBin[luma / kLumaStepsPerBin] +=
          std::min(kSampleStep, picture.width - x) * std::min(kSampleStep, picture.height - y);
      sum += luma;
    }
  }
  const uint32_t rows = (picture.height + kSampleStep - 1) / kSampleStep;
  const uint32_t columns = (picture.width + kSampleStep - 1) / kSampleStep;
  result.nAverage = static_cast<uint16_t>(sum / std::max(rows * columns, 1U));
  return result;
}

int CheckMeasurable(const Board& board, const void* result) {
  if (result == nullptr) return K2V_RHAL_ERR_PARAM;
  return HasPicture(board) ? K2V_RHAL_OK : K2V_RHAL_ERR_NO_SIGNAL;
}

int GetHistogram(Board& board, K2V_VPQ_HISTOGRAM_T* record) {
  if (const int error = CheckMeasurable(board, record)) return error;
  *record = Measure(board);
  return K2V_RHAL_OK;
}

int GetLumaInfo(Board& board, K2V_VPQ_SRC_APL_INFO_T* record) {
  if (const int error = CheckMeasurable(board, record)) return error;
  const K2V_VPQ_HISTOGRAM_T measured = Measure(board);
  *record = {measured.nAverage, measured.nMinimum, measured.nMaximum};
  return K2V_RHAL_OK;
}

int GetPictureInfo(Board& board, K2V_VPQ_HDR_PIC_INFO_T* record) {
  if (const int error = CheckMeasurable(board, record)) return error;
  const K2V_VPQ_HISTOGRAM_T measured = Measure(board);
  *record = {measured.nAverage, measured.nMaximum};
  return K2V_RHAL_OK;
}

int GetAverageLuma(Board& board, int32_t* value) {
  if (const int error = CheckMeasurable(board, value)) return error;
  *value = Measure(board).nAverage;
  return K2V_RHAL_OK;
}

template <int32_t Vpq::*level>
int GetLevel(Board& board, int32_t* value) {
  if (const int error = CheckMeasurable(board, value)) return error;
  *value = board.vpq.*level;
  return K2V_RHAL_OK;
}

int GetPixel(Board& board, K2V_VPQ_PIXEL_INFO_T* record) {
  if (const int error = CheckMeasurable(board, record)) return error;
  const Window& window = board.scaler.windows[0];
  const Picture picture = ShownPicture(board, window);
  if (record->x >= picture.width || record->y >= picture.height) return K2V_RHAL_ERR_PARAM;
  const auto rgb = Frame(window, picture).RgbAt(record->x, record->y);
  const auto in10Bits = [](uint8_t value) { return static_cast<uint16_t>(value * 1023 / 255); };
  record->nRed = in10Bits(rgb[0]);
  record->nGreen = in10Bits(rgb[1]);
  record->nBlue = in10Bits(rgb[2]);
  return K2V_RHAL_OK;
}

Picture MainPicture(const Board& board) {
  return HasPicture(board) ? ShownPicture(board, board.scaler.windows[0]) : Picture{};
}

/// SDR 0, HDR10 1, HLG 2.
uint32_t DynamicRange(const Board& board) {
  static constexpr uint32_t kRanges[] = {0, 0, 1, 2};  // by K2V_HDMI_EOTF_*
  return kRanges[MainPicture(board).eotf];
}

int GetSourceHdrInfo(Board& board, K2V_VPQ_SRC_HDR_INFO_T* record) {
  if (const int error = CheckMeasurable(board, record)) return error;
  const Picture picture = MainPicture(board);
  *record = {picture.eotf, picture.colorStandard, 0, 0, 0};
  if (picture.eotf == K2V_HDMI_EOTF_PQ)
    *record = {picture.eotf, picture.colorStandard, 1000, 1000, 400};
  return K2V_RHAL_OK;
}

int GetHdrStatus(Board& board, K2V_VPQ_HDR_STATUS_T* record) {
  if (record == nullptr) return K2V_RHAL_ERR_PARAM;
  *record = {DynamicRange(board), 0};
  return K2V_RHAL_OK;
}

int GetHdrType(Board& board, int32_t* value) {
  if (value == nullptr) return K2V_RHAL_ERR_PARAM;
  *value = static_cast<int32_t>(DynamicRange(board));
  return K2V_RHAL_OK;
}

}  // namespace
}  // namespace sim

using namespace sim;

int K2V_RHAL_VPQ_GetHistogram(K2V_VPQ_HISTOGRAM_T* record) {
  return Call(__func__, GetHistogram, Out{record});
}

int K2V_RHAL_VPQ_GetHistoData(K2V_VPQ_HISTOGRAM_T* record) {
  return Call(__func__, GetHistogram, Out{record});
}

int K2V_RHAL_VPQ_GetSrcAplInfo(K2V_VPQ_SRC_APL_INFO_T* record) {
  return Call(__func__, GetLumaInfo, Out{record});
}

int K2V_RHAL_VPQ_HDR_GetPicInfo(K2V_VPQ_HDR_PIC_INFO_T* record) {
  return Call(__func__, GetPictureInfo, Out{record});
}

int K2V_RHAL_VPQ_GetHistoData_APL(int32_t* value) {
  return Call(__func__, GetAverageLuma, Out{value});
}

int K2V_RHAL_VPQ_GetApl(int32_t* value) {
  return Call(__func__, GetAverageLuma, Out{value});
}

int K2V_RHAL_VPQ_LED_LDGetAPL(int32_t* value) {
  return Call(__func__, GetAverageLuma, Out{value});
}

int K2V_RHAL_VPQ_GetNoiseLevel(int32_t* value) {
  return Call(__func__, GetLevel<&Vpq::noiseLevel>, Out{value});
}

int K2V_RHAL_VPQ_GetMotionLevel(int32_t* value) {
  return Call(__func__, GetLevel<&Vpq::motionLevel>, Out{value});
}

int K2V_RHAL_VPQEX_GetPixelinfo(K2V_VPQ_PIXEL_INFO_T* record) {
  return Call(__func__, GetPixel, Out{record});
}

int K2V_RHAL_VPQ_GetSrcHdrInfo(K2V_VPQ_SRC_HDR_INFO_T* record) {
  return Call(__func__, GetSourceHdrInfo, Out{record});
}

int K2V_RHAL_VPQEX_GetHDRDolbyStatus(K2V_VPQ_HDR_STATUS_T* record) {
  return Call(__func__, GetHdrStatus, Out{record});
}

int K2V_RHAL_VPQ_GetHdrType(int32_t* value) {
  return Call(__func__, GetHdrType, Out{value});
}
