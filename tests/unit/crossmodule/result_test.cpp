// Processing of a stage's wrong fields: cleaned, counted by frame, shown in the summary.
#include <gtest/gtest.h>

#include <functional>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "Scripted.h"
#include "VerifyResult.h"

namespace {

using scripted::Play;

constexpr char kLog[] = "\033[1;33m[CrossModule][Data_Preprocessing] \033[0;37m";

CM_Verify_Result Result(MODULE_TYPE module, std::vector<VerifyFailField> fields,
                        int32_t frameCount = 600) {
  CM_Verify_Result result(module);
  result.columnNames = {"frame_no", "width", "crc"};
  result.wrongFields = std::move(fields);
  result.sampleFrameCount = result.goldenFrameCount = frameCount;
  result.framesAreCounted = true;
  result.coverage.compared = frameCount;
  result.createWrongFrame();
  return result;
}

std::string Table(const std::vector<WrongFrame>& rows) {
  std::string text;
  for (std::size_t frame = 0; frame < rows.size(); ++frame) {
    if (rows[frame].fieldCount != 0)
      text += std::to_string(frame) + ":" + std::to_string(rows[frame].fieldCount) + "@" +
              std::to_string(rows[frame].firstField) + " ";
  }
  return text;
}

TEST(VerifyFailField, KeepsItsWidthsOnALeftAlignedStream) {
  std::ostringstream out;
  out << std::left << std::hex;
  out << VerifyFailField{300, 12, "1a2b3c4d", "1a2b3c4e"} << std::setw(4) << 10;
  EXPECT_EQ(out.str(), " frame   300,field:   12,dump:  1a2b3c4e,golden:  1a2b3c4da   ");
}

TEST(VerifyResult, IndexesItsWrongFieldsByFrame) {
  const struct {
    const char* what;
    std::vector<VerifyFailField> fields;
    int32_t total;
    const char* table;
    const char* message;
  } kCases[] = {
      {"nothing wrong", {}, 0, "", ""},
      {"two fields of a frame",
       {{5, 1, "a", "b"}, {5, 2, "a", "b"}, {6, 0, "a", "b"}},
       2,
       "5:2@0 6:1@2 ",
       ""},
      {"a frame that occurs again",
       {{5, 1, "", ""}, {6, 1, "", ""}, {5, 2, "", ""}},
       3,
       "5:2@2 6:1@1 ",
       ""},
      {"the last frame of the table", {{10, 1, "", ""}}, 1, "10:1@0 ", ""},
      {"a frame beyond the table",
       {{3, 1, "", ""}, {11, 1, "", ""}, {4, 1, "", ""}},
       2,
       "3:1@0 ",
       "ERROR: Array size too small!   fremeNo:11, module:VDEC\n"},
      {"a negative frame",
       {{-1, 1, "", ""}},
       1,
       "",
       "ERROR: Array size too small!   fremeNo:-1, module:VDEC\n"},
      {"a column beyond the last",
       {{4, 3, "a", "b"}},
       1,
       "4:1@0 ",
       "ERROR: fieldName.size() too small!!   fieldName.size()= 3idx= frame     4,field:    3,"
       "dump:         b,golden:         a, change fieldIdx to 0\n"},
  };
  for (const auto& test : kCases) {
    CM_Verify_Result result = Result(MODULE_VDEC, test.fields, 10);
    const auto run = Play("", [&] { return result.Data_Preprocessing(); });
    EXPECT_EQ(run.result, test.total) << test.what;
    EXPECT_EQ(result.wrongFrameTotal, test.total) << test.what;
    EXPECT_EQ(Table(result.wrongFrames), test.table) << test.what;
    EXPECT_EQ(run.output, test.message[0] == '\0' ? "" : kLog + std::string(test.message))
        << test.what;
  }
}

TEST(VerifyResult, RemovesLineEndsFromValues) {
  const struct {
    const char* value;
    const char* clean;
  } kValues[] = {{"1080\r\n", "1080"}, {"1080\n", "1080"}, {"a\r", "a"},   {"\n\nb", "b"},
                 {"a\rXb\nYc", "abc"}, {"1080", "1080"},   {"\r\r\n", ""}, {"", ""}};
  for (const auto& value : kValues) {
    CM_Verify_Result result = Result(MODULE_DVO, {{1, 2, value.value, value.value}});
    result.Data_Preprocessing();
    const std::string expected = value.clean;
    EXPECT_EQ(result.wrongFields[0].goldenValue, expected);
    EXPECT_EQ(result.wrongFields[0].dumpValue, expected);
  }
}

TEST(VerifyResult, CountsTheSameWhenPrintedAgain) {
  CM_Verify_Result result = Result(MODULE_VO, {{7, 1, "a", "b"}, {7, 2, "a", "b"}});
  for (int printing = 0; printing < 2; ++printing) {
    result.createWrongFrame();
    result.createWrongFrame();
    EXPECT_EQ(result.Data_Preprocessing(), 1);
    EXPECT_EQ(Table(result.wrongFrames), "7:2@0 ");
    result.deleteWrongFrame();
  }
}

TEST(VerifyResult, ShowsTheFirstWrongFieldInTheSummary) {
  const auto with = [](CM_Verify_Result result, const std::function<void(CM_Verify_Result&)>& set) {
    result.Data_Preprocessing();
    set(result);
    return result;
  };
  const auto nothing = [](CM_Verify_Result&) {};
  const CM_Verify_Result kResults[] = {
      with(Result(MODULE_OMXIN, {}), nothing),
      with(Result(MODULE_OMXOUT, {{300, 0, "300", "-1"}, {300, 1, "1920", "-1"}}), nothing),
      with(Result(MODULE_VDEC, {{300, 2, "1a2b3c4d", "1a2b3c4e"}, {301, 2, "7", "8"}}), nothing),
      with(Result(MODULE_DVO, {}), [](auto& result) { result.sampleFrameCount = 590; }),
      with(Result(MODULE_VO, {}), [](auto& result) { result.sampleFrameCount = 0; }),
      with(Result(MODULE_SCALER, {}), [](auto& result) { result.columnNames.clear(); }),
      with(Result(MODULE_AUDIO, {}), [](auto& result) { result.verifyStatus = 15; }),
      with(Result(MODULE_DVO, {{4, 1, "7\033[2J", "-1"}}),
           [](auto& result) { result.outOfOrder = true; }),
  };
  std::ostringstream out;
  out << std::left << std::hex << std::setfill('*');
  std::string verdicts;
  for (const CM_Verify_Result& result : kResults)
    verdicts += result.PrintSimpleTable(out) ? 'P' : 'f';
  EXPECT_EQ(verdicts, "Pfffffff");
  EXPECT_EQ(out.str(),
            "[OMXIN]   \033[1;32mPASS\033[m                       600/600                    0/0"
            "            -  -             (no---data)\n"
            "[OMXOUT]  \033[0;32;31mFAIL!\033[m                      600/600                    1/2"
            "          300  frame_no      (no---data)/300\n"
            "[VDEC]    \033[0;32;31mFAIL!\033[m                      600/600                    2/2"
            "          300  crc           1a2b3c4e/1a2b3c4d\n"
            "[DVO]     \033[0;33mFrameDrop\033[m                  590/600                    0/0"
            "            -  -             (no---data)\n"
            "[VO]      \033[0;32;31mFAIL!\033[m              (no---data)/600                    0/0"
            "            -  -             (no---data)  no dumped frames\n"
            "[Scaler]  \033[0;32;31mFAIL!\033[m                      600/600                    0/0"
            "            -  -             (no---data)  not verified\n"
            "[Audio]   \033[0;32;31mFAIL!\033[m                      600/600                    0/0"
            "            -  -             (no---data)  too little to compare\n"
            "[DVO]     \033[0;32;31mFAIL!\033[m                      600/600                    1/1"
            "            4  width         -1/7\\x1b[2J  frames out of order\n");
}

}  // namespace
