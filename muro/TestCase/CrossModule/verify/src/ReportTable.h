// Aligned tables of the report, for terminals of 136 columns.
#pragma once

#include <iosfwd>
#include <span>
#include <string>

#include "../../stages/src/VerifyResult.h"

namespace report_table {

// Colours of the console in addition to those of Ansi.h. They are removed from the report file.
inline constexpr char kHeadingColour[] = "\033[1;35m";
inline constexpr char kTitleColour[] = "\033[0;35m";
inline constexpr char kWarnColour[] = "\033[0;33m";

/// Represents a missing value.
inline constexpr char kNoData[] = "(no---data)";

enum class Align { kLeft, kRight };

/// A column is as wide as its longest possible value; the last one is not limited on the right.
struct Column {
  const char* heading;
  std::size_t width;
  Align align;
};

struct Cell {
  std::string text;
  const char* colour = nullptr;
};

/// Prints one line of cells, each in its column.
void PrintRow(std::ostream& out, std::span<const Column> columns, std::span<const Cell> cells);

/// Prints the columns' headings as one line.
void PrintHeadings(std::ostream& out, std::span<const Column> columns);

/// The summary table: the wrong fields of all stages, one line per stage.
inline constexpr Column kSummaryColumns[] = {
    {"Module", 8, Align::kLeft},
    {"Result", 9, Align::kLeft},
    {"FrameCount(Dump/Golden)", 23, Align::kRight},
    {"ErrCount(frame/field)", 21, Align::kRight},
    {"1stErrFrame", 11, Align::kRight},
    {"FieldName", 12, Align::kLeft},
    {"Value(Dump/Golen)", 17, Align::kLeft},
};

/// Name of the field's column.
std::string FieldName(const CM_Verify_Result& result, const VerifyFailField& field);

/// The field's dump and golden value, separated by "/".
std::string ValuePair(const VerifyFailField& field);

}  // namespace report_table
