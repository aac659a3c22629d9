// Stages whose rows are aligned by frame number: OMX output, OMX input and DVO.
#include "VerifyRun.h"

namespace {

struct Case {
  const char* name;
  Lines golden;  // rows after the title and the warm-up
  Lines sample;
  Lines fields;
  std::string console;
};

std::string LastLines(int golden, int sample) {
  return "[muro:#] fread line1:" + std::to_string(golden) +
         " fail! maybe it's the end of file!\n[muro:#] fread line2:" + std::to_string(sample) +
         " fail! maybe it's the end of file!\n";
}

/// Each file starts with a title and `warmUp` rows, which differ in everything but their number.
void Check(Verifier verify, int warmUp, const std::vector<Case>& cases) {
  std::string golden = "title\n";
  std::string sample = "title\n";
  for (int i = 0; i < warmUp; ++i) {
    golden += std::to_string(i) + ", 1, 2, 3, 4, 60000, 6\n";
    sample += std::to_string(i) + ", 7, 8, 9, 8, 7, 6\n";
  }
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    const VerifyRun run =
        RunVerifier(verify, golden + Text(test.golden), sample + Text(test.sample));
    EXPECT_EQ(run.fields, test.fields);
    EXPECT_EQ(run.console, test.console);
    EXPECT_EQ(run.result.verifyStatus, 0);
  }
}

/// Every column of a golden row, with a missing dump value.
Lines Missing(const std::string& frame, const Lines& values) {
  Lines fields;
  for (std::size_t i = 0; i < values.size(); ++i) {
    fields.push_back(frame + " " + std::to_string(i) + " " + values[i] + " -1");
  }
  return fields;
}

TEST(VerifyOmxOutput, ComparesRowsAfterTheWarmUp) {
  Check(Verify_OMX_Output, 120,
        {{"never compared: counter and height",
          {"120, 5, 1920, 1080, 1, 60000, 100", "121, 6, 1920, 1080, 1, 60000, 200"},
          {"120, 8, 1920, 720, 1, 60000, 100", "121, 9, 1920, 720, 1, 60000, 200"},
          {},
          LastLines(122, 122)},
         {"the first mismatch ends the comparison",
          {"120, 5, 1920, 1080, 1, 60000, 100", "121, 6, 1920, 1080, 1, 60000, 200"},
          {"120, 5, 1920, 1080, 1, 60000, 101", "121, 6, 1920, 1080, 0, 60000, 201"},
          {"120 6 100 101"},
          "frame_no:120 field:0000002 error!\n"},
         {"a wrong width only causes a warning, other fields are counted",
          {"120, 5, 1920, 1080, 1, 60000, 100"},
          {"120, 5, 1280, 1080, 2, 50000, 101"},
          {"120 4 1 2", "120 5 60000 50000", "120 6 100 101"},
          "[muro] warning frame_no:120 golden_width:1920, sample_width:1280 \n"
          "[muro] warning frame_no:120 golden_fps:60000, sample_fps:50000 \n"
          "frame_no:120 field:000000e error!\n"},
         {"a rate may be off by 6000",
          {"120, 5, 1920, 1080, 1, 60000, 100", "121, 5, 1920, 1080, 1, 53999, 100"},
          {"120, 5, 1920, 1080, 1, 54000, 100", "121, 5, 1920, 1080, 1, 60000, 100"},
          {"121 5 53999 60000"},
          "[muro] warning frame_no:120 golden_fps:60000, sample_fps:54000 \n"
          "[muro] warning frame_no:121 golden_fps:53999, sample_fps:60000 \n"
          "frame_no:121 field:0000004 error!\n"},
         {"equal numbers are compared as text",
          {"120, 5, 1920, 1080, 1, 60000, 100"},
          {"0120, 5, 1920, 1080, 1, 60000, 100"},
          {"120 0 120 0120"},
          "frame_no:120 field:0000080 error!\n"},
         {"texts are truncated to 15 characters",
          {"120, 5, 1920, 1080, 123456789012345A, 60000, 100"},
          {"120, 5, 1920, 1080, 123456789012345B, 60000, 101"},
          {"120 6 100 101"},
          "frame_no:120 field:0000002 error!\n"}});
}

