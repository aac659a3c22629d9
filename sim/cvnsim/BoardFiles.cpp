#include "BoardFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "core/SharedBoard.h"
#include "core/Trace.h"

namespace cvnsim {
namespace {

std::string Environment(const char* name, const std::string& otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : otherwise;
}

BoardFiles FilesIn(const std::string& boardDir) {
  return {boardDir + "/run/state", boardDir + "/run/trace", boardDir};
}

// Inside a board, the environment names the files; outside, they are in the board's directory.
BoardFiles DefaultFiles() {
  if (std::getenv("CVNSIM_STATE") == nullptr) return FilesIn(Environment("CVN_BOARD", "./board"));
  return {Environment("CVNSIM_STATE", ""), Environment("CVNSIM_TRACE", "")};
}

constexpr std::streamoff kTailBytes = std::streamoff{64} * 1024;

/// The lines that begin after `start`, or at the file's beginning.
std::vector<std::string> LinesOfTail(std::ifstream& file, std::streamoff start) {
  file.clear();
  file.seekg(start);
  std::string line;
  if (start > 0) std::getline(file, line);  // the rest of a line
  std::vector<std::string> lines;
  while (std::getline(file, line)) lines.push_back(line);
  return lines;
}

}  // namespace

BoardFiles TakeFiles(sim::Words& words) {
  if (words.empty() || words[0] != "--board") return DefaultFiles();
  if (words.size() < 2) sim::Refuse("--board without a directory", "--board DIR COMMAND");
  const std::string boardDir = words[1];
  words.erase(words.begin(), words.begin() + 2);
  return FilesIn(boardDir);
}

void Attach(const BoardFiles& files) {
  if (!std::filesystem::exists(files.state)) {
    throw std::runtime_error("no running board found (missing " + files.state +
                             "); start one with ./run.sh or name its directory with --board DIR");
  }
  sim::Attach(files.state);
  sim::NoteInTraceOf(files.trace);
}

// The launcher of a session keeps the board's file locked.
bool InSession(const BoardFiles& files) {
  const int fd = open((files.directory + "/.cvntester-board").c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool locked = flock(fd, LOCK_SH | LOCK_NB) != 0;
  close(fd);
  return locked;
}

std::string OnFile(const BoardFiles& files) {
  return files.directory + "/run/on";
}

bool IsOn(const BoardFiles& files) {
  return files.directory.empty() || InSession(files) || std::filesystem::exists(OnFile(files));
}

void NeedBoardThatIsOn(const BoardFiles& files) {
  if (IsOn(files)) return;
  throw std::runtime_error("the board in " + files.directory +
                           " is off; start it with ./run.sh, or leave it on with --keep-on");
}

std::vector<std::string> LastCalls(const BoardFiles& files, size_t count) {
  std::ifstream file(files.trace, std::ios::binary);
  if (!file) throw std::runtime_error("no trace file '" + files.trace + "'");
  file.seekg(0, std::ios::end);
  const std::streamoff size = file.tellg();
  std::vector<std::string> lines;
  // Reads only the end: a trace can be long, and this is called again and again.
  std::streamoff tail = std::min(size, kTailBytes);
  while ((lines = LinesOfTail(file, size - tail)).size() < count && tail < size)
    tail = std::min(size, tail * 8);
  if (lines.size() > count)
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
  return lines;
}

}  // namespace cvnsim
