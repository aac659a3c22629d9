#include "FrameRows.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <functional>

#include "ColumnCompare.h"
#include "ComparisonRules.h"
#include "StageFiles.h"

namespace {

bool HasBit(uint32_t bits, std::size_t n) {
  return (bits >> n & 1U) != 0;
}

/// The first of the columns for which `matches`.
template <class Predicate>
std::optional<std::size_t> Find(std::span<const StageColumn> columns, Predicate matches) {
  const auto found = std::ranges::find_if(columns, matches);
  if (found == columns.end()) return std::nullopt;
  return static_cast<std::size_t>(found - columns.begin());
}

std::optional<std::size_t> Named(std::span<const StageColumn> columns, std::string_view name) {
  return Find(columns, [&](const StageColumn& column) { return column.name == name; });
}

/// The lower half of a pts is enough: differences count modulo 2^32, so that a wrap of 33 bits
/// makes no difference.
std::optional<std::size_t> PtsOf(std::span<const StageColumn> columns) {
  const auto low = Named(columns, "pts.L");
  return low ? low : Named(columns, "pts");
}

/// For each character, whether it is a decimal (1) or a hexadecimal digit (2).
constexpr auto kDigits = [] {
  std::array<uint8_t, 256> digits{};
  for (std::size_t i = 0; i < 10; ++i) digits['0' + i] = 3;
  for (std::size_t i = 0; i < 6; ++i) digits['a' + i] = digits['A' + i] = 2;
  return digits;
}();

bool IsNumber(std::string_view field, bool hexadecimal) {
  if (field.starts_with('-')) field.remove_prefix(1);
  uint8_t all = hexadecimal ? 2 : 1;
  for (const char c : field) all &= kDigits[static_cast<uint8_t>(c)];
  return all != 0 && !field.empty();
}

/// What ends a row after its last value.
std::string_view LineEndOf(std::string_view row) {
  return row.substr(WithoutLineEnd(row).size());
}

uint64_t Mix(uint64_t hash, std::string_view text) {
  return (hash ^ std::hash<std::string_view>{}(text)) * 0x9e3779b97f4a7c15U;
}

}  // namespace

RowShape::RowShape(const Stage& stage)
    : module_(stage.module),
      columns_(stage.columns),
      frame_(*Find(columns_, [](const StageColumn& c) { return c.unit == Unit::kFrame; })),
      pts_(PtsOf(columns_)),
      clock_(Named(columns_, "90k_counter")),
      rate_(Find(columns_,
                 [](const StageColumn& c) { return c.unit == Unit::kMilliFramesPerSecond; })),
      marker_(Named(columns_, "marker")) {
  const bool hasChecksum =
      std::ranges::any_of(columns_, [](const StageColumn& c) { return c.unit == Unit::kChecksum; });
  const Unit shown = hasChecksum ? Unit::kChecksum : Unit::kBytes;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (module_ == MODULE_VO && VoutSettingInUse().maskItem[i] != 0) continue;
    if (columns_[i].unit == shown) content_ |= 1U << i;
    if (columns_[i].use == Use::kCompared && i != frame_ && i != pts_) others_ |= 1U << i;
  }
  others_ &= ~content_;
}

RowShape::Fields RowShape::Split(std::string_view text, std::span<std::string_view> fields) const {
  const std::size_t count = SplitRow(text, {',', ' '}, fields.first(columns_.size()));
  return fields.first(count);
}

/// True if all fields that have to be numbers are numbers.
bool RowShape::AreNumbers(Fields fields) const {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const StageColumn& column = columns_[i];
    if (column.notation == Notation::kText && column.unit == Unit::kNone) continue;
    const std::string_view field = i + 1 == fields.size() ? WithoutLineEnd(fields[i]) : fields[i];
    if (!IsNumber(field, column.notation == Notation::kHexadecimal)) return false;
  }
  return true;
}

uint32_t RowShape::Number(std::string_view field, std::size_t column) const {
  if (columns_[column].notation != Notation::kHexadecimal) {
    int64_t value = 0;
    std::from_chars(field.data(), field.data() + field.size(), value);
    return static_cast<uint32_t>(value);
  }
  uint32_t value = 0;
  std::from_chars(field.data(), field.data() + field.size(), value, 16);
  return value;
}

