// Records passed to the HAL by value: a caller compiled as C and functions compiled as C++ must
// agree on their layout and on how they are passed.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "CCaller.h"
#include "k2v/vbe.h"
#include "k2v/vsc.h"

namespace {

/// Argument of the last call of a HAL function.
struct Taken {
  std::string function;
  uint32_t window;
  std::vector<uint8_t> record;
} taken;

constexpr int kAnswer = -0x01020304;

template <typename Record>
int Take(const char* function, const Record& record, uint32_t window = kWindowFromC) {
  const auto* const bytes = reinterpret_cast<const uint8_t*>(&record);
  taken = {function, window, {bytes, bytes + sizeof record}};
  return kAnswer;
}

}  // namespace

int K2V_RHAL_VSC_Connect(__K2V_VIDEO_WID_T wid, K2V_VSC_INPUT_SRC_T source) {
  return Take(__func__, source, wid);
}

int K2V_RHAL_VSC_Disconnect(__K2V_VIDEO_WID_T wid, K2V_VSC_INPUT_SRC_T source) {
  return Take(__func__, source, wid);
}

int K2V_RHAL_VSC_SetInputRegion(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T region) {
  return Take(__func__, region, wid);
}

int K2V_RHAL_VSC_SetOutputRegion(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T region) {
  return Take(__func__, region, wid);
}

int K2V_RHAL_VBE_DISP_Initialize(K2V_VBE_PANEL_INFO_T panel) {
  return Take(__func__, panel);
}

namespace {

struct RecordRow {
  RecordLayout told;
  RecordLayout inCpp;
};

struct FieldRow {
  FieldLayout told;
  FieldLayout inCpp;
};

#define HAL_RECORD(type, size, alignment) \
  {{#type, size, alignment}, {#type, sizeof(type), alignof(type)}},
#define HAL_FIELD(type, field, offset, size)
constexpr RecordRow kRecords[] = {
#include "HalRecords.def"
};
#undef HAL_RECORD
#undef HAL_FIELD

#define HAL_RECORD(type, size, alignment)
#define HAL_FIELD(type, field, offset, size) \
  {{#type, #field, offset, size}, {#type, #field, offsetof(type, field), sizeof(type::field)}},
constexpr FieldRow kFields[] = {
#include "HalRecords.def"
};
#undef HAL_RECORD
#undef HAL_FIELD

std::string Text(const RecordLayout& layout) {
  return std::string(layout.type) + ": " + std::to_string(layout.bytes) + " bytes, aligned to " +
         std::to_string(layout.alignment);
}

std::string Text(const FieldLayout& layout) {
  return std::string(layout.type) + "." + layout.name + ": " + std::to_string(layout.bytes) +
         " bytes at " + std::to_string(layout.offset);
}

TEST(RecordsByValue, HaveTheSameLayoutInBothLanguages) {
  const RecordLayout* recordInC = kRecordsInC;
  for (const RecordRow& row : kRecords) {
    EXPECT_EQ(Text(row.inCpp), Text(row.told));
    EXPECT_EQ(Text(*recordInC++), Text(row.told));
  }
  const FieldLayout* fieldInC = kFieldsInC;
  for (const FieldRow& row : kFields) {
    EXPECT_EQ(Text(row.inCpp), Text(row.told));
    EXPECT_EQ(Text(*fieldInC++), Text(row.told));
  }
}

TEST(RecordsByValue, ArePassedCompletelyFromC) {
  for (const CCall& call : kCallsFromC) {
    EXPECT_EQ(call.call(), kAnswer) << call.function;
    EXPECT_EQ(taken.function, call.function);
    EXPECT_EQ(taken.window, uint32_t{kWindowFromC}) << call.function;
    for (const FieldRow& row : kFields) {
      if (std::strcmp(row.told.type, call.type) != 0) continue;
      for (std::size_t i = row.told.offset; i < row.told.offset + row.told.bytes; ++i)
        EXPECT_EQ(taken.record.at(i), i + 1) << call.function << ' ' << Text(row.told);
    }
  }
}

using Matches = std::vector<std::smatch>;

Matches Find(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  return {std::sregex_iterator(text.begin(), text.end(), regex), {}};
}

std::string HeadersText() {
  std::ostringstream text;
  for (const auto& header : std::filesystem::directory_iterator(HAL_HEADERS))
    text << std::ifstream(header.path()).rdbuf();
  return std::regex_replace(text.str(), std::regex("//[^\n]*"), "");
}

/// "FUNCTION TYPE" for every record passed by value to a function of the HAL's headers, "FUNCTION
/// returns TYPE" for every record returned by value.
std::set<std::string> PassedByHeaders() {
  const std::string text = HeadersText();
  std::set<std::string> records;
  for (const std::smatch& match : Find(text, "(?:\\}\\s*(\\w+);)|(?:K2V_RECORD\\((\\w+)\\))"))
    records.insert(match.str(1) + match.str(2));
  std::set<std::string> passed;
  for (const std::smatch& prototype : Find(text, "(\\w+)\\s+(K2V_\\w+)\\(([^;{}()]*)\\);")) {
    const std::string function = prototype.str(2);
    if (records.contains(prototype.str(1)))
      passed.insert(function + " returns " + prototype.str(1));
    const std::string parameters = prototype.str(3);
    for (const std::smatch& parameter : Find(parameters, "(\\w+)\\s+\\w+\\s*(?:,|$)"))
      if (records.contains(parameter.str(1))) passed.insert(function + ' ' + parameter.str(1));
  }
  return passed;
}

TEST(RecordsByValue, AreAllTested) {
  std::set<std::string> tried;
  for (const CCall& call : kCallsFromC) tried.insert(std::string(call.function) + ' ' + call.type);
  EXPECT_EQ(PassedByHeaders(), tried);
}

}  // namespace
