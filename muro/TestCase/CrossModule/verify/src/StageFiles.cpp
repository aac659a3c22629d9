#include "StageFiles.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>

bool StageFiles::AreOpen(CM_Verify_Result& result, const char* goldenFailure,
                         const char* sampleFailure) const {
  const auto check = [&](const RowReader& file, int32_t bit, const char* failure) {
    if (file.IsOpen()) return true;
    result.addVerifyStatus(bit);
    if (failure != nullptr) std::puts(failure);
    return false;
  };
  const bool goldenIsOpen = check(golden, kStatusNoGolden, goldenFailure);
  const bool sampleIsOpen = check(sample, kStatusNoSample, sampleFailure);
  return goldenIsOpen && sampleIsOpen;
}

void ListColumns(CM_Verify_Result& result, std::span<const StageColumn> columns) {
  result.columnNames.clear();
  for (const StageColumn& column : columns) {
    if (column.use != Use::kUnlisted) result.columnNames.emplace_back(column.name);
  }
}

void AppendWrongField(CM_Verify_Result& result, int32_t frameNumber, std::size_t column,
                      std::string_view golden, std::string_view dump, HiddenDifference hidden) {
  auto& fields = result.wrongFields;
  // Most dumps have no wrong field, bad ones have very many: moving them costs more than reserving
  // memory.
  if (fields.size() == fields.capacity()) fields.reserve(fields.size() * 4);
  VerifyFailField& field = fields.emplace_back();
  field.frameNumber = frameNumber;
  field.columnIndex = static_cast<uint32_t>(column);
  field.goldenValue = WithoutLineEnd(golden);
  field.dumpValue = WithoutLineEnd(dump);
  field.hidden = hidden;
  if (hidden == HiddenDifference::kNone && golden != dump && field.goldenValue == field.dumpValue)
    field.hidden = HiddenDifference::kLineEnd;
}

ItemText::ItemText(int32_t value, bool hexadecimal, std::string_view hexPrefix) {
  char* end = text_;
  if (hexadecimal) end = std::copy(hexPrefix.begin(), hexPrefix.end(), end);
  end = hexadecimal ? std::to_chars(end, std::end(text_), static_cast<uint32_t>(value), 16).ptr
                    : std::to_chars(end, std::end(text_), value).ptr;
  length_ = static_cast<std::size_t>(end - text_);
}
