// gst-cvn-test-1.0: the board's test player. Plays a file to its end, as fast as it can be decoded,
// while the drivers that are in test mode write their dumps.
#include <sys/resource.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "BoardWishes.h"
#include "DumpWriter.h"
#include "MediaReader.h"
#include "Pipeline.h"
#include "PlayLog.h"
#include "Screen.h"
#include "TestMode.h"

namespace {

namespace fs = std::filesystem;
using player::Stage;

constexpr char kName[] = "gst-cvn-test-1.0";
constexpr char kUsage[] =
    "usage: gst-cvn-test-1.0 [--gst-debug=N] [-c CLOCK] [-p] [--root DIR] "
    "-pf FILE | -pu URL | \"playbin3 uri=URI ...\"";
constexpr int kNotPlayed = 1;
constexpr int kWrongCall = 2;
constexpr rlim_t kRoomOnFullDisk = 4096;

struct Options {
  std::string media;
  fs::path root = "/";  // of the board
};

/// The file or address in a pipeline such as "playbin3 uri=file:///x video-sink=y".
std::string MediaOfPipeline(const std::string& pipeline) {
  constexpr std::string_view kKey = "uri=";
  const auto found = pipeline.find(kKey);
  if (found == std::string::npos) throw std::invalid_argument("no uri= in '" + pipeline + "'");
  const std::string uri =
      pipeline.substr(found + kKey.size(), pipeline.find(' ', found) - found - kKey.size());
  constexpr std::string_view kFile = "file://";
  return uri.starts_with(kFile) ? uri.substr(kFile.size()) : uri;
}

Options ParseOptions(const std::vector<std::string>& words) {
  Options options;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const bool hasValue = word == "-pf" || word == "-pu" || word == "-c" || word == "--root";
    if (hasValue && i + 1 == words.size()) throw std::invalid_argument(word + " requires a value");
    if (hasValue) ++i;
    if (word == "-pf" || word == "-pu")
      options.media = words[i];
    else if (word == "--root")
      options.root = words[i];
    else if (word.starts_with("playbin3 "))
      options.media = MediaOfPipeline(word);
    else if (word != "-c" && word != "-p" && !word.starts_with("--gst-debug="))
      throw std::invalid_argument("unknown option '" + word + "'");
  }
  if (options.media.empty()) throw std::invalid_argument("nothing to play");
  return options;
}

/// A dump and its file. A file that cannot be created or filled is reported at the end.
class DumpFile {
 public:
  DumpFile(Stage stage, const fs::path& path, const std::vector<player::Defect>& defects)
      : path_(path),
        file_(path, std::ios::binary),
        openError_(file_.is_open() ? 0 : errno),
        writer_(file_, stage, player::DefectsSeenBy(stage, defects)) {}

  player::DumpWriter& Writer() { return writer_; }
  /// Flushes and closes the file. Returns an error number, 0 if everything was written.
  int Close() {
    if (openError_ != 0) return openError_;
    file_.close();
    return file_ ? 0 : errno;
  }
  const fs::path& Path() const { return path_; }

 private:
  fs::path path_;
  std::ofstream file_;
  const int openError_;
  player::DumpWriter writer_;
};

/// The dumps of all stages in test mode.
class Dumps {
 public:
  Dumps(const player::DumpPaths& paths, const player::BoardWishes& wishes) {
    if (wishes.diskIsFull) LimitFiles();
    for (const Stage stage : player::kAllStages) {
      const auto i = static_cast<std::size_t>(stage);
      if (!paths[i].empty() && !player::WritesNothing(stage, wishes.defects))
        files_[i].emplace(stage, paths[i], wishes.defects);
    }
  }

  player::StageDumps Writers() {
    player::StageDumps writers = {};
    for (std::size_t i = 0; i < files_.size(); ++i)
      writers[i] = files_[i] ? &files_[i]->Writer() : nullptr;
    return writers;
  }

  /// Throws std::runtime_error if a dump could not be written.
  void Close() {
    for (auto& file : files_) {
      const int error = file ? file->Close() : 0;
      if (error == 0) continue;
      throw std::runtime_error(file->Path().string() + ": " +
                               std::strerror(error == EFBIG ? ENOSPC : error));
    }
  }

  std::string Names() const {
    std::string names;
    for (const Stage stage : player::kAllStages) {
      if (files_[static_cast<std::size_t>(stage)])
        names.append(" ").append(player::FormatOf(stage).stageName);
    }
    return names.empty() ? " none" : names;
  }

 private:
  /// Makes the system fail writes beyond the remaining room, in the middle of a row.
  static void LimitFiles() {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {kRoomOnFullDisk, kRoomOnFullDisk};
    setrlimit(RLIMIT_FSIZE, &limit);
  }

  std::array<std::optional<DumpFile>, std::size(player::kAllStages)> files_;
};

void Decode(const Options& options, const player::PlayLog& log, player::Pipeline& pipeline) {
  log.DecoderOpens(options.media);
  try {
    player::Screen screen;
    player::ReadMedia(options.media, pipeline, &screen);
  } catch (const std::exception& error) {
    log.DecoderFails(error.what());
    throw;
  }
  pipeline.End();
  log.DecoderEnds(pipeline.PictureCount(), pipeline.SoundCount());
}

void Play(const Options& options) {
  const player::TestMode mode = player::ReadTestMode(options.root);
  const player::BoardWishes wishes = player::AskBoard();
  const player::PlayLog log(options.root, wishes.clock);
  Dumps dumps(mode.dumps, wishes);
  log.OutputStarts(dumps.Names());
  player::Pipeline pipeline(mode.display, dumps.Writers(), wishes.clock);
  Decode(options, log, pipeline);
  dumps.Close();
  std::cout << "Played " << options.media << ": " << pipeline.PictureCount() << " pictures, "
            << pipeline.SoundCount() << " blocks of sound; dumps:" << dumps.Names() << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Play(ParseOptions({argv + 1, argv + argc}));
    return EXIT_SUCCESS;
  } catch (const std::invalid_argument& error) {
    std::cerr << kName << ": " << error.what() << "; " << kUsage << '\n';
    return kWrongCall;
  } catch (const std::exception& error) {
    std::cerr << kName << ": " << error.what() << '\n';
    return kNotPlayed;
  }
}
