// cvndumpgen: writes golden files and dumps of a test case to a board's directories.
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "DumpGenerator.h"
#include "DumpReader.h"
#include "DumpWriter.h"
#include "Number.h"
#include "PlayedCases.h"

namespace {

namespace fs = std::filesystem;
using player::ParseNumber;
using player::Stage;

constexpr int kNotWritten = 1;
constexpr int kWrongOption = 2;
constexpr int64_t kMostFrames = 100'000'000;

struct Options {
  const player::PlayedCase* played = nullptr;
  fs::path home;
  fs::path dumpDirectory;
  std::string goldenSet;  // directory of a separate golden set
  std::optional<int64_t> seed;
  std::optional<int64_t> frames;
  std::optional<int64_t> frameRateMilliHz;
  std::optional<int64_t> startPts90k;
  int64_t audioOffsetMs = 0;
  std::vector<Stage> stages;
  fs::path golden;  // existing files to use instead of generated ones
  std::vector<player::Defect> defects;
  bool carriesOn = false;
};

struct Option {
  std::string_view name;
  std::string_view argument;  // empty: takes none
  std::string_view help;
  void (*take)(Options& options, const std::string& argument);
};

constexpr Option kOptions[] = {
    {"--case", "N", "test case, such as 101 (required)",
     [](Options& o, const std::string& text) {
       o.played = &player::FindCase(ParseNumber(text, "test case", 0, 999));
     }},
    {"--home", "DIR", "cross-module home, where golden files and kept dumps are written (required)",
     [](Options& o, const std::string& text) { o.home = text; }},
    {"--dump-dir", "DIR", "directory for the drivers' dumps (required)",
     [](Options& o, const std::string& text) { o.dumpDirectory = text; }},
    {"--free-run", "", "write the golden files of the free-run set",
     [](Options& o, const std::string&) { o.goldenSet = "free_run_golden"; }},
    {"--seed", "N", "seed of the random values (default 1)",
     [](Options& o, const std::string& text) {
       o.seed = ParseNumber(text, "seed", 0, std::numeric_limits<int64_t>::max());
     }},
    {"--frames", "N", "number of video frames (default 600)",
     [](Options& o, const std::string& text) {
       o.frames = ParseNumber(text, "number of frames", 1, kMostFrames);
     }},
    {"--frame-rate", "N", "frame rate in mHz (default: that of the test case)",
     [](Options& o, const std::string& text) {
       o.frameRateMilliHz = ParseNumber(text, "frame rate", 1000, 240000);
     }},
    {"--start-pts", "N", "time stamp of the first frame in 90 kHz ticks (default 0)",
     [](Options& o, const std::string& text) {
       o.startPts90k = ParseNumber(text, "time stamp", 0, std::numeric_limits<int32_t>::max());
     }},
    {"--audio-offset", "MS", "delay of the dumped sound in milliseconds (negative: early)",
     [](Options& o, const std::string& text) {
       o.audioOffsetMs = ParseNumber(text, "number of milliseconds", -10000, 10000);
     }},
    {"--golden", "DIR", "make the dumps from these golden files instead of random values",
     [](Options& o, const std::string& text) { o.golden = text; }},
    {"--carry-on", "", "propagate defects to the dumps of the downstream stages, as on the board",
     [](Options& o, const std::string&) { o.carriesOn = true; }},
    {"--stage", "STAGE", "write this stage only; can be repeated",
     [](Options& o, const std::string& text) { o.stages.push_back(player::ParseStage(text)); }},
    {"--defect", "STAGE:KIND[:FRAME[:DETAIL]]",
     "inject a defect into the stage's dump: change (DETAIL is COLUMN[=VALUE]), drop, skip,\n"
     "      repeat, copy, freeze, insert, reorder, corrupt, garble (DETAIL is a number of "
     "frames),\n"
     "      late, early, jitter (DETAIL is in milliseconds), cut, truncate, nothing (takes no\n"
     "      FRAME); can be repeated",
     [](Options& o, const std::string& text) { o.defects.push_back(player::ParseDefect(text)); }},
};

void PrintHelp() {
  std::cout << "usage: cvndumpgen --case N --home DIR --dump-dir DIR [OPTION]...\n\n";
  for (const Option& option : kOptions) {
    std::cout << "  " << option.name << (option.argument.empty() ? "" : " ") << option.argument
              << "\n      " << option.help << '\n';
  }
}

const Option& FindOption(const std::string& name) {
  for (const Option& option : kOptions) {
    if (option.name == name) return option;
  }
  throw std::invalid_argument("unknown option '" + name + "'; try --help");
}

Options ParseOptions(const std::vector<std::string>& words) {
  Options options;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const Option& option = FindOption(words[i]);
    const bool takesArgument = !option.argument.empty();
    if (takesArgument && i + 1 == words.size())
      throw std::invalid_argument(words[i] + " requires " + std::string(option.argument));
    option.take(options, takesArgument ? words[++i] : "");
  }
  if (options.played == nullptr || options.home.empty() || options.dumpDirectory.empty())
    throw std::invalid_argument("--case, --home and --dump-dir are required; try --help");
  if (options.stages.empty())
    options.stages.assign(std::begin(player::kAllStages), std::end(player::kAllStages));
  return options;
}