void RowShape::Parse(std::string_view text, FrameRow& row) const {
  std::array<std::string_view, kMaxItems> room;
  row.text = text;
  const Fields fields = Split(row.text, room);
  row.whole = fields.size() == columns_.size() && !IsPiece(text) && AreNumbers(fields);
  if (!row.whole) return;
  row.frame = ToNumber(fields[frame_]);
  if (pts_) row.pts = Number(fields[*pts_], *pts_);
  if (clock_) row.clock = Number(fields[*clock_], *clock_);
  row.markedDropped = marker_ && ToNumber(fields[*marker_]) < 0;
  row.content = row.identity = row.others = 0;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (HasBit(content_, i)) {
      row.content = Mix(row.content, WithoutLineEnd(fields[i]));
      if (row.identity == 0) row.identity = row.content;
    }
    if (HasBit(others_, i)) row.others = Mix(row.others, fields[i]);
  }
  if (EndsWithPts()) row.others = Mix(row.others, LineEndOf(text));
}

/// True if the stage's verifier finds no difference between the two values.
bool RowShape::IsSameValue(std::size_t column, std::string_view golden,
                           std::string_view dump) const {
  if (ComparedText(column, golden) == ComparedText(column, dump)) return true;
  if (column != rate_) return false;
  const int32_t rates[] = {ToNumber(golden), ToNumber(dump)};
  if (module_ == MODULE_OMXOUT) return std::abs(int64_t{rates[0]} - rates[1]) <= kOmxRateTolerance;
  return module_ == MODULE_SCALER &&
         WholeRate(rates[0], kScalerRateRounding) == WholeRate(rates[1], kScalerRateRounding);
}

/// Line ends belong to the last value if values are texts.
std::string_view RowShape::ComparedText(std::size_t column, std::string_view field) const {
  return columns_[column].notation == Notation::kText ? field : WithoutLineEnd(field);
}

ColumnDifference RowShape::Differences(const FrameRow& golden, const FrameRow& dump,
                                       bool comparesPts) const {
  std::array<std::string_view, kMaxItems> goldenRoom;
  std::array<std::string_view, kMaxItems> dumpRoom;
  const Fields goldenFields = Split(golden.text, goldenRoom);
  const Fields dumpFields = Split(dump.text, dumpRoom);
  ColumnDifference found;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const bool isCompared = HasBit(others_, i) || (comparesPts && i == pts_);
    if (!isCompared || IsSameValue(i, goldenFields[i], dumpFields[i])) continue;
    if (found.columns == 0) {
      found.goldenValue = WithoutLineEnd(goldenFields[i]);
      found.dumpValue = WithoutLineEnd(dumpFields[i]);
    }
    found.columns |= 1U << i;
  }
  if (found.columns == 0 && EndsWithPts() && LineEndOf(golden.text) != LineEndOf(dump.text))
    found.columns = 1U << kLineEndColumn;
  return found;
}

/// True if a line end belongs to the value of the pts, so that the verifier finds a difference.
bool RowShape::EndsWithPts() const {
  return pts_ && *pts_ + 1 == columns_.size() && columns_[*pts_].notation == Notation::kText;
}

int32_t RowShape::RateOf(const FrameRow& row) const {
  std::array<std::string_view, kMaxItems> fields;
  return rate_ ? ToNumber(Split(row.text, fields)[*rate_]) : 0;
}

uint32_t RowShape::ClockAt(std::string_view row, std::size_t offset) const {
  return Number(row.substr(offset), *clock_);
}

bool RowShape::ComparesFrameNumbers() const {
  return columns_[frame_].use == Use::kCompared;
}

SameRows::SameRows(const Stage& stage) : way_(Way::kItems), items_(FormatOf(stage.columns)) {
  const RowFormat format = FormatOf(stage.columns);
  if (!RowShape(stage).HasClock()) {
    way_ = Way::kWhole;
  } else if (format.hexadecimal == 0) {  // the counter is the second field
    way_ = Way::kSecondField;
  }
}

SameRow SameRows::Find(std::string_view golden, std::string_view sampleAhead) {
  switch (way_) {
    case Way::kSecondField:
      return SameButSecondField(golden, sampleAhead);
    case Way::kItems:
      return items_.Find(golden, sampleAhead);
    case Way::kWhole:
      break;
  }
  const bool isSame = golden.back() == '\n' && sampleAhead.starts_with(golden);
  return {isSame ? golden.size() : 0, golden};
}
