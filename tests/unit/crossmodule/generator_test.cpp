// Generated dumps and the verifiers: equal dumps pass, and the result contains exactly the injected
// defects.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "DumpGenerator.h"
#include "PlayedCases.h"
#include "Scripted.h"
#include "Settings.h"
#include "TestCaseCatalogue.h"
#include "Verifiers.h"
#include "VerifyResult.h"

namespace {

using player::Clip;
using player::Defect;
using player::DefectKind;
using player::Stage;
using Rows = std::vector<std::vector<std::string>>;
using Lines = std::vector<std::string>;

struct StageVerifier {
  Stage stage;
  MODULE_TYPE module;
  void (*verify)(CM_Verify_Result&, const std::string&, const std::string&);
};
constexpr StageVerifier kVerifiers[] = {
    {Stage::kOmxIn, MODULE_OMXIN, Verify_OMX_Input},
    {Stage::kOmxOut, MODULE_OMXOUT, Verify_OMX_Output},
    {Stage::kVdec, MODULE_VDEC, Verify_VDEC},
    {Stage::kDvo, MODULE_DVO, Verify_DVO},
    {Stage::kVo, MODULE_VO, Verify_VO},
    {Stage::kScaler, MODULE_SCALER, Verify_Scaler},
    {Stage::kAudio, MODULE_AUDIO, Verify_Audio},
};

/// A golden file and a dump of one stage, in the temporary directory of the test.
class Pair {
 public:
  Pair(const Clip& clip, Stage stage, const std::vector<Defect>& defects)
      : stage_(stage), base_(testing::TempDir() + "generated_") {
    std::ofstream golden(GoldenPath());
    player::WriteDump(golden, clip, {.clock90k = 1000}, stage);
    std::ofstream sample(SamplePath());
    player::WriteDump(sample, clip, {.clock90k = 777777}, stage, defects);
  }
  ~Pair() {
    std::remove(GoldenPath().c_str());
    std::remove(SamplePath().c_str());
  }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;

  std::string GoldenPath() const { return base_ + "_golden"; }
  std::string SamplePath() const { return base_ + "_sample"; }

  CM_Verify_Result Verify() const {
    const StageVerifier& verifier = kVerifiers[static_cast<std::size_t>(stage_)];
    CM_Verify_Result result(verifier.module);
    scripted::Play("", [&] { return verifier.verify(result, GoldenPath(), SamplePath()), 0; });
    result.goldenFrameCount = CountFrames(GoldenPath());
    result.sampleFrameCount = CountFrames(SamplePath());
    return result;
  }