TEST(VerifyOmxOutput, AlignsByFrameNumber) {
  const std::string a = "120, 5, 1920, 1080, 1, 60000, 100";
  const std::string b = "121, 5, 1920, 1080, 1, 60000, 200";
  const std::string c = "122, 5, 1920, 1080, 1, 60000, 300";
  const Lines missingB = Missing("121", {"121", "5", "1920", "1080", "1", "60000", "200"});
  Check(
      Verify_OMX_Output, 120,
      {{"a dropped frame",
        {a, b, c},
        {a, c},
        missingB,
        "[muro:#] golden->frame_no:121, but sampe->frame_no:122 is larger!!\n" +
            LastLines(123, 122)},
       {"a repeated frame",
        {a, b, c},
        {a, a, b, c},
        missingB,
        "[muro:#] golden->frame_no:121, but sampe->frame_no:120 is less!!\n" + LastLines(123, 124)},
       {"a short sample ends the comparison after two reads",
        {a, b, c},
        {a},
        {},
        "[muro:#] fread line2:121 fail! maybe it's the end of file!\n"
        "[muro:#] fread line2:121 fail! maybe it's the end of file!\n"},
       {"golden is read alone to its end",
        {a, b},
        {a, c},
        missingB,
        "[muro:#] golden->frame_no:121, but sampe->frame_no:122 is larger!!\n"
        "[muro:#] fread golden no:122 fail!\n[muro:#] fread golden no:122 fail!\n"}});
}

TEST(VerifyOmxOutput, SkipsTheFirstTwoSecondsOfEachFile) {
  const auto row = [](int frame, int rate, int pts) {
    return std::to_string(frame) + ", 5, 1920, 1080, 1, " + std::to_string(rate) + ", " +
           std::to_string(pts);
  };
  // At 120 frames per second, frame 239 is the last one that may differ.
  Check(Verify_OMX_Output, 120,
        {{"different rows are skipped in each file",
          {row(238, 120000, 1), row(240, 120000, 4), row(241, 120000, 5)},
          {row(237, 120000, 2), row(239, 120000, 3), row(240, 120000, 4), row(241, 120000, 6)},
          {"241 6 5 6"},
          "frame_no:241 field:0000002 error!\n"},
         {"equal frames are skipped too",
          {row(125, 60000, 1), row(126, 120000, 2)},
          {row(125, 60000, 1), row(126, 120000, 2)},
          {},
          "[muro:#] fread golden no:122 fail!\n[muro:#] fread golden no:122 fail!\n"},
         {"a change of the rate restarts it",
          {row(125, 60000, 1), row(126, 120000, 2), row(240, 120000, 3)},
          {row(125, 60000, 1), row(126, 120000, 2), row(240, 120000, 4)},
          {"240 6 3 4"},
          "frame_no:240 field:0000002 error!\n"}});
}

TEST(VerifyOmxInput, CountsComparedRows) {
  std::string rows = "t\n";
  for (int i = 0; i < 25; ++i) rows += std::to_string(i) + ", 5, 700, 0, 100\n";
  EXPECT_EQ(RunVerifier(Verify_OMX_Input, rows, rows).result.verifyFrameCount, 15);
}

TEST(VerifyOmxOutput, RestOfALongTitleIsARow) {
  const std::string title(65, 't');
  const VerifyRun run = RunVerifier(Verify_OMX_Output, title + "\n", title.substr(1) + "\n");
  EXPECT_EQ(run.console,
            "[muro:#] fread line2:0 fail! maybe it's the end of file!\n" + LastLines(1, 0));
}

