#include "BoardFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "core/SharedBoard.h"

namespace cvnsim {
namespace {

std::string Environment(const char* name, const std::string& otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : otherwise;
}

BoardFiles FilesIn(const std::string& boardDir) {
  return {boardDir + "/run/state", boardDir + "/run/trace", boardDir};
}

// Inside a board the environment names the files; outside it is the board's directory.
BoardFiles DefaultFiles() {
  if (std::getenv("CVNSIM_STATE") == nullptr) return FilesIn(Environment("CVN_BOARD", "./board"));
  return {Environment("CVNSIM_STATE", ""), Environment("CVNSIM_TRACE", "")};
}

}  // namespace

BoardFiles TakeFiles(sim::Words& words) {
  if (words.empty() || words[0] != "--board") return DefaultFiles();
  if (words.size() < 2) sim::Refuse("--board", "lacks its directory", "--board DIR COMMAND");
  const std::string boardDir = words[1];
  words.erase(words.begin(), words.begin() + 2);
  return FilesIn(boardDir);
}

void Attach(const BoardFiles& files) {
  if (!std::filesystem::exists(files.state)) {
    throw std::runtime_error("no board was started here: there is no " + files.state +
                             "; start one, or name its directory with --board DIR");
  }
  sim::Attach(files.state);
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
  throw std::runtime_error("no board is running in " + files.directory +
                           ", and its next start is a power-on; ./run.sh --keep-on leaves it on");
}

std::vector<std::string> LastCalls(const BoardFiles& files, size_t count) {
  std::ifstream file(files.trace);
  if (!file) throw std::runtime_error("no trace in '" + files.trace + "': the board keeps none");
  std::deque<std::string> last;
  for (std::string line; std::getline(file, line);) {
    last.push_back(line);
    if (last.size() > count) last.pop_front();
  }
  return {last.begin(), last.end()};
}

}  // namespace cvnsim
