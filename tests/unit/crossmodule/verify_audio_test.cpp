// The audio verifier: skip, resynchronisation, comparison and the verdict.
#include "VerifyRun.h"

namespace {

const std::string kTitle = "frame_no,90k_counter,sample_rate,channel_no,pcm_data_crc,pts,delay\n";
const std::string kTag = "[Cross Module][Audio] ";

std::string Row(int frame, int pts, int crc = 7, int clock = 1) {
  return std::to_string(frame) + "," + std::to_string(clock) + ",48000,2," + std::to_string(crc) +
         "," + std::to_string(pts) + ",0\n";
}

/// A title, `skipped` rows whose last one is at the end of the first second, and `compared` rows,
/// of which the first `wrong` have a different checksum.
std::string Dump(int skipped, int compared, int wrong = 0, int clock = 1) {
  std::string text = kTitle;
  for (int i = 1; i <= skipped; ++i) text += Row(i, i < skipped ? i : 90000, 1000 + clock, clock);
  for (int i = 1; i <= compared; ++i) text += Row(100 + i, 90000 + i, i <= wrong ? 8 : 7, clock);
  return text;
}

/// The output after the skipped rows.
std::string Behind(const std::string& console) {
  const std::string last = "!!!\n";
  return console.substr(console.find(last) + last.size());
}

TEST(VerifyAudio, JudgesByErrorsAndSkippedRows) {
  struct Verdict {
    int goldenSkipped, testSkipped, compared, wrong;
    std::string text;
  };
  const std::string tooSmall = "Audio Test Failed, dump data too small ";
  const Verdict kVerdicts[] = {
      {11, 11, 5, 0, "Audio Test Passed"},
      {11, 1, 5, 0, "Audio Test Passed"},
      {1, 11, 0, 0, "Audio Test Passed"},
      {11, 11, 5, 2, "Audio Test Failed, err_count 2"},
      {3, 3, 5, 1, "Audio Test Failed, err_count 1"},
      {10, 10, 1000, 0, "Audio Test Failed, err_count 0"},
      {10, 10, 999, 0, "Audio Test Failed, checkcount too small 999"},
      {10, 9, 1000, 0, tooSmall + "(9,10)"},
      {9, 10, 5, 0, tooSmall + "(10,9)"},
      {0, 0, 0, 0, tooSmall + "(0,0)"},
  };
  for (const Verdict& verdict : kVerdicts) {
    SCOPED_TRACE(verdict.text);
    const VerifyRun run =
        RunVerifier(Verify_Audio, Dump(verdict.goldenSkipped, verdict.compared),
                    Dump(verdict.testSkipped, verdict.compared, verdict.wrong, 2));
    EXPECT_TRUE(run.console.ends_with("\n" + kTag + verdict.text + "\n")) << run.console;
    EXPECT_EQ(run.result.verifyStatus, verdict.text == "Audio Test Passed" ? 0 : 15);
    EXPECT_EQ(run.result.verifyFrameCount, verdict.compared);
    EXPECT_EQ(run.fields.size(), static_cast<std::size_t>(verdict.wrong));
  }
}

TEST(VerifyAudio, PrintsItsProgressAndEveryMismatch) {
  const std::string golden = Dump(11, 1) + "102,5,48000,2,255,90002,0\n";
  const std::string test = Dump(12, 1) + "777,6,44100,6,-1,90002,9\n";
  const VerifyRun run = RunVerifier(Verify_Audio, golden, test);
  EXPECT_EQ(run.console, kTag + "skip first row\n" + kTag + "skip first 1000ms golden data\n" +
                             kTag + "skip first 1000ms test data\n" + kTag +
                             "skip first 1000ms data End 90000,90000!!!\n" + kTag +
                             "data no matched\nframe, misc, rate, channel, crc, pts\n"
                             "102, 5, 48000, 2, 255, 90002\n777, 6, 44100, 6, -1, 90002\n" +
                             kTag + "Audio Test Failed, err_count 1\n");
  EXPECT_EQ(run.fields, (Lines{"102 4 ff ffffffff", "102 2 bb80 ac44", "102 3 2 6"}));
}

TEST(VerifyAudio, ResynchronisesByPts) {
  const std::string resyncGolden = kTag + "resync golden PTS ";
  const std::string resyncTest = kTag + "resync test PTS ";
  const std::string passed = kTag + "Audio Test Passed\n";
  const std::string start = Dump(11, 0);
  struct Case {
    std::string golden, test, console;
    int compared;
  };
  const Case kCases[] = {
      {Row(1, 90100) + Row(2, 90200) + Row(3, 90300), Row(1, 90100) + Row(3, 90300),
       resyncGolden + "90300\n" + passed, 2},
      {Row(2, 90200) + Row(3, 90300), Row(0, 90000) + Row(1, 90100) + Row(2, 90200) + Row(3, 90300),
       resyncTest + "90100\n" + resyncTest + "90200\n" + passed, 2},
      // No rows are left to search: the current rows are compared.
      {Row(1, 90100) + Row(2, 90200, 9), Row(1, 90100) + Row(4, 90400),
       kTag +
           "data no matched\nframe, misc, rate, channel, crc, pts\n"
           "2, 1, 48000, 2, 9, 90200\n4, 1, 48000, 2, 7, 90400\n" +
           kTag + "Audio Test Failed, err_count 1\n",
       2},
      // A malformed row ends the comparison and is an error; a blank line is not a row.
      {Row(1, 90100) + Row(2, 90200), Row(1, 90100) + "2,1,48000\n",
       kTag + "Audio Test Failed, err_count 1\n", 1},
      {Row(1, 90100) + "2,1,48000\n" + Row(3, 90300), Row(1, 90100) + "2,1,48000\n" + Row(3, 90300),
       kTag + "Audio Test Failed, err_count 1\n", 1},
      {Row(1, 90100) + "\n" + Row(2, 90200) + "\n", Row(1, 90100) + Row(2, 90200), passed, 2},
  };
  for (const Case& test : kCases) {
    const VerifyRun run = RunVerifier(Verify_Audio, start + test.golden, start + test.test);
    EXPECT_EQ(Behind(run.console), test.console);
    EXPECT_EQ(run.result.verifyFrameCount, test.compared);
  }
}

TEST(VerifyAudio, CountsRowsWithoutPtsAsSkippedButNotResynchronisedOnes) {
  const auto verdict = [](const std::string& golden, const std::string& test) {
    const VerifyRun run = RunVerifier(Verify_Audio, Dump(9, 0) + golden, Dump(9, 0) + test);
    return run.console.substr(run.console.rfind(kTag) + kTag.size());
  };
  const std::string row = Row(1, 90100);
  const std::string tooSmall = "Audio Test Failed, dump data too small ";
  EXPECT_EQ(verdict(Row(0, 0) + row, row), tooSmall + "(9,10)\n");
  EXPECT_EQ(verdict(Row(0, 0) + row, Row(0, 0) + row),
            "Audio Test Failed, checkcount too small 1\n");
  EXPECT_EQ(verdict(row, Row(0, 0) + Row(0, 0) + row), "Audio Test Passed\n");
  EXPECT_EQ(verdict(row + Row(2, 90200) + Row(3, 90300), Row(3, 90300)), tooSmall + "(9,9)\n");
}

TEST(VerifyAudio, EndlessFirstSecondSkipsTheWholeFile) {
  std::string text = kTitle;
  for (int i = 0; i < 20; ++i) text += Row(i, i);
  const VerifyRun run = RunVerifier(Verify_Audio, text, text);
  EXPECT_EQ(Behind(run.console), kTag + "Audio Test Passed\n");
  EXPECT_NE(run.console.find("End 19,19!!!"), std::string::npos);
}

}  // namespace
