// Stages whose rows consist of numeric columns: VDEC, VO and Scaler.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <regex>
#include <sstream>

#include "ColumnCompare.h"
#include "DumpGenerator.h"
#include "StageAnalysis.h"
#include "VerifyRun.h"

namespace {

using Values = std::vector<std::string>;

std::string Join(const Values& values) {
  std::string row = values[0];
  for (std::size_t i = 1; i < values.size(); ++i) row.append(1, ',').append(values[i]);
  return row + "\n";
}

/// A row of zeros with its number, its rate and other values by column.
std::string Row(std::size_t columns, int frame, const std::map<std::size_t, std::string>& values) {
  Values row(columns, "0");
  row[0] = std::to_string(frame);
  for (const auto& [column, value] : values) row[column] = value;
  return Join(row);
}

std::string Vdec(int frame, const std::map<std::size_t, std::string>& values = {}) {
  return Row(24, frame, values);
}

const std::string kVdecTitle = "frame_no, crc, MaxFALL\n";
const std::string kVdecTitles =
    "DumpInfo(VDEC) - File1 title string end!\nDumpInfo(VDEC) - File2 title string end!\n";

TEST(VerifyVdec, ComparesEveryColumnButTheCounter) {
  const VerifyRun run = RunVerifier(
      Verify_VDEC,
      kVdecTitle + Vdec(7, {{6, "100"}}) + Vdec(8, {{3, "00ff"}, {5, "010"}}) +
          Vdec(9, {{3, "1b184f64"}, {23, "400"}}) + Vdec(10, {{1, "-5"}}),
      kVdecTitle + Vdec(7, {{6, "99999"}}) + Vdec(8, {{3, "0xFF"}, {5, "10"}, {6, "3"}}) +
          Vdec(11, {{3, "1b184f65"}, {6, "4"}, {23, "401"}}) + Vdec(10, {{1, "-6"}}));
  EXPECT_EQ(run.fields, (Lines{"9 0 9 11", "9 3 1b184f64 1b184f65", "9 23 400 401", "10 1 -5 -6"}));
  EXPECT_EQ(run.console, kVdecTitles +
                             "vdec info compare frame 7 PASS !!!\n"
                             "vdec info compare frame 8 PASS !!!\n"
                             "vdec info compare fail in frame 9, frame_no ,val=9 b \n"
                             "vdec info compare fail in frame 9, crc ,val=1b184f64 1b184f65 \n"
                             "vdec info compare fail in frame 9, max_fall ,val=190 191 \n"
                             "vdec info compare frame 9 Fail 3 item !!!\n"
                             "vdec info compare fail in frame 10, width ,val=fffffffb fffffffa \n"
                             "vdec info compare frame 10 Fail 1 item !!!\n");
}

TEST(VerifyVdec, EndsWithTheShorterFileAndAtAMalformedRow) {
  struct Case {
    const char* name;
    std::string golden, sample;
    Lines fields;
    int32_t compared;
  };
  const std::string good = Vdec(1) + Vdec(2) + Vdec(3);
  const std::string shortRow = "2,0,0\n";
  const Case kCases[] = {
      {"sample is shorter", good, Vdec(1), {}, 1},
      {"golden is shorter", Vdec(1), good, {}, 1},
      {"blank lines", good, Vdec(1) + "\n  \n" + Vdec(2) + "\r\n" + Vdec(3), {}, 3},
      {"other line ends, none in the last row",
       good,
       Vdec(1).substr(0, 47) + "\r\n" + Vdec(2) + Vdec(3).substr(0, 47),
       {},
       3},
      {"too few items", good, Vdec(1) + shortRow + Vdec(4), {"2 3 0 -1"}, 2},
      {"too few on both sides", Vdec(1) + shortRow, Vdec(1) + shortRow, {"2 3 -1 -1"}, 2},
      {"too many items", good, Vdec(1) + "2,9," + Vdec(0), {"2 1 0 9", "2 23 0 -1"}, 2},
      {"not a number", good, Vdec(1) + Vdec(2, {{4, "x"}}) + Vdec(4), {"2 4 0 -1"}, 2},
      {"equal rows without a number", Vdec(1, {{9, "x"}}), Vdec(1, {{9, "x"}}), {"1 9 -1 -1"}, 1},
      {"letters outside the checksum", Vdec(1, {{9, "a"}}), Vdec(1, {{9, "a"}}), {"1 9 -1 -1"}, 1},
      {"no counter in the sample", Vdec(1), Vdec(1, {{6, ""}}), {"1 6 0 -1"}, 1},
      {"no counter", Vdec(1, {{6, ""}}), Vdec(1, {{6, ""}}), {"1 6 -1 -1"}, 1},
  };
  for (const Case& test : kCases) {
    SCOPED_TRACE(test.name);
    const VerifyRun run =
        RunVerifier(Verify_VDEC, kVdecTitle + test.golden, kVdecTitle + test.sample);
    EXPECT_EQ(run.fields, test.fields);
    EXPECT_EQ(run.result.verifyFrameCount, test.compared);
  }
}

std::string Vo(int frame, std::map<std::size_t, std::string> values = {}) {
  values.insert({6, "60000"});
  return Row(27, frame, values);
}

std::string Scaler(int frame, std::map<std::size_t, std::string> values = {}) {
  values.insert({20, "60000"});
  return Row(22, frame, values);
}

struct Compared {
  _VOUT_INFO_COMPARE_RESULT first;
  CM_Verify_Result stage{MODULE_VO};
  bool passed = false;
  std::string console;
};

/// Compares files with these texts by calling a comparator directly.
template <class Setting, class Compare>
Compared CompareTexts(Compare compare, Setting setting, const std::string& golden,
                      const std::string& sample) {
  const TemporaryFile goldenFile("golden", golden);
  const TemporaryFile sampleFile("sample", sample);
  setting.fileNameIn1 = goldenFile.Path();
  setting.fileNameIn2 = sampleFile.Path();
  Compared compared;
  const auto run = scripted::Play("", [&] {
    compared.passed = compare(setting, compared.first, compared.stage);
    return 0;
  });
  compared.console = run.output;
  return compared;
}

TEST(VerifyVo, PrintsSettingsCountersAndTheFirstFailure) {
  std::string golden = "a,b,c\n";
  std::string sample = "d,e\n";
  for (int i = 0; i < 123; ++i) {
    golden += Vo(i, {{1, i == 3 || i == 5 ? "2" : "0"}});
    // Row 119 is the last one within the tolerance; checksums are hexadecimal, sizes decimal.
    sample += Vo(i, {{2, "ab"},
                     {3, i == 119 || i == 121 ? "16" : "0"},
                     {1, i == 5 ? "2" : "0"},
                     {10, i == 120 ? "FF" : "0"}});
  }
  const VerifyRun run = RunVerifier(Verify_VO, golden, sample + Vo(123));
  EXPECT_EQ(run.fields, (Lines{"120 10 0 ff", "121 3 0 16", "123 0 -1 123"}));
  const std::string dashes(50, '-');
  std::string expected =
      "Test case(VOUT) - open config file: /system/bin/vout_setting.conf ...\n"
      "Test case(VOUT) - open config file1: /system/bin/vout_setting.conf fail, use default "
      "setting!!\n"
      "[VOUT] " +
      dashes +
      "\n[VOUT] FileNameIn1\t= GOLDEN\n[VOUT] FileNameIn2\t= SAMPLE\n"
      "[VOUT] errTolerance_sec\t= 2\n[VOUT] syncTolerance_sec\t= 2\n"
      "[VOUT] QUICT When Error= 0\n[VOUT] " +
      dashes +
      "\n[Title1] a,b,c\n[Title2] d,e\n"
      "[VOUT] frame rate=60, error debounceCnt=120, sync debounceCnt=120\n"
      "[VOUT][120] is_same=0@FrameNo[120.120], VO_CRC NOT MATCH!!\n" +
      std::string(50, '=') +
      "\n[VOUT] file scan end@FC[124], rst=[-1|-1]!!\n[VOUT] ------- Error count: --------\n";
  expected +=
      "[VOUT] frame_no :1\n[VOUT] repeatCnt :1\n[VOUT] width :2\n[VOUT] VO_CRC :1\n"
      "[VOUT] compare frameCnt=124(Last frame_n=-1|123) FAIL !!!, errCnt=3, repeatCnr=2/1, "
      "DropCnt=1/0\nApi_vout_info_compare result: FAIL\n"
      "[VOUT] FAIL ON Frame[120.10], VO_CRC Golden[0] != Dump[ff]\n"
      "Test case(VOUT) - Done!!@124, rst=-1\n";
  EXPECT_EQ(std::regex_replace(run.console, std::regex("\\[VOUT\\] \\S+ :0\n"), ""), expected);
}

TEST(VerifyVo, PrintsThatAllRowsAreEqual) {
  const std::string same = "t\n" + Vo(0) + Vo(1);
  EXPECT_TRUE(RunVerifier(Verify_VO, same, same).console.ends_with("Done!!@2, rst=0\n"));
}

/// The first failing row of 200 rows that all differ; -1 if none fails.
int FirstFailing(bool scaler, const std::string& rate, int errorSeconds, int syncSeconds,
                 int firstFrame = 0) {
  std::string golden = "title\n";
  std::string sample = "title\n";
  for (int i = firstFrame; i < firstFrame + 200; ++i) {
    golden += scaler ? Scaler(i, {{20, rate}}) : Vo(i, {{6, rate}});
    sample += scaler ? Scaler(i, {{20, rate}, {2, "1"}}) : Vo(i, {{6, rate}, {3, "1"}});
  }
  _VOUT_INFO_COMPARE_SETTING setting;
  setting.errTolerance_sec = errorSeconds;
  setting.syncTolerance_sec = syncSeconds;
  const Compared run = scaler ? CompareTexts<_SCALER_INFO_COMPARE_SETTING>(Api_scaler_info_compare,
                                                                           setting, golden, sample)
                              : CompareTexts(Api_vout_info_compare, setting, golden, sample);
  EXPECT_EQ(run.passed, run.stage.wrongFields.empty());
  const int first = run.passed ? -1 : run.first.frameNumber - firstFrame;
  // The analysis of frames ignores the same rows, but always uses the default settings.
  if (errorSeconds == 2 && syncSeconds == 2) {
    const TemporaryFile goldenFile("golden", golden);
    const TemporaryFile sampleFile("sample", sample);
    const StageEvents found =
        AnalyseStage(scaler ? MODULE_SCALER : MODULE_VO, goldenFile.Path(), sampleFile.Path());
    EXPECT_EQ(found.events.empty() ? -1 : found.events.front().first - firstFrame, first);
  }
  return first;
}

TEST(VerifyColumns, ToleranceFollowsTheFrameRate) {
  EXPECT_EQ(FirstFailing(false, "60000", 2, 2), 120);
  EXPECT_EQ(FirstFailing(false, "59940", 1, 2), 120);
  EXPECT_EQ(FirstFailing(false, "59899", 2, 2), 118) << "not rounded up";
  EXPECT_EQ(FirstFailing(false, "60000", 0, 0), 0);
  EXPECT_EQ(FirstFailing(false, "60000", 9, 0), -1);
  EXPECT_EQ(FirstFailing(false, "0", 2, 2), 1) << "no rate";
  EXPECT_EQ(FirstFailing(false, "60000", 2, 2, 5), 1) << "frame 0 is missing";
  EXPECT_EQ(FirstFailing(true, "59949", 2, 2), 118);
  EXPECT_EQ(FirstFailing(true, "59950", 2, 2, 5), 120) << "the first rate counts";
  EXPECT_EQ(FirstFailing(true, "0", 2, 2), 100) << "no rate";
}

TEST(VerifyColumns, CountsRowsThatOnlyOneFileHas) {
  const std::string title = "t\n";
  const std::string three = Vo(0) + Vo(1) + Vo(2);
  const struct {
    std::string golden, sample;
    const char *ends, *frames, *drops;  // golden's and the dump's
    int goldenOnly, dumpOnly;
  } kCases[] = {
      {three + Vo(3), three, "-1|-1", "3|-1", "0/1", 1, 0},
      {three, three + Vo(3) + Vo(4), "-1|-1", "-1|4", "2/0", 0, 2},
      // Rows after a malformed row are not compared.
      {three + Vo(3), Vo(0) + "x\n" + Vo(2) + Vo(3) + Vo(4), "1|0", "1|-1", "0/1", 2, 3},
      {Vo(0) + "x\n" + Vo(2), three, "0|1", "-1|1", "1/0", 1, 1},
  };
  for (const auto& c : kCases) {
    const VerifyRun run = RunVerifier(Verify_VO, title + c.golden, title + c.sample);
    for (const std::string& shown :
         {", rst=[" + std::string(c.ends) + "]!!\n", "(Last frame_n=" + std::string(c.frames) + ")",
          "DropCnt=" + std::string(c.drops) + "\n"})
      EXPECT_NE(run.console.find(shown), std::string::npos) << shown << run.console;
    EXPECT_EQ(run.result.coverage.goldenOnly, c.goldenOnly) << run.console;
    EXPECT_EQ(run.result.coverage.dumpOnly, c.dumpOnly) << run.console;
  }
}

TEST(VerifyVo, MaskedItemsDoNotFailAndFrameInfoIsKept) {
  _VOUT_INFO_COMPARE_SETTING setting;
  setting.errTolerance_sec = setting.syncTolerance_sec = 0;
  setting.maskItem[3] = setting.maskItem[26] = 1;
  const std::string golden = "t\n" + Vo(0) + Vo(1) + Vo(2);
  const Compared masked = CompareTexts(Api_vout_info_compare, setting, golden,
                                       "t\n" + Vo(0) + Vo(1, {{3, "1"}, {26, "1"}}) + Vo(2));
  EXPECT_TRUE(masked.passed);
  EXPECT_NE(masked.console.find("[VOUT] maskItem[width] is Enabled!\n"), std::string::npos);
  EXPECT_NE(masked.console.find("[VOUT] VGIP_CRC :1\n"), std::string::npos);
  EXPECT_TRUE(masked.first.frameInfo.empty());
  setting.maskItem[26] = 0;
  const Compared failed =
      CompareTexts(Api_vout_info_compare, setting, golden,
                   "t\n" + Vo(0) + Vo(1, {{4, "1"}, {26, "1b"}}) + Vo(3, {{26, "1"}}));
  EXPECT_EQ(failed.first.item, 4U);
  ASSERT_EQ(failed.first.frameInfo.size(), 3U);
  EXPECT_EQ(failed.first.frameInfo[0].dump, 0x1b);
  EXPECT_EQ(failed.first.frameInfo[1].item, 0U);
}

TEST(VerifyScaler, ComparesRoundedRatesAndPrefixesChecksums) {
  std::string golden = "t\n";
  std::string sample = "t\n";
  for (int i = 0; i < 120; ++i) {
    golden += Scaler(i);
    sample += Scaler(i, {{1, std::to_string(i) + "f"}});
  }
  // A later rate does not extend the tolerance.
  const std::string later = "120000";
  golden += Scaler(120) + Scaler(121, {{18, "c5b6c53"}, {19, "16"}, {20, later}}) + Scaler(122) +
            Scaler(123);
  sample += Scaler(120) + Scaler(121, {{18, "C5B6C54"}, {19, "17"}, {20, later}}) +
            Scaler(122, {{20, "60949"}}) + Scaler(123, {{20, "60950"}});
  const VerifyRun run = RunVerifier(Verify_Scaler, golden, sample);
  EXPECT_EQ(run.fields, (Lines{"121 18 0xc5b6c53 0xc5b6c54", "121 19 16 17", "123 20 60 61"}));
  EXPECT_TRUE(run.console.starts_with(
      "[SCALER] FileNameIn1\t= GOLDEN\n[SCALER] FileNameIn2\t= SAMPLE\n"
      "[SCALER] errTolerance_sec\t= 2\n[SCALER] syncTolerance_sec\t= 2\n[Title1] t\n[Title2] t\n"
      "[SCALER] frame rate=60, error debounceCnt=120, sync debounceCnt=120\n"));
  EXPECT_TRUE(
      RunVerifier(Verify_Scaler, golden, golden)
          .console.ends_with("[Scaler] compare frameCnt=124(Last frame_n=123|123) PASS !!!, "
                             "errCnt=0, DropCnt=0/0\nApi_scaler_info_compare result: PASS\n"));
}

TEST(VerifyVo, SettingsFileChangesTolerancesAndMasks) {
  const TemporaryFile file("setting",
                           "# comment\nerrTolerance_sec = 5 # more\n\n"
                           "syncTolerance_sec=2\r\nmask VO_CRC = 1\nmask Nothing = 1\n"
                           "mask width = 2\nerrTolerance_sec = x\nmask Pri_X1 = 0");
  _VOUT_INFO_COMPARE_SETTING setting;
  const auto run = scripted::Play("", [&] { return ReadVoutSetting(file.Path(), setting), 0; });
  EXPECT_EQ(setting.errTolerance_sec, 5);
  EXPECT_EQ(setting.syncTolerance_sec, 2);
  EXPECT_EQ(std::count(setting.maskItem.begin(), setting.maskItem.end(), 1), 1);
  EXPECT_EQ(setting.maskItem[10], 1);
  EXPECT_EQ(run.output,
            "Test case(VOUT) - open config file: " + file.Path() +
                " ...\n[VOUT][2] errTolerance_sec = 5\n"
                "[VOUT][2] errTolerance_sec change to: 5\n"
                "[VOUT][4] syncTolerance_sec = 2\n"
                "[VOUT][4] syncTolerance_sec no change: 2\n"
                "[VOUT][5] maskItem[10]=1\n[VOUT][5] mask VO_CRC change to: 1\n"
                "[VOUT][6] mask Nothing = 1 is unknown or has a wrong value, ignored\n"
                "[VOUT][7] mask width = 2 is unknown or has a wrong value, ignored\n"
                "[VOUT][8] errTolerance_sec = x is unknown or has a wrong value, ignored\n"
                "[VOUT][9] maskItem[11]=0\n[VOUT][9] mask Pri_X1 no change: 0\n");
}

/// Differences of two dumps as reported by the system's `diff`, one item per line, as "frame
/// column".
Lines DiffOf(const std::string& golden, const std::string& sample, std::size_t counter,
             int firstRow) {
  const auto split = [&](const std::string& text) {
    std::istringstream lines(text);
    std::string line;
    std::string items;
    std::getline(lines, line);
    for (int row = 0; std::getline(lines, line); ++row) {
      std::istringstream values(line);
      const std::string frame = line.substr(0, line.find(','));
      std::string value;
      for (std::size_t i = 0; std::getline(values, value, ','); ++i) {
        if (i != counter && row >= firstRow)
          items += frame + " " + std::to_string(i) + " " + value + "\n";
      }
    }
    return items;
  };
  const TemporaryFile goldenFile("split_golden", split(golden));
  const TemporaryFile sampleFile("split_sample", split(sample));
  std::FILE* const diff =
      popen(("diff " + goldenFile.Path() + " " + sampleFile.Path()).c_str(), "r");
  Lines found;
  char line[256];
  while (std::fgets(line, sizeof line, diff) != nullptr) {
    const std::string text(line);
    if (text[0] == '<') found.push_back(text.substr(2, text.rfind(' ') - 2));
  }
  pclose(diff);
  return found;
}

TEST(VerifyColumns, FindsTheSameDifferencesAsDiff) {
  struct Judged {
    player::Stage stage;
    Verifier verify;
    std::size_t counter;
    int firstRow;
  };
  const Judged kStages[] = {{player::Stage::kVdec, Verify_VDEC, 6, 0},
                            {player::Stage::kVo, Verify_VO, 2, 120},
                            {player::Stage::kScaler, Verify_Scaler, 1, 120}};
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    for (const Judged& judged : kStages) {
      const auto columns = player::FormatOf(judged.stage).columns;
      std::vector<player::Defect> defects;
      for (int i = 0; i < 30; ++i) {
        const auto column = 1 + random() % (columns.size() - 1);
        if (columns[column].name == "frame_rate") continue;
        defects.push_back({judged.stage, player::DefectKind::kChange,
                           static_cast<int64_t>(random() % 300), &columns[column],
                           static_cast<int64_t>(random() % 100000)});
      }
      std::ostringstream golden;
      std::ostringstream sample;
      player::WriteDump(golden, {.frameCount = 300}, {}, judged.stage);
      player::WriteDump(sample, {.frameCount = 300}, {.clock90k = 5}, judged.stage, defects);
      const VerifyRun run = RunVerifier(judged.verify, golden.str(), sample.str());
      Lines found;
      for (const VerifyFailField& field : run.result.wrongFields) {
        found.push_back(std::to_string(field.frameNumber) + " " +
                        std::to_string(field.columnIndex));
      }
      EXPECT_FALSE(found.empty());
      EXPECT_EQ(found, DiffOf(golden.str(), sample.str(), judged.counter, judged.firstRow));
    }
  }
}

}  // namespace
