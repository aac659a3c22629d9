// The board's player with the board's media files.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "BoardFixture.h"
#include "DumpFormat.h"

namespace {

namespace fs = std::filesystem;
using player::Stage;
using Row = std::map<std::string_view, std::string>;

constexpr char kContent[] = CVN_MEDIA "/www/cross_module_content_v1/";

class PlayerTest : public testing::Test {
 protected:
  void SetUp() override {
    unsetenv("CVNSIM_STATE");
    fs::create_directories(root_ / "dev");
    fs::create_directories(root_ / "tmp");
    SetTestMode("dev/cvnvdec", "testmode=1 testresult=/tmp/VDEC\n");
    SetTestMode("dev/vodev", "testmode=1 testresult=/tmp/VO\n");
    SetTestMode("dev/cvnaudio", "fw@ testmode=1 /tmp/Audio\n");
  }
  void TearDown() override { fs::remove_all(root_); }

  void SetTestMode(const char* node, const char* text) const {
    std::ofstream(root_ / node) << text;
  }
  test::ShellResult Run(const std::string& arguments) const {
    return test::RunShell(CVN_PLAYER " --root " + test::Quoted(root_) + " " + arguments);
  }
  /// Plays a file of the board's content like the harness.
  void Play(const std::string& file) const {
    const auto played = Run("--gst-debug=0 -c IP1+IP2  -pf " + test::Quoted(kContent + file));
    ASSERT_EQ(played.status, 0) << played.output;
  }
  std::string Dump(const char* name) const { return test::FileText(root_ / "tmp" / name); }

  std::vector<Row> Rows(Stage stage) const {
    const player::DumpFormat& format = player::FormatOf(stage);
    std::ifstream lines(root_ / "tmp" / format.stageName);
    std::vector<Row> rows;
    std::string line;
    for (std::getline(lines, line); std::getline(lines, line);) {
      std::istringstream items(line);
      rows.emplace_back();
      for (const player::Column& column : format.columns)
        std::getline(items, rows.back()[column.name], ',');
    }
    return rows;
  }

  const fs::path root_ = testing::TempDir() + "player-";
};

TEST_F(PlayerTest, SameFileGivesTheSameDumpsOfStagesInTestMode) {
  Play("[R101]h264-FrtChg.ts");
  const std::array<std::string, 3> first = {Dump("VDEC"), Dump("VO"), Dump("Audio")};
  EXPECT_EQ(std::distance(fs::directory_iterator(root_ / "tmp"), {}), 3);
  SetTestMode("dev/vodev", "testmode=0\n");
  fs::remove(root_ / "tmp/VO");
  Play("[R101]h264-FrtChg.ts");
  EXPECT_EQ(first[0], Dump("VDEC"));
  EXPECT_EQ(first[2], Dump("Audio"));
  EXPECT_FALSE(fs::exists(root_ / "tmp/VO"));
}

TEST_F(PlayerTest, RunsOnABoardDifferOnlyInTheCounter) {
  const std::string file = "[R102]h264-ResChg.ts";
  Play(file);
  const std::vector<Row> golden = Rows(Stage::kVdec);
  setenv("CVNSIM_STATE", (root_ / "state").c_str(), 1);
  ASSERT_EQ(test::RunShell(SIM_CLIENT).status, 0) << "switches the board on";
  const auto counters = [&] {
    Play(file);
    std::vector<Row> rows = Rows(Stage::kVdec);
    EXPECT_EQ(rows.size(), golden.size());
    std::vector<long> values;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      values.push_back(std::stol(rows[i].at("90k_counter")));
      rows[i]["90k_counter"] = golden.at(i).at("90k_counter");
      EXPECT_EQ(rows[i], golden[i]);
    }
    return values;
  };
  const std::vector<long> first = counters(), second = counters();
  EXPECT_LT(first.front(), second.front()) << "the counter continues between two runs";
  // Six seconds with a drift of 30 ppm are 16 ticks.
  for (const auto& run : {first, second})
    EXPECT_NEAR(static_cast<double>(run.back() - run.front()), 359 * 1500, 17);
  ASSERT_EQ(test::RunShell(CVNSIM " counter 2000000000 -100").status, 0);
  const std::vector<long> set = counters();
  EXPECT_EQ(set.back() - set.front(), 359 * 1500 - 54) << "half a million ticks, 100 ppm too slow";
  EXPECT_EQ(set.front(), 2000000000 + std::stol(golden.front().at("90k_counter")) - 900000);
}

TEST_F(PlayerTest, RatesSizesAndRangesFollowTheFile) {
  struct Change {
    std::size_t frame;
    const char* column;
    const char* before;
    const char* after;
  };
  const struct {
    const char* file;
    std::size_t frames;
    std::vector<Change> changes;
  } kFiles[] = {
      {"[R201]hevc-FrtChg.mp4",
       448,
       {{240, "frame_rate", "60000", "30000"},
        {300, "frame_rate", "30000", "24000"},
        {348, "frame_rate", "24000", "50000"}}},
      {"[R301]vp9-FrtChg.webm",
       448,
       {{240, "frame_rate", "60000", "30000"},
        {300, "frame_rate", "30000", "24000"},
        {348, "frame_rate", "24000", "50000"}}},
      {"[R302]vp9-ResChg.webm", 360, {{120, "width", "640", "960"}, {240, "height", "540", "180"}}},
      {"[R202]hevc-ResChg.mp4", 360, {{120, "width", "640", "960"}, {240, "height", "540", "180"}}},
      {"[R602]HDRtoHLG.ts", 360, {{180, "trans_char", "16", "18"}, {180, "hdrInfo", "1", "2"}}},
      {"[R601]SDRtoHDR.ts",
       360,
       {{180, "max_disp_lu", "0", "10000000"},
        {180, "max_c_cll", "0", "1000"},
        {180, "color_pri", "1", "9"}}},
  };
  for (const auto& expected : kFiles) {
    Play(expected.file);
    const std::vector<Row> rows = Rows(Stage::kVdec);
    ASSERT_EQ(rows.size(), expected.frames) << expected.file;
    for (const Change& change : expected.changes) {
      EXPECT_EQ(rows[change.frame - 1].at(change.column), change.before) << expected.file;
      EXPECT_EQ(rows[change.frame].at(change.column), change.after) << expected.file;
    }
  }
}

