#include "ComparedRows.h"

#include <algorithm>

#include "ColumnCompare.h"
#include "ComparisonRules.h"

bool ComparedRows::Take(const FrameRow& golden) {
  begun_ = begun_ || (golden.whole && Begins(golden));
  return begun_;
}

/// VO and Scaler may settle for a number of seconds, converted to frames once the rate is known.
bool ComparedRows::IsSettled(const FrameRow& golden, int32_t rate) {
  constexpr int64_t kScalerRowsBefore = 100;
  const bool isVo = shape_.Module() == MODULE_VO;
  const _VOUT_INFO_COMPARE_SETTING& setting = VoutSettingInUse();
  const int64_t seconds =
      isVo ? std::max(setting.errTolerance_sec, setting.syncTolerance_sec) : kSettlingSeconds;
  if (settlingRows_ < 0 && rate > 0) settlingRows_ = rate * seconds;
  const int64_t unknown = isVo ? 1 : kScalerRowsBefore;
  return golden.place >= (settlingRows_ < 0 ? unknown : settlingRows_);
}

bool ComparedRows::Begins(const FrameRow& golden) {
  const int32_t rate = shape_.RateOf(golden);
  switch (shape_.Module()) {
    case MODULE_OMXIN:
      return golden.place >= kOmxInputWarmUpRows;
    case MODULE_OMXOUT:
      return golden.place >= kOmxOutputWarmUpRows && golden.frame >= StartUpFrames(rate);
    case MODULE_DVO:
      return golden.frame >= kDvoFirstCheckedFrame && golden.frame >= StartUpFrames(rate);
    case MODULE_VO:
      return IsSettled(golden, golden.frame == 0 ? WholeRate(rate, kVoRateRounding) : 0);
    case MODULE_SCALER:
      return IsSettled(golden, WholeRate(rate, kScalerRateRounding));
    case MODULE_AUDIO: {
      const bool isOver = firstSecondIsOver_;
      firstSecondIsOver_ = isOver || static_cast<int32_t>(golden.pts) >= kAudioSkippedTicks;
      return isOver;
    }
    case MODULE_VDEC:
      break;
  }
  return true;
}
