// The simulated pipeline with constructed input: dumps of the stages for pictures, sound and the
// board's nodes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "DumpWriter.h"
#include "Pipeline.h"
#include "TestMode.h"

namespace {

namespace fs = std::filesystem;
using player::Defect;
using player::Stage;
using Strings = std::vector<std::string>;

constexpr int kDark = 16;
constexpr int kBright = 235;

/// A pipeline with all its dumps in memory.
class Played {
 public:
  explicit Played(const player::DisplayMode& mode = {}, const std::vector<Defect>& defects = {}) {
    player::StageDumps dumps = {};
    writers_.reserve(std::size(player::kAllStages));
    for (const Stage stage : player::kAllStages) {
      const auto i = static_cast<std::size_t>(stage);
      writers_.emplace_back(texts_[i], stage, player::DefectsSeenBy(stage, defects));
      dumps[i] = &writers_.back();
    }
    pipeline_.emplace(mode, dumps);
  }

  player::Pipeline& Pipeline() { return *pipeline_; }

  /// Pictures with these durations in ticks, all with the same content.
  void Show(const std::vector<int64_t>& durations90k, double tick90k = 1) {
    for (const int64_t duration : durations90k) {
      Picture(tick90k, kBright);
      next90k_ += duration;
    }
    Picture(tick90k, kBright);
    pipeline_->End();
  }
  void Picture(double tick90k, int luma) {
    player::FrameValues values;
    values.crcDecoded = 0x1234;
    pipeline_->TakePicture(next90k_, tick90k, luma, values);
  }

  /// A column of a stage's dump, without the title row.
  Strings Column(Stage stage, std::string_view name) const {
    const player::DumpFormat& format = player::FormatOf(stage);
    const auto place = player::FindColumn(format, name) - format.columns.data();
    std::istringstream lines(texts_[static_cast<std::size_t>(stage)].str());
    Strings values;
    std::string line;
    for (std::getline(lines, line); std::getline(lines, line) && line != "EOS";) {
      std::istringstream items(line);
      std::string item;
      for (auto i = place; i >= 0; --i) std::getline(items >> std::ws, item, ',');
      values.push_back(item);
    }
    return values;
  }

