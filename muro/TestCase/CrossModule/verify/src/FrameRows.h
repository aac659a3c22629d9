// Rows of dumps for the analysis of frames: the content of a row, its time, and its further values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "../../stages/src/Stage.h"
#include "RowReader.h"

/// One parsed row.
struct FrameRow {
  std::string text;       // with its line end
  int64_t place = 0;      // number of filled rows before it in its file
  bool whole = false;     // false: malformed, and the members below are not set
  int32_t frame = 0;      // number
  uint32_t pts = 0;       // 0 if the stage has none
  uint32_t clock = 0;     // 90 kHz counter; 0 if the stage has none
  uint64_t content = 0;   // hash of all checksums; of the size if there are none
  uint64_t identity = 0;  // hash of the first checksum, the stage's input
  uint64_t others = 0;    // hash of all further compared columns
  bool markedDropped = false;
};

/// True if two whole rows show the same content at the same time.
inline bool ShowSame(const FrameRow& a, const FrameRow& b) {
  return a.whole && b.whole && a.pts == b.pts && a.content == b.content;
}

/// In a `ColumnDifference`, represents different line ends.
inline constexpr std::size_t kLineEndColumn = 31;

/// The columns in which two rows differ (bit n: column n), and the values of the first one.
struct ColumnDifference {
  uint32_t columns = 0;
  std::string goldenValue = {};
  std::string dumpValue = {};
};

/// How to read a stage's rows, derived from the stage's columns.
class RowShape {
 public:
  explicit RowShape(const Stage& stage);

  /// Parses a row. Does not change `place`.
  void Parse(std::string_view text, FrameRow& row) const;

  /// True for the row that marks the end of a stream and shows nothing.
  static bool IsEndOfStream(std::string_view text) { return text.starts_with("EOS"); }

  /// The compared columns, except the frame number, in which two whole rows differ; includes the
  /// pts if `comparesPts`.
  ColumnDifference Differences(const FrameRow& golden, const FrameRow& dump,
                               bool comparesPts) const;

  /// Thousandths of a frame per second; 0 if the stage has no such column.
  int32_t RateOf(const FrameRow& row) const;

  /// Reads the counter at an offset of the row.
  uint32_t ClockAt(std::string_view row, std::size_t offset) const;

  MODULE_TYPE Module() const { return module_; }
  bool HasPts() const { return pts_.has_value(); }
  bool HasClock() const { return clock_.has_value(); }
  bool HasContent() const { return content_ != 0; }
  bool ComparesFrameNumbers() const;
  std::size_t FrameColumn() const { return frame_; }
  std::span<const StageColumn> Columns() const { return columns_; }

 private:
  using Fields = std::span<const std::string_view>;

  Fields Split(std::string_view text, std::span<std::string_view> fields) const;
  bool AreNumbers(Fields fields) const;
  bool EndsWithPts() const;
  bool IsSameValue(std::size_t column, std::string_view golden, std::string_view dump) const;
  uint32_t Number(std::string_view field, std::size_t column) const;
  std::string_view ComparedText(std::size_t column, std::string_view field) const;

  MODULE_TYPE module_;
  std::span<const StageColumn> columns_;
  std::size_t frame_;
  std::optional<std::size_t> pts_, clock_, rate_, marker_;
  uint32_t content_ = 0;  // bit n: column n
  uint32_t others_ = 0;
};

/// Finds rows of a dump that equal golden's except for the counter, without parsing them.
class SameRows {
 public:
  explicit SameRows(const Stage& stage);

  /// The sample's row; length 0 if it has to be parsed. `counter` is the position of the counter.
  SameRow Find(std::string_view golden, std::string_view sampleAhead);

 private:
  enum class Way { kWhole, kSecondField, kItems };

  Way way_;
  SameItems items_;
};
