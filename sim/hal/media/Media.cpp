#include "media/Media.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>

#include "Defect.h"
#include "core/Areas.h"
#include "core/SharedBoard.h"
#include "media/BoardLogs.h"

namespace sim {
namespace {

namespace fs = std::filesystem;

/// Something that is well or not, with the words for both states.
struct Switch {
  std::string_view name;
  std::string_view well;
  std::string_view ill;
  bool Media::*isIll;
  const char* marker;  // file in the simulator's directory while it is not well
};

constexpr Switch kStick = {"stick", "in", "out", &Media::stickOut, "stick-out"};
constexpr Switch kNetwork = {"network", "up", "down", &Media::networkDown, "network-down"};
constexpr Switch kTftp = {"tftp", "up", "down", &Media::tftpDown, "tftp-down"};
constexpr Switch kDisk = {"disk", "free", "full", &Media::diskFull, "disk-full"};
constexpr const Switch* kSwitches[] = {&kStick, &kNetwork, &kTftp, &kDisk};

constexpr const char* kStickNodes[] = {"sda", "sda1"};

void SetFile(const fs::path& path, bool exists) {
  std::error_code ignored;
  if (fs::exists(path, ignored) == exists) return;
  if (exists)
    std::ofstream{path};
  else
    fs::remove(path, ignored);
  if (fs::exists(path, ignored) != exists) throw CommandError("cannot change " + path.string());
}

template <const Switch& Of>
Action ParseSwitch(const Words& words) {
  const bool ill = words[0] == Of.ill;
  if (!ill && words[0] != Of.well) {
    RefuseWord("invalid state of the " + std::string(Of.name), words[0],
               std::string(Of.well) + " or " + std::string(Of.ill));
  }
  return [ill](Board& board) {
    board.media.*Of.isIll = ill;
    ShowOutside(board);
  };
}

/// The board's root directory; nothing if the state file is not inside one.
std::optional<fs::path> BoardRoot() {
  const fs::path simulator = StateDirectory();
  if (simulator.empty() || !fs::is_directory(simulator.parent_path() / "dev/block"))
    return std::nullopt;
  return simulator.parent_path();
}

/// Removes the mounts of a pulled stick; plugging it in again does not restore them.
void CutMounts(const fs::path& root) {
  std::ifstream mounts(fs::path(StateDirectory()) / "mounts");
  std::string device, directory;
  while (mounts >> device && std::getline(mounts >> std::ws, directory)) {
    const fs::path link = root / fs::path(directory).relative_path();
    std::error_code ignored;
    if (!fs::is_symlink(link, ignored)) continue;
    fs::remove(link, ignored);
    fs::create_symlink("pulled-out", link, ignored);
  }
}

/// Empties a driver's node, removes anything else.
void LoseFile(const fs::path& path) {
  std::error_code ignored;
  if (path.parent_path().filename() == "dev")
    fs::resize_file(path, 0, ignored);
  else
    fs::remove_all(path, ignored);
}

void AddDefect(Board& board, const std::string& words) {
  for (DumpDefect& defect : board.media.defects) {
    if (defect.words[0] != '\0') continue;
    words.copy(defect.words, sizeof(defect.words) - 1);
    return;
  }
  RefuseWord(
      "too many defects for", words,
      "at most " + std::to_string(std::size(board.media.defects)) + "; 'defect none' removes all");
}

Action ParseDefectCommand(const Words& words) {
  if (words == Words{"none"}) {
    return [](Board& board) {
      for (DumpDefect& defect : board.media.defects) defect = {};
    };
  }
  try {
    player::ParseDefect(words);
  } catch (const std::invalid_argument& error) {
    throw CommandError(error.what());
  }
  const std::string line = Join(words);
  if (line.size() >= sizeof(DumpDefect::words))
    RefuseWord("defect too long:", line,
               "at most " + std::to_string(sizeof(DumpDefect::words) - 1) + " characters");
  return [line](Board& board) { AddDefect(board, line); };
}

Action ParseCounter(const Words& words) {
  if (words == Words{"free"}) return [](Board& board) { board.media.counter = {}; };
  if (words.size() < 2) RefuseWord("missing drift after", Join(words), "START PPM or free");
  const DumpCounter counter = {true, ParseNumber(words[0], "number of ticks", 0, INT32_MAX),
                               ParseDecimal(words[1], "drift in ppm", -1000, 1000)};
  return [counter](Board& board) { board.media.counter = counter; };
}

void Describe(const Board& board, std::ostream& out) {
  out << "around the board:\n ";
  const char* separator = " ";
  for (const Switch* item : kSwitches) {
    out << separator << item->name << ' ' << (board.media.*item->isIll ? item->ill : item->well);
    separator = ", ";
  }
  if (const DumpCounter& counter = board.media.counter; counter.isSet) {
    out << "\ncounter of dumps: from " << counter.start90k << " on, drift " << counter.driftPpm
        << " ppm";
  }
  out << "\ndefects of dumps:\n";
  bool any = false;
  for (const DumpDefect& defect : board.media.defects) {
    if (defect.words[0] == '\0') continue;
    any = true;
    out << "  " << defect.words << '\n';
  }
  if (!any) out << "  none\n";
}

constexpr Command kCommands[] = {
    {"defect", "STAGE KIND [FRAME [DETAIL]] or defect none",
     "inject a defect into the dumps of the next playback runs: change, drop, skip, repeat, copy,\n"
     "      freeze, insert, reorder, corrupt, garble, late, early, jitter, cut, truncate, nothing",
     1, 4, ParseDefectCommand},
    {"counter", "START PPM | free",
     "start the 90 kHz counter of the next dumps at START, running PPM too fast", 1, 2,
     ParseCounter},
    {"stick", "in|out", "plug the USB stick in or pull it out", 1, 1, ParseSwitch<kStick>},
    {"network", "up|down", "plug the network cable in or pull it out", 1, 1, ParseSwitch<kNetwork>},
    {"tftp", "up|down", "start or stop the TFTP server", 1, 1, ParseSwitch<kTftp>},
    {"disk", "free|full", "make the disk that dumps are written to free or full", 1, 1,
     ParseSwitch<kDisk>},
};

}  // namespace

constinit const Area kMediaArea = {kCommands, Describe};

void ShowOutside(const Board& board) {
  const auto root = BoardRoot();
  if (!root) return;
  const fs::path simulator = StateDirectory();
  for (const Switch* item : kSwitches) SetFile(simulator / item->marker, board.media.*item->isIll);
  for (const char* node : kStickNodes) SetFile(*root / "dev/block" / node, !board.media.stickOut);
  if (board.media.stickOut) CutMounts(*root);
}

void LoseVolatileFiles() {
  const auto root = BoardRoot();
  if (!root) return;
  std::ifstream paths(fs::path(StateDirectory()) / "volatile");
  for (std::string path; std::getline(paths, path);) LoseFile(*root / path);
}

void LogStart() {
  if (const auto root = BoardRoot()) LogPowerOn(*root);
}

}  // namespace sim