TEST(VerifyOmxInput, ComparesRowsAfterTheTenthAndReportsLaggingOnes) {
  const Lines missing = Missing("11", {"11", "5", "700", "0", "200"});
  Check(
      Verify_OMX_Input, 10,
      {{"all fields",
        {"10, 5, 700, 0, 100", "11, 5, 700, 0, 200"},
        {"10, 8, 700, 0, 100", "11, 9, 701, 1, 201"},
        {"11 2 700 701", "11 3 0 1", "11 4 200 201"},
        "frame_no:11 field:000000e error!\n"},
       {"a repeated frame",
        {"10, 5, 700, 0, 100", "11, 5, 700, 0, 200"},
        {"10, 5, 700, 0, 100", "10, 5, 700, 0, 100", "11, 5, 700, 0, 200"},
        missing,
        "[muro:#] golden->frame_no:11, but missing sampe. cur sample no:10\n" + LastLines(12, 13)},
       {"a dropped frame",
        {"10, 5, 700, 0, 100", "11, 5, 700, 0, 200", "12, 5, 700, 0, 300"},
        {"10, 5, 700, 0, 100", "12, 5, 700, 0, 300"},
        missing,
        "[muro:#] golden->frame_no:11, but sampe->frame_no:12 is larger!!\n" + LastLines(13, 12)},
       {"a different line end is a different text",
        {"10, 5, 700, 0, 100", ""},
        {"10, 5, 700, 0, 100\r", ""},
        {"10 4 100 100"},
        "frame_no:10 field:0000002 error!\n"}});
}

TEST(VerifyDvo, FindsTheStartAndStopsAtTheFirstMismatch) {
  const std::string start =
      "[muro:#] golden first check no:120\n[muro:#] sample first check no:120 (3 2)\n";
  const Lines golden = {"118, 2, 60000, 10, 0", "119, 2, 60000, 20, 0", "120, 2, 60000, 30, 0",
                        "121, 2, 60000, 40, 0", "122, 2, 60000, 50, 0"};
  const auto sample = [&](const Lines& behindStart) {
    Lines rows = {"119, 2, 60000, 99, 0", golden[2]};
    rows.insert(rows.end(), behindStart.begin(), behindStart.end());
    return rows;
  };
  const Lines missing = {"121 0 121 -1", "121 1 60000 -1", "121 2 40 -1"};
  Check(Verify_DVO, 0,
        {{"equal", golden, sample({golden[3], golden[4]}), {}, start + LastLines(5, 4)},
         {"pts",
          golden,
          sample({"121, 2, 60000, 41, 0"}),
          {"121 2 40 41"},
          start + "frame_no:121 field:0000002 error!\n"},
         {"rate of a frame of kind 2",
          golden,
          sample({"121, 2, 50000, 40, 0"}),
          {"121 1 60000 50000"},
          start + "frame_no:121 field:0000004 error!\n"},
         {"rate of another frame",
          {golden[2], "121, 1, 60000, 40, 0"},
          {golden[2], "121, 1, 50000, 40, 0"},
          {},
          "[muro:#] golden first check no:120\n[muro:#] sample first check no:120 (1 1)\n"
          "frame_no:121 field:0000004 error!\n"},
         {"number and rate",
          golden,
          sample({"0121, 2, 50000, 40, 0"}),
          {"121 0 121 0121", "121 1 60000 50000"},
          start + "frame_no:121 field:000000c error!\n"},
         {"marked as dropped",
          golden,
          sample({"121, 2, 60000, 40, -1"}),
          {"121 0 121 121"},
          start + "[muro:#] golden->frame_no:121, but sampe->frame_no is being drop!!\n"},
         {"dropped", golden, sample({golden[4]}), missing,
          start +
              "[muro:#] golden->frame_no:121, but missing sampe. cur sample no:122\n"
              "loss one line error\n" +
              LastLines(5, 3)},
         {"repeated",
          golden,
          sample({"120, 2, 60000, 31, 1", golden[3], golden[4]}),
          {"121 0 121 120", "121 1 60000 60000", "121 2 40 31"},
          start + "[muro:#] golden->frame_no:121, but sampe->frame_no:120 is repeat!!\n" +
              LastLines(5, 5)},
         {"equal rows marked as dropped",
          {golden[2], "121, 2, 60000, 40, -1"},
          {golden[2], "121, 2, 60000, 40, -1"},
          {"121 0 121 121"},
          "[muro:#] golden first check no:120\n[muro:#] sample first check no:120 (1 1)\n"
          "[muro:#] golden->frame_no:121, but sampe->frame_no is being drop!!\n"},
         {"repeated later",
          golden,
          sample({golden[3], "121, 2, 60000, 40, 1", golden[4]}),
          {"122 0 122 121", "122 1 60000 60000", "122 2 50 40"},
          start + "[muro:#] golden->frame_no:122, but sampe->frame_no:121 is repeat!!\n" +
              LastLines(5, 5)},
         {"the first frame is missing",
          golden,
          {golden[0], golden[3], golden[4]},
          {"120 0 120 -1", "120 1 60000 -1", "120 2 30 -1"},
          "[muro:#] golden first check no:120\n"
          "[muro:#] fread line2:3 fail! maybe it's the end of file!\n"
          "[muro:#] fread line2:3 fail! maybe it's the end of file!\n"}});
}

