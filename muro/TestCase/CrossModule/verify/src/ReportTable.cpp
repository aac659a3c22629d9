#include "ReportTable.h"

#include <algorithm>
#include <ostream>
#include <vector>

#include "../../stages/src/CrossModuleLog.h"
#include "Ansi.h"

namespace report_table {

namespace {

constexpr char kGap[] = "  ";

std::string Padding(const std::string& text, const Column& column) {
  return std::string(column.width - std::min(column.width, text.size()), ' ');
}

void PrintCell(std::ostream& out, const Column& column, const Cell& cell) {
  if (column.align == Align::kRight) out << Padding(cell.text, column);
  if (cell.colour != nullptr) out << cell.colour;
  out << cell.text;
  if (cell.colour != nullptr) out << ansi::kReset;
}

std::string OrNoData(const std::string& value) {
  return value.empty() ? kNoData : Printable(value);
}

}  // namespace

void PrintRow(std::ostream& out, std::span<const Column> columns, std::span<const Cell> cells) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    PrintCell(out, columns[i], cells[i]);
    const bool last = i + 1 == columns.size();
    if (!last && columns[i].align == Align::kLeft) out << Padding(cells[i].text, columns[i]);
    out << (last ? "\n" : kGap);
  }
}

void PrintHeadings(std::ostream& out, std::span<const Column> columns) {
  std::vector<Cell> headings;
  for (const Column& column : columns) headings.push_back({column.heading});
  PrintRow(out, columns, headings);
}

std::string FieldName(const CM_Verify_Result& result, const VerifyFailField& field) {
  if (field.columnIndex >= result.columnNames.size()) return kNoData;
  return result.columnNames[field.columnIndex];
}

std::string ValuePair(const VerifyFailField& field) {
  const bool noRow = field.columnIndex == 0 && field.dumpValue == kMissingValue;
  return (noRow ? kNoData : OrNoData(field.dumpValue)) + "/" + OrNoData(field.goldenValue);
}

}  // namespace report_table