player::Clip ClipOf(const Options& options) {
  player::Clip clip = options.played->clip;
  clip.seed = static_cast<uint64_t>(options.seed.value_or(1));
  clip.frameCount = options.frames.value_or(clip.frameCount);
  clip.frameRateMilliHz = options.frameRateMilliHz.value_or(clip.frameRateMilliHz);
  clip.startPts90k = options.startPts90k.value_or(clip.startPts90k);
  return clip;
}

void WriteFile(const fs::path& path, const player::Clip& clip, const player::Run& run, Stage stage,
               std::span<const player::Defect> defects) {
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  player::WriteDump(file, clip, run, stage, defects);
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

/// The defects that a stage's dump shows: its own; with --carry-on also those of upstream stages.
std::vector<player::Defect> DefectsOf(Stage stage, const Options& options) {
  if (!options.carriesOn) return options.defects;
  std::vector<player::Defect> seen = player::DefectsSeenBy(stage, options.defects);
  for (player::Defect& defect : seen) defect.stage = stage;
  return seen;
}

constexpr int64_t kGoldenClock90k = 81'000'000;
constexpr int64_t kDumpClock90k = 97'654'321;

/// Writes a stage's dump with the values of a golden file.
void WriteDumpOf(const fs::path& golden, const fs::path& path, Stage stage,
                 std::vector<player::Defect> defects) {
  std::erase_if(defects, [stage](const player::Defect& defect) { return defect.stage != stage; });
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  player::DumpWriter writer(file, stage, std::move(defects));
  bool goesOn = true;
  for (player::FrameValues values : player::ReadDump(golden, stage)) {
    values.clock90k += kDumpClock90k - kGoldenClock90k;
    goesOn = goesOn && writer.Write(values);
  }
  if (goesOn) writer.End();
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

void Generate(const Options& options) {
  const player::Clip clip = ClipOf(options);
  for (const Stage stage : options.stages) {
    const std::string name = player::DumpNameOf(*options.played, stage);
    if (!options.golden.empty()) {
      if (player::WritesNothing(stage, options.defects)) continue;
      WriteDumpOf(options.golden / name, options.home / "dump_tmp" / name, stage,
                  DefectsOf(stage, options));
      continue;
    }
    WriteFile(options.home / "golden_data/playback" / options.goldenSet / name, clip,
              {kGoldenClock90k, 0}, stage, {});
    const fs::path dump = options.dumpDirectory / player::FormatOf(stage).fileName;
    if (player::WritesNothing(stage, options.defects)) continue;
    WriteFile(dump, clip, {kDumpClock90k, options.audioOffsetMs}, stage, DefectsOf(stage, options));
    const fs::path kept = options.home / "dump_tmp" / name;
    fs::create_directories(kept.parent_path());
    fs::copy_file(dump, kept, fs::copy_options::overwrite_existing);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words == std::vector<std::string>{"--help"})
      PrintHelp();
    else
      Generate(ParseOptions(words));
    return EXIT_SUCCESS;
  } catch (const std::invalid_argument& error) {
    std::cerr << "cvndumpgen: " << error.what() << '\n';
    return kWrongOption;
  } catch (const std::exception& error) {
    std::cerr << "cvndumpgen: " << error.what() << '\n';
    return kNotWritten;
  }
}
