// The golden file and the dump of a stage, and functions that add their differences to the result.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "../../stages/src/Stage.h"
#include "../../stages/src/VerifyResult.h"
#include "RowReader.h"

/// Both files of a stage, opened for reading, golden first.
struct StageFiles {
  StageFiles(const std::string& goldenPath, const std::string& samplePath)
      : golden(goldenPath), sample(samplePath) {}

  /// True if both are open. Otherwise sets the status bits and prints the line (unless null) of
  /// each file that is not.
  bool AreOpen(CM_Verify_Result& result, const char* goldenFailure,
               const char* sampleFailure) const;

  RowReader golden;
  RowReader sample;
};

/// The number format of a stage's rows.
constexpr RowFormat FormatOf(std::span<const StageColumn> columns) {
  RowFormat format{columns.size(), 0, 0};
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].notation == Notation::kHexadecimal) format.hexadecimal |= 1U << i;
    if (columns[i].unit == Unit::kTicks90k && columns[i].use == Use::kIgnored)
      format.counterItem = i;
  }
  return format;
}

/// Sets the column names that the result's wrong fields refer to.
void ListColumns(CM_Verify_Result& result, std::span<const StageColumn> columns);

/// Appends a wrong field; line ends do not become part of the values. `hidden` gives the difference
/// if the values are equal; different line ends are detected here.
void AppendWrongField(CM_Verify_Result& result, int32_t frameNumber, std::size_t column,
                      std::string_view golden, std::string_view dump,
                      HiddenDifference hidden = HiddenDifference::kNone);

/// The text of a number in a wrong field: as "%d" or, after the prefix, as "%x" prints it.
class ItemText {
 public:
  ItemText(int32_t value, bool hexadecimal, std::string_view hexPrefix = {});
  operator std::string_view() const { return {text_, length_}; }

 private:
  char text_[16];
  std::size_t length_;
};