 private:
  Stage stage_;
  std::string base_;
};

bool Passes(const CM_Verify_Result& result) {
  std::ostringstream out;
  return result.PrintSimpleTable(out);
}

Rows ReadRows(const std::string& path) {
  std::ifstream file(path);
  Rows rows;
  std::string line;
  for (std::getline(file, line); std::getline(file, line);) {
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream words(line);
    rows.emplace_back(std::istream_iterator<std::string>(words),
                      std::istream_iterator<std::string>());
  }
  return rows;
}

std::string Wrong(std::string frame, std::string_view column, const std::string& golden,
                  const std::string& dump) {
  return frame.append(" ").append(column).append(" ").append(golden).append(" ").append(dump);
}

Lines WrongFields(const CM_Verify_Result& result) {
  Lines lines;
  for (const VerifyFailField& field : result.wrongFields)
    lines.push_back(Wrong(std::to_string(field.frameNumber), result.columnNames[field.columnIndex],
                          field.goldenValue, field.dumpValue));
  return lines;
}

std::string FirstDifference(const Lines& expected, const Lines& found) {
  for (std::size_t i = 0; i < std::max(expected.size(), found.size()); ++i) {
    const std::string a = i < expected.size() ? expected[i] : "nothing";
    const std::string b = i < found.size() ? found[i] : "nothing";
    if (a == b) continue;
    std::ostringstream difference;
    difference << "expected " << a << ", found " << b;
    return difference.str();
  }
  return "";
}

/// Expected findings of a comparison row by row. VDEC ends with the shorter file; in the other
/// stages every row that only one file has fails, and the first two seconds are ignored.
Lines ExpectByRow(const Clip& clip, Stage stage, const Rows& golden, const Rows& sample) {
  const auto columns = player::FormatOf(stage).columns;
  const auto start = stage == Stage::kVdec ? std::size_t{0}
                                           : static_cast<std::size_t>(clip.frameRateMilliHz / 500);
  Lines lines;
  for (std::size_t i = start; i < std::min(golden.size(), sample.size()); ++i) {
    for (std::size_t k = 0; k < columns.size(); ++k) {
      const std::string prefix = stage == Stage::kScaler && columns[k].hexadecimal ? "0x" : "";
      // The scaler's rates are compared in whole frames: a difference of a thousandth does not
      // count.
      const bool looseRate = stage == Stage::kScaler && columns[k].name == "frame_rate";
      if (columns[k].name != "90k_counter" && !looseRate && golden[i][k] != sample[i][k])
        lines.push_back(
            Wrong(golden[i][0], columns[k].name, prefix + golden[i][k], prefix + sample[i][k]));
    }
  }
  if (stage == Stage::kVdec) return lines;
  for (std::size_t i = sample.size(); i < golden.size(); ++i)
    lines.push_back(Wrong(golden[i][0], "frame_no", golden[i][0], "-1"));
  for (std::size_t i = golden.size(); i < sample.size(); ++i)
    lines.push_back(Wrong(sample[i][0], "frame_no", "-1", sample[i][0]));
  return lines;
}

/// The columns reported by a stage aligned by frame number, by their position in its rows.
std::vector<std::size_t> ReportedColumns(Stage stage) {
  if (stage == Stage::kDvo) return {0, 2, 3};
  std::vector<std::size_t> all(player::FormatOf(stage).columns.size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
  return all;
}

bool IsCompared(Stage stage, std::string_view column) {
  static const std::map<Stage, std::vector<std::string_view>> kCompared = {
      {Stage::kOmxIn, {"input_size", "input_flags", "pts.L"}},
      {Stage::kOmxOut, {"hdrInfo", "pts.L"}},  // a rate that differs by one only causes a warning
      {Stage::kDvo, {"frame_rate", "pts.L"}},
      {Stage::kAudio, {"sample_rate", "channel_no", "pcm_data_crc"}},
  };
  const auto& compared = kCompared.at(stage);
  return std::find(compared.begin(), compared.end(), column) != compared.end();
}

/// Expected findings of the comparison by frame number, for defects in order and not adjacent.
Lines ExpectByFrame(Stage stage, const Rows& golden, const std::vector<Defect>& defects) {
  const auto columns = player::FormatOf(stage).columns;
  Lines lines;
  const auto missing = [&](int64_t frame, const std::vector<std::string>* dumped = nullptr) {
    const auto& row = golden[static_cast<std::size_t>(frame)];
    for (const std::size_t i : ReportedColumns(stage))
      lines.push_back(Wrong(row[0], columns[i].name, row[i], dumped ? (*dumped)[i] : "-1"));
  };
  for (const Defect& defect : defects) {
    const auto& row = golden[static_cast<std::size_t>(defect.frame)];
    switch (defect.kind) {
      case DefectKind::kDrop:
        missing(defect.frame);
        break;
      case DefectKind::kRepeat:
        missing(defect.frame + 1, stage == Stage::kDvo ? &row : nullptr);
        break;
      case DefectKind::kReorder:
        missing(defect.frame);
        if (stage != Stage::kDvo) missing(defect.frame + 2);
        break;
      default:
        if (!IsCompared(stage, defect.column->name)) break;
        const auto k = static_cast<std::size_t>(defect.column - columns.data());
        lines.push_back(
            Wrong(row[0], defect.column->name, row[k], std::to_string(std::stoll(row[k]) ^ 1)));
        return lines;
    }
  }
  return lines;
}

/// Audio rows are aligned by pts: missing and repeated blocks are skipped.
Lines ExpectOfAudio(const Rows& golden, const std::vector<Defect>& defects) {
  const auto hex = [](long long value) {
    std::ostringstream text;
    text << std::hex << value;
    return text.str();
  };
  const auto columns = player::FormatOf(Stage::kAudio).columns;
  Lines lines;
  for (const Defect& defect : defects) {
    if (defect.kind != DefectKind::kChange || !IsCompared(Stage::kAudio, defect.column->name))
      continue;
    const auto& row = golden[static_cast<std::size_t>(defect.frame)];
    const long long value =
        std::stoll(row[static_cast<std::size_t>(defect.column - columns.data())]);
    lines.push_back(Wrong(row[0], defect.column->name, hex(value), hex(value ^ 1)));
  }
  return lines;
}

Lines Expect(const Clip& clip, Stage stage, const Rows& golden, const Rows& sample,
             const std::vector<Defect>& defects) {
  switch (stage) {
    case Stage::kVdec:
    case Stage::kVo:
    case Stage::kScaler:
      return ExpectByRow(clip, stage, golden, sample);
    case Stage::kAudio:
      return ExpectOfAudio(golden, defects);
    default:
      return ExpectByFrame(stage, golden, defects);
  }
}

/// Up to three defects after the warm-up of all stages. Columns used for alignment are not changed.
std::vector<Defect> DrawDefects(Stage stage, std::mt19937& random) {
  constexpr DefectKind kKinds[] = {DefectKind::kChange, DefectKind::kChange, DefectKind::kDrop,
                                   DefectKind::kRepeat, DefectKind::kReorder};
  const auto columns = player::FormatOf(stage).columns;
  std::vector<Defect> defects;
  const std::size_t count = 1 + random() % 3;
  for (int64_t frame = 130; defects.size() < count;
       frame += 5 + static_cast<int64_t>(random() % 40)) {
    Defect defect{stage, kKinds[random() % std::size(kKinds)], frame};
    do {
      defect.column = &columns[1 + random() % (columns.size() - 1)];
    } while (defect.column->name == "90k_counter" || defect.column->name == "pts");
    defects.push_back(defect);
  }
  return defects;
}

TEST(DumpGenerator, MakesPairsThatPassInEveryStage) {
  for (const player::PlayedCase& played : player::PlayedCases()) {
    for (const Stage stage : player::kAllStages) {
      const Pair pair(played.clip, stage, {});
      const CM_Verify_Result result = pair.Verify();
      EXPECT_TRUE(Passes(result)) << played.name << " " << player::FormatOf(stage).stageName;
      const bool hasClock = player::FindColumn(player::FormatOf(stage), "90k_counter") != nullptr;
      const bool same =
          scripted::ReadFile(pair.GoldenPath()) == scripted::ReadFile(pair.SamplePath());
      EXPECT_NE(same, hasClock) << "the clock differs between runs";
    }
  }
}

TEST(DumpGenerator, TitlesFitTheReadersBuffers) {
  for (const Stage stage : {Stage::kOmxIn, Stage::kOmxOut, Stage::kDvo})
    EXPECT_LE(player::TitleOf(player::FormatOf(stage)).size(), 65U)
        << "the rest would count as a row";
  for (const Stage stage : {Stage::kVo, Stage::kScaler})
    EXPECT_EQ(player::TitleOf(player::FormatOf(stage)).find(' '), std::string::npos);
  EXPECT_TRUE(player::TitleOf(player::FormatOf(Stage::kVdec)).ends_with(" MaxFALL\n"));
}

TEST(DumpGenerator, VerifiersFindExactlyTheDefects) {
  constexpr unsigned kRounds = 40;
  std::mt19937 random(20240601);
  for (unsigned round = 0; round < kRounds; ++round) {
    const Clip clip = {.seed = round, .frameCount = 300, .hdr = round % 2 == 1};
    for (const Stage stage : player::kAllStages) {
      const std::vector<Defect> defects = DrawDefects(stage, random);
      const Pair pair(clip, stage, defects);
      std::string drawn = std::string(player::FormatOf(stage).stageName) + ":";
      for (const Defect& defect : defects)
        drawn += " " + std::to_string(static_cast<int>(defect.kind)) + "@" +
                 std::to_string(defect.frame) + "." + std::string(defect.column->name);
      const Lines expected =
          Expect(clip, stage, ReadRows(pair.GoldenPath()), ReadRows(pair.SamplePath()), defects);
      EXPECT_EQ(FirstDifference(expected, WrongFields(pair.Verify())), "") << drawn;
    }
  }
}

TEST(DumpGenerator, BrokenFilesPassInNoStage) {
  for (const Stage stage : player::kAllStages) {
    for (const DefectKind kind : {DefectKind::kTruncate, DefectKind::kGarble}) {
      const Pair pair({}, stage, {{stage, kind, 250}});
      EXPECT_FALSE(Passes(pair.Verify()))
          << player::FormatOf(stage).stageName << " " << static_cast<int>(kind);
    }
  }
}

TEST(DumpGenerator, LateRowsChangeOnlyTheClock) {
  const Clip clip = {.frameCount = 10};
  std::ostringstream inTime;
  std::ostringstream late;
  const Defect defects[] = {player::ParseDefect("OMXIN:late:7:30"),
                            player::ParseDefect("VDEC:drop:1")};
  player::WriteDump(inTime, clip, {}, Stage::kOmxIn);
  player::WriteDump(late, clip, {}, Stage::kOmxIn, defects);
  std::istringstream inTimeRows(inTime.str());
  std::istringstream lateRows(late.str());
  std::string a;
  std::string b;
  for (int row = -1; row < 10; ++row) {
    ASSERT_TRUE(std::getline(inTimeRows, a) && std::getline(lateRows, b));
    if (row >= 7) {
      const std::string clock = std::to_string(row * 1500 + 900);
      a.replace(a.find(", " + clock) + 2, clock.size(), std::to_string(row * 1500 + 900 + 2700));
    }
    EXPECT_EQ(a, b) << row;
  }
}

TEST(DumpGenerator, ParsesDefectsAndRejectsInvalidOnes) {
  const Defect change = player::ParseDefect("VDEC:change:300:crc=255");
  EXPECT_EQ(change.stage, Stage::kVdec);
  EXPECT_EQ(change.frame, 300);
  EXPECT_EQ(change.column->name, "crc");
  EXPECT_EQ(change.value, 255);
  const struct {
    const char* text;
    const char* refusal;
  } kWrong[] = {
      {"", "incomplete defect '': expected STAGE change FRAME"},
      {"VDEC:drop", "incomplete defect 'VDEC': expected STAGE change FRAME"},
      {"VDEC:change:1:crc:2", "incomplete defect 'VDEC': expected STAGE change FRAME"},
      {"dec:drop:1", "invalid stage 'dec': expected OMXIN, OMXOUT, VDEC"},
      {"VDEC:lose:1", "invalid defect 'lose': expected change, drop"},
      {"VDEC:drop:-1", "invalid frame '-1': expected 0 to 2147483647"},
      {"VDEC:drop:3000000000", "invalid frame '3000000000': expected"},
      {"VDEC:drop:1:crc", "invalid number of frames 'crc': expected 1"},
      {"VDEC:truncate:1:2", "unexpected '2' after 'truncate'"},
      {"vdec:nothing:7", "unexpected '7' after 'nothing'"},
      {"VDEC:change:1", "invalid column of VDEC '': expected frame_no, width"},
      {"VDEC:change:1:crc=x", "invalid value 'x': expected"},
      {"DVO:late:1", "invalid defect 'late' for DVO, whose dump has no clock"},
      {"VO:late:1:0", "invalid milliseconds '0': expected 1"},
  };
  for (const auto& wrong : kWrong) {
    try {
      player::ParseDefect(wrong.text);
      ADD_FAILURE() << wrong.text;
    } catch (const std::invalid_argument& error) {
      EXPECT_NE(std::string(error.what()).find(wrong.refusal), std::string::npos) << error.what();
    }
  }
}

TEST(DumpGenerator, NamesItsFilesLikeTheCatalogue) {
  SetCrossModuleHome(testing::TempDir() + "no_such_home/");
  scripted::Play("", [] { return Init_TestCase_List(); });
  std::size_t found = 0;
  for (const CM_TestCase& testCase : TestCaseList()) {
    if (testCase.type == kUnknownTestCase) continue;
    for (const StageVerifier& verifier : kVerifiers)
      EXPECT_EQ(player::DumpNameOf(player::FindCase(testCase.type), verifier.stage),
                testCase.Get_Dump_Backup_Name(verifier.module));
    ++found;
  }
  EXPECT_EQ(found, player::PlayedCases().size());
  EXPECT_THROW(player::FindCase(999), std::invalid_argument);
}

}  // namespace
