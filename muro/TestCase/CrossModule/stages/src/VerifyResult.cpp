#include "VerifyResult.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "CrossModuleLog.h"

namespace {

/// Removes every `mark` together with the character after it.
void EraseLineEnds(std::string& text, char mark) {
  for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at))
    text.erase(at, 2);
}

void CleanValue(std::string& text) {
  EraseLineEnds(text, '\r');
  EraseLineEnds(text, '\n');
}

void KeepColumnKnown(VerifyFailField& field, std::size_t columnCount) {
  if (field.columnIndex < columnCount) return;
  CmLog("Data_Preprocessing") << "ERROR: fieldName.size() too small!!   fieldName.size()= "
                              << columnCount << "idx=" << field << ", change fieldIdx to 0\n";
  field.columnIndex = 0;
}

bool HasRow(const std::vector<WrongFrame>& rows, int32_t frameNumber) {
  return frameNumber >= 0 && static_cast<std::size_t>(frameNumber) < rows.size();
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const VerifyFailField& field) {
  const std::ios_base::fmtflags flags = out.flags();
  out << std::right << std::dec << " frame " << std::setw(5) << field.frameNumber
      << ",field:" << std::setw(5) << field.columnIndex << ",dump:" << std::setw(10)
      << Printable(field.dumpValue) << ",golden:" << std::setw(10) << Printable(field.goldenValue);
  out.flags(flags);
  return out;
}

void CM_Verify_Result::createWrongFrame() {
  if (!wrongFrames.empty()) return;
  const int32_t last = std::max({sampleFrameCount, goldenFrameCount, 0});
  wrongFrames.resize(static_cast<std::size_t>(last) + 1);
}

int32_t CM_Verify_Result::Data_Preprocessing() {
  wrongFrameTotal = 0;
  const VerifyFailField* previous = nullptr;
  for (VerifyFailField& field : wrongFields) {
    KeepColumnKnown(field, columnNames.size());
    CleanValue(field.goldenValue);
    CleanValue(field.dumpValue);
    const bool sameFrame = previous != nullptr && field.frameNumber == previous->frameNumber;
    if (!sameFrame) ++wrongFrameTotal;
    if (!HasRow(wrongFrames, field.frameNumber)) {
      CmLog("Data_Preprocessing") << "ERROR: Array size too small!   fremeNo:" << field.frameNumber
                                  << ", module:" << Module_Type_To_String_Simple(moduleType)
                                  << '\n';
      break;
    }
    WrongFrame& row = wrongFrames[static_cast<std::size_t>(field.frameNumber)];
    if (!sameFrame) row.firstField = static_cast<int32_t>(&field - wrongFields.data());
    ++row.fieldCount;
    previous = &field;
  }
  return wrongFrameTotal;
}

void CM_Verify_Result::Print_Column_Name(std::ostream& out) const {
  out << Module_Type_To_String(moduleType);
  for (std::size_t i = 0; i < columnNames.size(); ++i)
    out << (i == 0 ? " " : ", ") << std::to_string(i) << ':' << columnNames[i];
  out << '\n';
}
