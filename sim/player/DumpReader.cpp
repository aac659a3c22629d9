#include "DumpReader.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace player {

namespace {

/// Reads the values of a row. Returns false if it is malformed.
bool ReadRow(std::string_view row, const DumpFormat& format, FrameValues& values) {
  for (const Column& column : format.columns) {
    row.remove_prefix(std::min(row.find_first_not_of(", "), row.size()));
    const char* const end = row.data() + row.size();
    const auto [rest, error] =
        std::from_chars(row.data(), end, values.*column.value, column.hexadecimal ? 16 : 10);
    if (error != std::errc()) return false;
    row.remove_prefix(static_cast<std::size_t>(rest - row.data()));
  }
  return row.empty();
}

}  // namespace

std::vector<FrameValues> ReadDump(const std::filesystem::path& path, Stage stage) {
  const DumpFormat& format = FormatOf(stage);
  std::ifstream file(path);
  std::string row;
  if (!std::getline(file, row)) throw std::runtime_error("cannot read " + path.string());
  std::vector<FrameValues> rows;
  while (std::getline(file, row) && (format.lastRow.empty() || row != format.lastRow)) {
    if (!ReadRow(row, format, rows.emplace_back()))
      throw std::runtime_error(path.string() + ": malformed row '" + row + "'");
  }
  return rows;
}

}  // namespace player