TEST(VerifyDvo, EndsOnlyAtTheEndOfStreamOfTheSample) {
  const std::string row = "120, 2, 60000, 30, 0\n";
  const std::string start =
      "[muro:#] golden first check no:120\n[muro:#] sample first check no:120 (1 1)\n";
  const std::string next = "121, 2, 60000, 40, 0\n";
  const std::string wrong = "121, 2, 60000, 41, 0\n";
  VerifyRun run = RunVerifier(Verify_DVO, "t\n" + row + next, "t\n" + row + "EOS\n" + wrong);
  EXPECT_EQ(run.console, start + "[muro:#] sample got EOS \n");
  EXPECT_EQ(run.fields, Lines{});
  run = RunVerifier(Verify_DVO, "t\n" + row + "EOS\n" + next, "t\n" + row + wrong);
  EXPECT_EQ(run.console, start + "[muro:#] golden got EOS \nframe_no:121 field:0000002 error!\n");
  EXPECT_EQ(run.fields, Lines{"121 2 40 41"});
}

TEST(VerifyDvo, DistinguishesTypeFromOrder) {
  const std::string golden = "t\n120, 2, 60000, 30, 0\n121, 2, 60000, 40, 0\n";
  // A row that is late, and not a repeat of the previous frame or not marked as one.
  for (const char* row : {"119, 2, 60000, 20, 1\n", "120, 2, 60000, 30, 0\n"}) {
    const VerifyRun run =
        RunVerifier(Verify_DVO, golden, "t\n120, 2, 60000, 30, 0\n" + (row + golden.substr(24)));
    EXPECT_TRUE(run.result.outOfOrder);
    EXPECT_EQ(run.fields, Lines{});
  }
  EXPECT_FALSE(RunVerifier(Verify_DVO, golden, golden).result.outOfOrder);
}

TEST(VerifyDvo, RestOfALongTitleIsNotAMalformedRow) {
  const std::string rows = "120, 2, 60000, 30, 0\n121, 2, 60000, 40, 0\nEOS\n";
  const std::string text = std::string(90, 't') + "\n" + rows;
  EXPECT_EQ(RunVerifier(Verify_DVO, text, text).fields, Lines{});
  const std::string broken = text.substr(0, text.size() - 8) + "\nEOS\n";
  EXPECT_EQ(RunVerifier(Verify_DVO, broken, broken).fields.size(), 3U);
}

}  // namespace
