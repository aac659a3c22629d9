#include "LateStage.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "RowReader.h"

namespace {

constexpr int64_t kTicksPerMs = 90;
constexpr int64_t kNoticeable = 5 * kTicksPerMs;

/// The time values of a row.
struct Moment {
  int64_t frame = 0;
  uint32_t pts90k = 0;    // of sound
  uint32_t clock90k = 0;  // when it was dumped
};

std::optional<std::size_t> Find(std::span<const StageColumn> columns, std::string_view name) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].name == name) return i;
  }
  return std::nullopt;
}

uint32_t Number(std::string_view field, const StageColumn& column) {
  if (column.notation != Notation::kHexadecimal) return static_cast<uint32_t>(ToNumber(field));
  uint32_t value = 0;
  std::from_chars(field.data(), field.data() + field.size(), value, 16);
  return value;
}

/// Reads the rows of a stage's file in sequence.
class MomentReader {
 public:
  MomentReader(const Stage& stage, const std::string& path)
      : columns_(stage.columns),
        clock_(Find(columns_, "90k_counter")),
        pts_(Find(columns_, "pts")),
        file_(path) {
    file_.NextLine();
  }

  bool Next(Moment& moment) {
    std::array<std::string_view, kMaxItems> fields;
    std::string_view row;
    if (!clock_ || !file_.NextFilled(row)) return false;
    if (SplitRow(row, {',', ' '}, std::span(fields).first(columns_.size())) <= *clock_)
      return false;
    moment.frame = ToNumber(fields[0]);
    moment.clock90k = Number(fields[*clock_], columns_[*clock_]);
    if (pts_) moment.pts90k = Number(fields[*pts_], columns_[*pts_]);
    return true;
  }

 private:
  const std::span<const StageColumn> columns_;
  const std::optional<std::size_t> clock_;
  const std::optional<std::size_t> pts_;
  RowReader file_;
};

/// Difference between the dump's clock and golden's, in 90 kHz ticks.
struct Offset {
  int64_t atStart = 0;
  int64_t now = 0;

  bool HasMoved() const { return std::abs(now - atStart) > kNoticeable; }
};

int64_t Difference(const Moment& golden, const Moment& dump) {
  return static_cast<int32_t>(dump.clock90k - golden.clock90k);
}

/// The offset of a stage at the moment; empty for a stage without a clock or without the row.
std::optional<Offset> OffsetOf(const Stage& stage, const LateMoment& moment) {
  MomentReader golden(stage, moment.golden(stage.module));
  MomentReader dump(stage, moment.dump(stage.module));
  Moment goldenRow;
  Moment dumpRow;
  if (!golden.Next(goldenRow) || !dump.Next(dumpRow)) return std::nullopt;
  Offset offset;
  offset.atStart = Difference(goldenRow, dumpRow);
  const bool isSound = stage.pictureStep == 0;
  const auto isBefore = [&](const Moment& row) {
    return isSound ? row.pts90k < moment.pts90k : row.frame < moment.frame;
  };
  while (isBefore(goldenRow)) {
    if (!golden.Next(goldenRow)) return std::nullopt;
  }
  while (dumpRow.frame < goldenRow.frame) {
    if (!dump.Next(dumpRow)) return std::nullopt;
  }
  offset.now = Difference(goldenRow, dumpRow);
  return offset;
}

std::string LateText(const std::string& what, int64_t ticks) {
  return what + ' ' + std::to_string(std::abs(ticks) / kTicksPerMs) +
         (ticks > 0 ? " ms late" : " ms early");
}

std::string InBrackets(const Stage& stage) {
  return std::string("[").append(stage.simpleName).append("]");
}

}  // namespace

std::string NameLateStage(const LateMoment& moment) {
  std::optional<Offset> source;  // of the first stage of the path, which all others follow
  const Stage* first = nullptr;
  for (const Stage* stage : PictureWay()) {
    const std::optional<Offset> offset = OffsetOf(*stage, moment);
    if (!offset) continue;
    if (!source) {
      source = offset;
      first = stage;
    }
    const int64_t late = offset->now - source->now;
    if (std::abs(late) > kNoticeable) return LateText(InBrackets(*stage), late);
  }
  const Stage& sound = *FindStage(MODULE_AUDIO);
  const std::optional<Offset> audio = OffsetOf(sound, moment);
  if (!source || !audio) return "[Scaler] or [Audio]";
  const int64_t late = audio->now - source->now;
  if (std::abs(late) <= kNoticeable) return "[Scaler] or [Audio]";
  if (source->HasMoved() && !audio->HasMoved())
    return LateText(InBrackets(*first), source->now - source->atStart);
  if (audio->HasMoved() && !source->HasMoved()) return LateText(InBrackets(sound), late);
  return InBrackets(*first) + " or " + InBrackets(sound) + LateText(", the sound", late);
}