TEST_F(PlayerTest, TimesCountFromTheStartAndEveryPictureHasItsChecksum) {
  Play("[R102]h264-ResChg.ts");
  const std::vector<Row> rows = Rows(Stage::kVdec);
  std::map<std::string, int> checksums;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].at("frame_no"), std::to_string(i));
    EXPECT_EQ(std::stol(rows[i].at("pts")) - std::stol(rows[0].at("pts")),
              static_cast<long>(i) * 1500);
    ++checksums[rows[i].at("crc")];
  }
  EXPECT_LT(std::stol(rows[0].at("pts")), 9000);
  EXPECT_EQ(checksums.size(), rows.size());
}

TEST_F(PlayerTest, FlashAndBeepCoincideOncePerSecond) {
  Play("[R501]AVsync_dp_AAC_200_48k_25fps.mp4");
  std::vector<long> flashes;
  for (const Row& row : Rows(Stage::kVo)) {
    if (row.at("crc_vgip") == "1e82234e" || row.at("crc_vgip") == "4830d127")
      flashes.push_back(std::stol(row.at("pts.L"), nullptr, 16));
  }
  std::vector<long> beeps;
  long previous = 0;
  for (const Row& row : Rows(Stage::kAudio)) {
    const long check = std::stol(row.at("pcm_data_crc"));
    if (check > 1000000 && previous <= 1000000) beeps.push_back(std::stol(row.at("pts")));
    previous = check;
  }
  ASSERT_EQ(flashes.size(), 7U);
  ASSERT_EQ(beeps.size(), flashes.size());
  for (std::size_t i = 0; i < flashes.size(); ++i) {
    EXPECT_EQ(flashes[i], 313200 + static_cast<long>(i) * 90000);
    EXPECT_LE(std::abs(beeps[i] - flashes[i]), 2 * 1920) << "within two blocks of sound";
  }
}

TEST_F(PlayerTest, UnplayableFilesAreReportedInOneLine) {
  std::ofstream(root_ / "text.ts") << "no media\n";
  std::ofstream(root_ / "empty.ts") << "";
  const std::string file =
      test::Quoted(std::string(kContent) + "[R501]AVsync_dp_AAC_200_48k_25fps.mp4");
  const std::string in = test::Quoted(root_);
  EXPECT_EQ(test::RunShell("head -c 20000 " + file + " >" + in + "/cut.mp4").status, 0);
  const struct {
    std::string arguments;
    int status;
    const char* message;
  } kCases[] = {
      {"-pf " + in + "/no-such-file.ts", 1, "/no-such-file.ts: No such file or directory"},
      {"-pf " + in + "/text.ts", 1, "/text.ts: Invalid data found"},
      {"-pf " + in + "/empty.ts", 1, "/empty.ts: "},
      {"-pf " + in + "/cut.mp4", 1, "/cut.mp4: Invalid data found"},
      {"-pf " + in, 1, ": Is a directory"},
      {"-pu http://127.0.0.1:9/x", 1, "http://127.0.0.1:9/x: Connection refused"},
      {"", 2, "nothing to play; usage: "},
      {"-pf", 2, "-pf requires a value; usage: "},
      {"-x", 2, "unknown option '-x'; usage: "},
      {"'playbin3 video-sink=x'", 2, "no uri= in 'playbin3 video-sink=x'; usage: "},
  };
  for (const auto& expected : kCases) {
    const auto run = Run(expected.arguments);
    EXPECT_EQ(run.status, expected.status) << expected.arguments;
    EXPECT_TRUE(run.output.starts_with("gst-cvn-test-1.0: ")) << run.output;
    EXPECT_NE(run.output.find(expected.message), std::string::npos) << run.output;
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1) << run.output;
  }
}

TEST_F(PlayerTest, DumpThatCannotBeWrittenIsReported) {
  SetTestMode("dev/cvnvdec", "testmode=1 testresult=/nowhere/VDEC\n");
  const auto run = Run("-pf " + test::Quoted(std::string(kContent) + "[R401]memc.ts"));
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.output.find("/nowhere/VDEC: No such file or directory\n"), std::string::npos)
      << run.output;
}

TEST_F(PlayerTest, FileCanBeGivenAsPipelineText) {
  const auto run =
      Run("\"playbin3 uri=file://" + std::string(kContent) +
          "[R401]memc.ts video-sink=dvovideosink audio-sink=cvnalsasink\" -p -c IP1+IP2");
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_EQ(Rows(Stage::kVdec).size(), 240U);
}

}  // namespace
