// When a stage counts as passed, and which stage is reported for a failed case.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "DumpGenerator.h"
#include "DumpWriter.h"
#include "LateStage.h"
#include "ModuleVerification.h"
#include "ReportTables.h"
#include "StageVerdict.h"
#include "VerifyRun.h"

namespace {

using player::Defect;
using player::ParseDefect;

constexpr player::Clip kClip;

/// A dump of the clip as the board writes it with defects in one of its stages.
std::string Dump(player::Stage stage, const std::vector<Defect>& defects = {},
                 const player::Clip& clip = kClip) {
  std::ostringstream text;
  player::DumpWriter writer(text, stage, player::DefectsSeenBy(stage, defects));
  for (int64_t row = 0; row < player::RowCount(clip, stage); ++row) {
    if (!writer.Write(player::ValuesOf(clip, {}, stage, row))) return text.str();
  }
  writer.End();
  return text.str();
}

constexpr struct {
  MODULE_TYPE module;
  player::Stage stage;
} kStagesOfBoth[] = {
    {MODULE_OMXIN, player::Stage::kOmxIn}, {MODULE_OMXOUT, player::Stage::kOmxOut},
    {MODULE_VDEC, player::Stage::kVdec},   {MODULE_DVO, player::Stage::kDvo},
    {MODULE_VO, player::Stage::kVo},       {MODULE_SCALER, player::Stage::kScaler},
    {MODULE_AUDIO, player::Stage::kAudio},
};

/// The result of a stage whose kept dump has as many frames as golden, regardless of `sample`.
CM_Verify_Result Compare(MODULE_TYPE module, const std::string& golden, const std::string& sample) {
  const TemporaryFile goldenFile("golden", golden);
  const TemporaryFile sampleFile("sample", sample);
  CM_Verify_Result result(module);
  scripted::Play("", [&] { return CompareStage(result, goldenFile.Path(), sampleFile.Path()), 0; });
  result.framesAreCounted = true;
  result.goldenFrameCount = result.sampleFrameCount = 599;
  return result;
}

/// The title and the first `count` rows of a dump.
std::string Cut(const std::string& dump, int count) {
  std::size_t end = 0;
  for (int line = 0; line <= count; ++line) end = dump.find('\n', end) + 1;
  return dump.substr(0, end);
}

/// The dump with `change` applied to the items of every row from `first` on.
std::string Changed(const std::string& dump, int64_t first,
                    const std::function<void(Lines& items)>& change) {
  std::istringstream lines(dump);
  std::string changed;
  std::string line;
  std::getline(lines, changed);
  changed += '\n';
  for (int64_t row = 0; std::getline(lines, line); ++row) {
    Lines items(1);
    for (const char c : line) {
      if (c == ',')
        items.emplace_back();
      else
        items.back() += c;
    }
    if (row >= first) change(items);
    for (std::size_t i = 0; i < items.size(); ++i) changed += (i == 0 ? "" : ",") + items[i];
    changed += '\n';
  }
  return changed;
}

void Add(std::string& item, int64_t number) {
  item = std::to_string(std::stoll(item) + number);
}

TEST(StageVerdict, NeedsFramesOnBothSides) {
  const std::string dump = Dump(player::Stage::kVdec);
  CM_Verify_Result result = Compare(MODULE_VDEC, dump, dump);
  EXPECT_TRUE(Passed(result));
  result.goldenFrameCount = 0;
  EXPECT_EQ(WhyNotPassed(result), "no golden frames");
  result.goldenFrameCount = result.sampleFrameCount = 1;
  EXPECT_TRUE(Passed(result));
  result.sampleFrameCount = 0;
  EXPECT_EQ(WhyNotPassed(result), "no dumped frames");
}

TEST(StageVerdict, EqualDumpsPassWithAllRowsCompared) {
  for (const auto& [module, stage] : kStagesOfBoth) {
    CM_Verify_Result result = Compare(module, Dump(stage), Dump(stage));
    EXPECT_TRUE(Passed(result)) << Judge(result).remark;
    EXPECT_GT(result.coverage.compared, 400);
    EXPECT_EQ(result.coverage.compared, result.coverage.Selected());
    ++result.sampleFrameCount;
    EXPECT_EQ(Judge(result).verdict, StageVerdict::kFrameDrop) << "more frames than golden";
  }
}

// Dumps that once passed although little or nothing was compared. The kept dumps are complete.
TEST(StageVerdict, NothingPassesWithoutAComparison) {
  const std::string omxOut = Dump(player::Stage::kOmxOut);
  const std::string dvo = Dump(player::Stage::kDvo);
  const std::string audio = Dump(player::Stage::kAudio);
  const std::string vdec = Dump(player::Stage::kVdec);
  const auto allWrong = [](Lines& items) { items.back() = " 7"; };
  const auto rateOf = [](const char* rate, std::size_t column) {
    return [=](Lines& items) {
      if (items.size() > column) items[column] = rate;
    };
  };
  const auto wrongSound = [](int64_t ticks, bool otherChecksum) {
    return [=](Lines& items) {
      Add(items[5], ticks);
      if (otherChecksum) Add(items[4], 1);
    };
  };
  const struct {
    const char* what;
    MODULE_TYPE module;
    std::string golden;
    std::string sample;
    const char* remark;
  } kTried[] = {
      {"another stage's dump", MODULE_OMXOUT, omxOut, vdec, "compared 0 of 480"},
      {"a golden file without rows", MODULE_VDEC, Cut(vdec, 0), vdec, "compared 0 of 600"},
      {"an empty golden file", MODULE_VDEC, "", vdec, "compared 0 of 600"},
      {"both empty", MODULE_VDEC, "", "", "too little to compare"},
      {"ten rows", MODULE_VDEC, vdec, Cut(vdec, 10), "compared 10 of 600"},
      {"one row more than golden", MODULE_VDEC, Cut(vdec, 599), vdec, "compared 599 of 600"},
      {"no line end at all", MODULE_VDEC, vdec, std::string(10000, 'x'), "compared 0 of 600"},
      {"sound a tick late from block 200 on", MODULE_AUDIO, audio,
       Changed(audio, 200, wrongSound(1, false)), "compared 152 of 420"},
      {"sound seven ticks late, all wrong", MODULE_AUDIO, audio,
       Changed(audio, 0, wrongSound(7, true)), ""},
      {"sound before its first second", MODULE_AUDIO, audio,
       Changed(audio, 0, [](Lines& items) { items[5] = "89999"; }), "compared 0 of 420"},
      {"the same in golden", MODULE_AUDIO,
       Changed(audio, 0, [](Lines& items) { items[5] = "89999"; }),
       Changed(audio, 0, [](Lines& items) { items[5] = "89999"; }), "too little to compare"},
      {"time stamps beyond 31 bits", MODULE_AUDIO, Changed(audio, 0, wrongSound(2200000000, false)),
       Changed(audio, 0, wrongSound(2200000000, true)), "too little to compare"},
      {"a rate that makes all rows the start", MODULE_OMXOUT, omxOut,
       Changed(omxOut, 0, rateOf(" 400000", 5)), "compared 0 of 480"},
      {"such a rate in golden", MODULE_OMXOUT, Changed(omxOut, 0, rateOf(" 400000", 5)),
       Changed(omxOut, 0, allWrong), "compared 0 of 480"},
      {"files of warm-up only", MODULE_OMXOUT, Cut(omxOut, 120),
       Cut(Changed(omxOut, 0, allWrong), 120), "too little to compare"},
      {"files of warm-up only", MODULE_DVO, Cut(dvo, 120), Cut(dvo, 120), "too little to compare"},
      {"files of tolerance only", MODULE_VO, Cut(Dump(player::Stage::kVo), 120),
       Changed(Cut(Dump(player::Stage::kVo), 120), 0, [](Lines& items) { items[10] = "1"; }),
       "too little to compare"},
      {"a rate without a wrong field", MODULE_DVO, Changed(dvo, 0, rateOf(" 1", 1)),
       Changed(Changed(dvo, 0, rateOf(" 1", 1)), 130, rateOf(" 59940", 2)), "compared 10 of 480"},
      {"such a rate in the last row", MODULE_DVO, Changed(dvo, 0, rateOf(" 1", 1)),
       Changed(Changed(dvo, 0, rateOf(" 1", 1)), 599, rateOf(" 59940", 2)), "compared 479 of 480"},
      {"end of stream in the middle", MODULE_DVO, dvo,
       Cut(dvo, 200) + "EOS\n" + dvo.substr(Cut(dvo, 200).size()), "compared 80 of 480"},
      {"blank lines in both, and the last row missing", MODULE_OMXOUT,
       Cut(omxOut, 300) + "\n\n" + omxOut.substr(Cut(omxOut, 300).size()),
       Cut(omxOut, 300) + "\n\n" + Cut(omxOut, 599).substr(Cut(omxOut, 300).size()),
       "compared 479 of 480"},
      {"a repeated frame without its marker", MODULE_DVO, dvo,
       Cut(dvo, 300) + dvo.substr(Cut(dvo, 299).size()),
       "compared 480 of 481, frames out of order"},
  };
  for (const auto& test : kTried) {
    const CM_Verify_Result result = Compare(test.module, test.golden, test.sample);
    EXPECT_NE(Judge(result).verdict, StageVerdict::kPass) << test.what;
    EXPECT_EQ(Judge(result).remark, test.remark) << test.what;
  }
  for (const auto& [module, stage] : kStagesOfBoth) {
    const std::string golden = Dump(stage);
    for (const int rows : {0, 200}) {
      EXPECT_FALSE(Passed(Compare(module, golden, Cut(golden, rows)))) << module << ' ' << rows;
      EXPECT_FALSE(Passed(Compare(module, Cut(golden, rows), golden))) << module << ' ' << rows;
    }
    EXPECT_FALSE(Passed(Compare(module, golden, std::string(10000, '7')))) << module;
  }
}

TEST(StageVerdict, ReportsDifferencesOutsideTheValues) {
  const std::string omxOut = Dump(player::Stage::kOmxOut);
  const std::string dvo = Dump(player::Stage::kDvo);
  std::string withReturns;
  for (const char c : omxOut) withReturns += c == '\n' ? "\r\n" : std::string(1, c);
  const struct {
    MODULE_TYPE module;
    std::string golden;
    std::string sample;
    const char* remark;
  } kCases[] = {
      {MODULE_OMXOUT, omxOut, withReturns, "line ends differ"},
      {MODULE_OMXOUT, omxOut, omxOut.substr(0, omxOut.size() - 1), "line ends differ"},
      {MODULE_OMXOUT, omxOut, Changed(omxOut, 300, [](Lines& items) { items.emplace_back(" 1"); }),
       "a row has an extra column"},
      {MODULE_DVO, dvo, Changed(dvo, 300, [](Lines& items) { items.back() = " -1"; }),
       "marked as dropped"},
      {MODULE_VDEC,
       Changed(Dump(player::Stage::kVdec), 300, [](Lines& items) { items.emplace_back("1"); }),
       Changed(Dump(player::Stage::kVdec), 300, [](Lines& items) { items.emplace_back("1"); }),
       "malformed row"},
  };
  for (const auto& test : kCases) {
    CM_Verify_Result result = Compare(test.module, test.golden, test.sample);
    result.createWrongFrame();
    result.Data_Preprocessing();
    EXPECT_FALSE(Passed(result));
    EXPECT_EQ(Judge(result).remark, test.remark);
    ASSERT_FALSE(result.wrongFields.empty());
    EXPECT_EQ(result.wrongFields[0].goldenValue, result.wrongFields[0].dumpValue);
  }
}

TEST(StageVerdict, EndlessLineIsOneMalformedRow) {
  const std::string omxOut = Dump(player::Stage::kOmxOut);
  std::string endless = Cut(omxOut, 300);
  endless.resize(20'000'000, '7');
  const CM_Verify_Result result = Compare(MODULE_OMXOUT, omxOut, endless);
  EXPECT_EQ(Judge(result).remark, "malformed row");
  EXPECT_EQ(result.wrongFields.size(), std::size(kOmxOutputColumns));

  std::string noise;
  for (unsigned i = 0, value = 1; i < 100000; ++i, value = value * 1664525 + 1013904223)
    noise += static_cast<char>(value >> 24);
  const auto run = RunVerifier(Verify_DVO, Dump(player::Stage::kDvo), noise);
  EXPECT_EQ(Judge(run.result).remark, "malformed row");
  EXPECT_EQ(std::count(run.console.begin(), run.console.end(), '\n'), 2) << run.console;
}

/// The result of a stage whose kept dump is the one that was compared.
CM_Verify_Result ResultOf(MODULE_TYPE module, const std::string& golden, const std::string& dump) {
  const TemporaryFile goldenFile("golden", golden);
  const TemporaryFile dumpFile("sample", dump);
  CM_Verify_Result result(module);
  scripted::Play("", [&] { return CompareStage(result, goldenFile.Path(), dumpFile.Path()), 0; });
  result.goldenFrameCount = CountFrames(goldenFile.Path());
  result.sampleFrameCount = CountFrames(dumpFile.Path());
  result.framesAreCounted = true;
  return result;
}

/// The results of a case with defects.
std::vector<CM_Verify_Result> ResultsOf(const std::vector<Defect>& defects) {
  static std::map<MODULE_TYPE, std::string> golden;
  std::vector<CM_Verify_Result> results;
  for (const auto& [module, stage] : kStagesOfBoth) {
    std::string& right = golden[module];
    if (right.empty()) right = Dump(stage);
    if (player::WritesNothing(stage, defects)) {
      results.emplace_back(module);
    } else if (player::DefectsSeenBy(stage, defects).empty()) {
      CM_Verify_Result& result = results.emplace_back(module);  // as for equal files
      result.columnNames = {"frame_no"};
      result.coverage.compared = 1;
    } else {
      results.push_back(ResultOf(module, right, Dump(stage, defects)));
    }
  }
  return results;
}

/// The stages named in the summary, without details.
std::string NamedStages(const std::vector<CM_Verify_Result>& results) {
  StageResults pointers;
  for (const CM_Verify_Result& result : results) pointers.push_back(&result);
  std::ostringstream out;
  PrintSummary(out, "name", pointers);
  const std::string text = out.str();
  constexpr char kTitle[] = " First bad stage: ";
  const auto at = text.find(kTitle);
  if (at == std::string::npos) return "";
  const std::string line = text.substr(at + sizeof kTitle - 1, text.find('\n', at) - at);
  return line.substr(0, line.rfind(']', line.find(" frame")) + 1);
}

TEST(FirstBadStage, IsTheDefectiveStageForEveryDefect) {
  const auto lastBlock = static_cast<int>(player::RowCount(kClip, player::Stage::kAudio)) - 1;
  const struct {
    const char* name;
    int first;  // compared
    int last;
    const char* corrupt;  // stages reported if the picture was damaged there
  } kPlaces[] = {
      {"OMXIN", 10, 599, "[OMXIN]"},
      {"OMXOUT", 120, 599, "[OMXOUT], [DVO] or [VO]"},
      {"VDEC", 0, 599, "[VDEC]"},
      {"DVO", 120, 599, "[OMXOUT], [DVO] or [VO]"},
      {"VO", 120, 599, "[OMXOUT], [DVO] or [VO]"},
      {"Scaler", 120, 599, "[Scaler]"},
      {"Audio", 48, lastBlock, "[Audio]"},
  };
  for (const auto& place : kPlaces) {
    const std::string name = place.name;
    for (const char* kind : {"drop", "repeat", "reorder", "corrupt", "garble", "truncate"}) {
      for (int frame : {place.first, (place.first + place.last) / 2, place.last}) {
        // The last row has no following row to be swapped with.
        if (std::string(kind) == "reorder" && frame == place.last) --frame;
        const std::string defect = name + ":" + kind + ":" + std::to_string(frame);
        const std::string alone = "[" + name + "]";
        EXPECT_EQ(NamedStages(ResultsOf({ParseDefect(defect)})),
                  kind == std::string("corrupt") ? place.corrupt : alone)
            << defect;
      }
    }
    EXPECT_EQ(NamedStages(ResultsOf({ParseDefect(name + ":nothing")})), "[" + name + "]");
  }
  EXPECT_EQ(NamedStages(ResultsOf({ParseDefect("VO:change:300:crc_vo=1")})), "[VO]");
  EXPECT_EQ(NamedStages(ResultsOf({})), "");
  std::vector<Defect> death;
  for (const auto& place : kPlaces)
    death.push_back(ParseDefect(place.name + std::string(":truncate:300")));
  EXPECT_EQ(NamedStages(ResultsOf(death)), "[OMXIN]") << "a crash of the player stops all stages";
}

TEST(FirstBadStage, IsTheStageWhereTheDelayBegins) {
  constexpr player::Clip kMarks{.frameRateMilliHz = 25000, .flashesAndBeeps = true};
  const struct {
    const char* defect;
    const char* named;
  } kCases[] = {
      {"OMXIN:late:50:25", "[OMXIN] 25 ms late"},
      {"VDEC:late:50:25", "[VDEC] 25 ms late"},
      {"OMXOUT:late:0:40", "[OMXOUT] 40 ms late"},
      {"VO:early:0:40", "[VO] 40 ms early"},
      {"Scaler:late:90:31", "[Scaler] 31 ms late"},
      {"Audio:late:60:21", "[Audio] 21 ms late"},
      {"Audio:early:60:31", "[Audio] 31 ms early"},
      // If the delay exists from the start, the two cannot be distinguished.
      {"Audio:late:0:21", "[OMXIN] or [Audio], the sound 21 ms late"},
      {"OMXIN:late:0:40", "[OMXIN] or [Audio], the sound 40 ms early"},
  };
  for (const auto& test : kCases) {
    const std::vector<Defect> defects = {ParseDefect(test.defect)};
    std::map<MODULE_TYPE, std::unique_ptr<TemporaryFile>> golden;
    std::map<MODULE_TYPE, std::unique_ptr<TemporaryFile>> dump;
    for (const auto& [module, stage] : kStagesOfBoth) {
      const std::string name = std::to_string(module);
      golden[module] = std::make_unique<TemporaryFile>("g" + name, Dump(stage, {}, kMarks));
      dump[module] = std::make_unique<TemporaryFile>("d" + name, Dump(stage, defects, kMarks));
    }
    EXPECT_EQ(NameLateStage({.frame = 100,
                             .pts90k = 100 * 3600,
                             .golden = [&](MODULE_TYPE m) { return golden.at(m)->Path(); },
                             .dump = [&](MODULE_TYPE m) { return dump.at(m)->Path(); }}),
              test.named)
        << test.defect;
  }
}

TEST(FirstBadStage, IsUnknownIfASideOfTheDelayIsMissing) {
  constexpr player::Clip kMarks{.frameRateMilliHz = 25000, .flashesAndBeeps = true};
  const TemporaryFile scaler("scaler", Dump(player::Stage::kScaler, {}, kMarks));
  const TemporaryFile audio("audio", Dump(player::Stage::kAudio, {}, kMarks));
  for (const MODULE_TYPE missing : {MODULE_SCALER, MODULE_AUDIO}) {
    const auto path = [&](MODULE_TYPE module) -> std::string {
      if (module == missing || (module != MODULE_SCALER && module != MODULE_AUDIO)) return "/none";
      return module == MODULE_SCALER ? scaler.Path() : audio.Path();
    };
    EXPECT_EQ(NameLateStage({.frame = 100, .pts90k = 100 * 3600, .golden = path, .dump = path}),
              "[Scaler] or [Audio]");
  }
}

TEST(VideoIntegration, ShowsFrameNumbersOfAnySize) {
  CM_Verify_Result vo(MODULE_VO);
  vo.columnNames = {"frame_no"};
  vo.wrongFields = {{1500, 0, "1500", "-1"}, {1001, 0, "1001", "\033[2J"}};
  std::ostringstream out;
  PrintVideoIntegration(out, {&vo});
  const std::string text = out.str();
  EXPECT_NE(text.find("       1001  "), std::string::npos) << text;
  EXPECT_LT(text.find("       1001  "), text.find("       1500  ")) << text;
  EXPECT_NE(text.find("\\x1b[2J/1001"), std::string::npos) << "control characters are escaped";
}

}  // namespace