 private:
  std::array<std::ostringstream, std::size(player::kAllStages)> texts_;
  std::vector<player::DumpWriter> writers_;
  std::optional<player::Pipeline> pipeline_;
  int64_t next90k_ = 0;
};

TEST(Pipeline, FrameRateFollowsTheTimeUntilTheNextPicture) {
  const struct {
    std::vector<int64_t> durations90k;
    double tick90k;
    Strings rates;
  } kCases[] = {
      {{1500, 1500, 3000}, 1, {"60000", "60000", "30000", "30000"}},
      {{1501, 1502, 3753, 3754}, 1, {"59940", "59940", "23976", "23976", "23976"}},
      {{1440, 1530, 1530}, 90, {"60000", "60000", "60000", "60000"}},  // whole milliseconds
      {{3690, 3780}, 90, {"24000", "24000", "24000"}},
      {{9000, 0, 1800}, 1, {"10000", "10000", "50000", "50000"}},
      {{}, 1, {"60000"}},
  };
  for (const auto& expected : kCases) {
    Played played;
    played.Show(expected.durations90k, expected.tick90k);
    EXPECT_EQ(played.Column(Stage::kVdec, "frame_rate"), expected.rates);
  }
}

TEST(Pipeline, DisplayModeDeterminesRateAndRepeats) {
  const struct {
    player::DisplayMode mode;
    int64_t duration90k;
    const char* rate;
    Strings repeats;
  } kCases[] = {
      {{.adaptive = true}, 3750, "24000", {"0", "0", "0", "0"}},
      {{}, 3750, "48000", {"1", "1", "1", "1"}},
      {{}, 1800, "50000", {"0", "0", "0", "0"}},
      {{.freeRun = true, .adaptive = true}, 3750, "60000", {"2", "1", "2", "1"}},
      {{.freeRun = true}, 3000, "60000", {"1", "1", "1", "1"}},
  };
  for (const auto& expected : kCases) {
    Played played(expected.mode);
    const auto d = expected.duration90k;
    played.Show({d, d, d});
    EXPECT_EQ(played.Column(Stage::kVo, "repeat_cnt"), expected.repeats) << expected.rate;
    for (const Stage stage : {Stage::kDvo, Stage::kVo, Stage::kScaler})
      EXPECT_EQ(played.Column(stage, "frame_rate"), Strings(4, expected.rate));
  }
}

TEST(Pipeline, OnlyTheFirstPictureOfAFlashHasTheMarkers) {
  Played played;
  for (const int luma : {kBright, kDark, kBright, kBright, kDark, kBright, kDark})
    played.Picture(1, luma);
  played.Pipeline().End();
  const Strings vo = played.Column(Stage::kVo, "crc_vgip");
  const Strings panel = played.Column(Stage::kScaler, "crc_panel_if");
  EXPECT_EQ(vo[2], "1e82234e");
  EXPECT_EQ(vo[5], "4830d127");
  EXPECT_EQ(panel[2], "1b184f64");
  EXPECT_EQ(panel[5], "c5b6c53");
  for (const std::size_t i : {0U, 1U, 3U, 4U, 6U}) EXPECT_EQ(vo[i], vo[0]) << i;
}

TEST(Pipeline, PictureQualityModeChangesStagesFromSharpnessOn) {
  Played played;
  Played inMode({.pictureQuality = 2});
  for (Played* each : {&played, &inMode}) each->Show({});
  const auto same = [&](Stage stage, const char* column) {
    return played.Column(stage, column) == inMode.Column(stage, column);
  };
  EXPECT_TRUE(same(Stage::kVo, "crc_vo") && same(Stage::kScaler, "crc_uzu"));
  EXPECT_FALSE(same(Stage::kScaler, "crc_sharp") || same(Stage::kScaler, "crc_panel_if"));
}

TEST(Pipeline, SoundIsDistinguishedFromSilence) {
  Played played;
  for (const bool sounds : {false, true}) {
    for (const uint32_t checksum : {0U, 999'999U, 1'000'000U, 0xffffffffU})
      played.Pipeline().TakeSound(0, 48000, 2, checksum, sounds);
  }
  const Strings values = played.Column(Stage::kAudio, "pcm_data_crc");
  ASSERT_EQ(values.size(), 8U);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const int value = std::stoi(values[i]);  // throws if it is not a 32-bit number
    EXPECT_TRUE(i < 4 ? value >= 0 && value < 1000000 : value > 1000000) << value;
  }
}

/// The stages whose dumps differ from a run without defects, in pipeline order.
std::string StagesThatShow(const std::string& defect) {
  Played sound;
  Played ill({}, {player::ParseDefect(defect)});
  for (Played* each : {&sound, &ill}) {
    for (int64_t i = 0; i < 9; ++i) each->Pipeline().TakePacket(i * 1500, 1000, i == 0);
    for (int64_t i = 0; i < 9; ++i) each->Pipeline().TakeSound(i * 1920, 48000, 2, 77, true);
    each->Show({1500, 1500, 1500, 1500, 1500, 1500, 1500, 1500});
  }
  std::string stages;
  for (const Stage stage : player::kAllStages) {
    const player::DumpFormat& format = player::FormatOf(stage);
    for (const player::Column& column : format.columns) {
      if (sound.Column(stage, column.name) == ill.Column(stage, column.name)) continue;
      stages.append(stages.empty() ? "" : " ").append(format.stageName);
      break;
    }
  }
  return stages;
}

TEST(Pipeline, DefectsPropagateDownstream) {
  const struct {
    const char* defect;
    const char* stages;
  } kCases[] = {
      {"omxin:drop:4", "OMXIN OMXOUT VDEC DVO VO Scaler"},
      {"omxin:corrupt:4", "OMXIN VDEC VO Scaler"},
      {"vdec:corrupt:4", "VDEC VO Scaler"},
      {"vdec:reorder:4", "OMXOUT VDEC DVO VO Scaler"},
      {"omxout:repeat:4", "OMXOUT DVO VO Scaler"},
      {"dvo:drop:4:2", "DVO VO Scaler"},
      {"vo:late:4:30", "VO Scaler"},
      {"scaler:early:4", "Scaler"},
      {"audio:corrupt:4", "Audio"},
      {"audio:late:0:21", "Audio"},
      {"vdec:change:4:crc", "VDEC"},
      {"omxout:change:4:pts.L=1", "OMXOUT"},
      {"dvo:truncate:4", "DVO"},
      {"vo:garble:4", "VO"},
      {"vdec:drop:99", ""},
  };
  for (const auto& expected : kCases)
    EXPECT_EQ(StagesThatShow(expected.defect), expected.stages) << expected.defect;
}

TEST(Defects, AffectTheGivenNumberOfFrames) {
  const struct {
    const char* defect;
    Strings frames;
  } kCases[] = {
      {"vdec:drop:1:2", {"0", "3", "4"}},
      {"vdec:repeat:3:9", {"0", "1", "2", "3", "3", "4", "4"}},
      {"vdec:reorder:1:2", {"0", "3", "1", "2", "4"}},
      {"vdec:truncate:2", {"0", "1", "2"}},  // half a row contains its number
  };
  for (const auto& expected : kCases) {
    Played played({}, {player::ParseDefect(expected.defect)});
    played.Show({1500, 1500, 1500, 1500});
    EXPECT_EQ(played.Column(Stage::kVdec, "frame_no"), expected.frames) << expected.defect;
  }
}

TEST(TestMode, IsReadFromNodesAndMarkers) {
  const fs::path root = testing::TempDir() + "test-mode-";
  const auto write = [&](const char* path, const char* text) {
    fs::create_directories((root / path).parent_path());
    std::ofstream(root / path) << text;
  };
  EXPECT_EQ(player::ReadTestMode(root).dumps, player::DumpPaths()) << "no nodes at all";
  write("tmp/OMX_MURO_CONFIG", "testresult=/d/out\ntestresult=/d/in\n");
  write("dev/cvnvdec", "testmode=1 testresult=/d/vdec\n");
  write("dev/cvndvo", "testmode=0\n");
  write("dev/vodev", "testmode=1\n");
  write("dev/vscdev", "testmode=0 testresult=/d/scaler\n");
  write("dev/vpqdev", "testmode=2\n");
  write("dev/cvnaudio", "fw@ testmode=1 /d/audio\n");
  write("tmp/GST_DVO_FORCE_ADAPTIVE", "");
  const player::TestMode mode = player::ReadTestMode(root);
  const player::DumpPaths expected = {root / "d/in",   root / "d/out", root / "d/vdec", {}, {}, {},
                                      root / "d/audio"};
  EXPECT_EQ(mode.dumps, expected);
  EXPECT_TRUE(mode.display.adaptive);
  EXPECT_FALSE(mode.display.freeRun);
  EXPECT_EQ(mode.display.pictureQuality, 2);
  fs::remove_all(root);
}

}  // namespace
