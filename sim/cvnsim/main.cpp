// cvnsim: looks at a running simulated board and changes it, from another terminal.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <deque>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "core/Areas.h"
#include "core/SharedBoard.h"

namespace {

using sim::Words;

constexpr int kNoBoard = 1;
constexpr int kWrongCommand = 2;

struct BoardFiles {
  std::string state;
  std::string trace;
  std::string directory{};  // of the board; empty inside of it
};

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

// Takes "--board DIR" off the front of the words.
BoardFiles TakeFiles(Words& words) {
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

// True while a session has the board: its launcher keeps the board's file locked.
bool InSession(const BoardFiles& files) {
  const int fd = open((files.directory + "/.cvntester-board").c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool locked = flock(fd, LOCK_SH | LOCK_NB) != 0;
  close(fd);
  return locked;
}

// The file that says of a board between two sessions that it is on.
std::string OnFile(const BoardFiles& files) {
  return files.directory + "/run/on";
}

// Refuses to change a board whose next start is a power-on.
void NeedBoardThatIsOn(const BoardFiles& files) {
  if (files.directory.empty() || InSession(files) || std::filesystem::exists(OnFile(files))) return;
  throw std::runtime_error("no board is running in " + files.directory +
                           ", and its next start is a power-on; ./run.sh --keep-on leaves it on");
}

void PrintState(const Words&, const BoardFiles& files) {
  Attach(files);
  std::cout << sim::Describe(*sim::BoardLock());
}

void PrintTrace(const Words& arguments, const BoardFiles& files) {
  const auto count = static_cast<size_t>(
      arguments.empty() ? 20 : sim::ParseNumber(arguments[0], "count", 1, 1'000'000));
  std::ifstream file(files.trace);
  if (!file) throw std::runtime_error("no trace in '" + files.trace + "': the board keeps none");
  std::deque<std::string> last;
  for (std::string line; std::getline(file, line);) {
    last.push_back(line);
    if (last.size() > count) last.pop_front();
  }
  for (const std::string& line : last) std::cout << line << '\n';
}

// Between two sessions; in one the board goes off with its program.
void SwitchOff(const Words&, const BoardFiles& files) {
  if (files.directory.empty() || InSession(files))
    throw std::runtime_error("a session has the board; it goes off with that");
  std::filesystem::remove(OnFile(files));
}

void Reset(const Words&, const BoardFiles& files) {
  NeedBoardThatIsOn(files);
  Attach(files);
  sim::ResetBoard(*sim::BoardLock());
}

void PrintHelp(const Words&, const BoardFiles&);

// What only makes sense from outside, beside the commands of scenario files.
struct OwnCommand {
  std::string_view name;
  std::string_view arguments;
  std::string_view help;
  size_t maxArguments;
  void (*run)(const Words& arguments, const BoardFiles& files);

  std::string Usage() const {
    return std::string(name) + (arguments.empty() ? "" : " ") + std::string(arguments);
  }
};

constexpr OwnCommand kOwnCommands[] = {
    {"state", "", "show the board", 0, PrintState},
    {"trace", "[N]", "show the last N HAL calls, default 20", 1, PrintTrace},
    {"reset", "", "switch the board off and on: the state its scenario starts with", 0, Reset},
    {"off", "", "switch a board off that ./run.sh --keep-on left on", 0, SwitchOff},
    {"help", "", "show this", 0, PrintHelp},
};

void PrintHelp(const Words&, const BoardFiles&) {
  std::cout << "usage: cvnsim [--board DIR] COMMAND\n\n"
               "DIR is the directory of a started board; default: $CVN_BOARD, else ./board.\n\n"
               "Commands that scenario files have too:\n"
            << sim::CommandHelp() << "Others:\n";
  for (const OwnCommand& own : kOwnCommands) {
    std::cout << "  " << own.Usage() << "\n      " << own.help << '\n';
  }
}

void RunOnBoard(const Words& words, const BoardFiles& files) {
  const sim::Action action = sim::ParseCommand(words);
  NeedBoardThatIsOn(files);
  Attach(files);
  action(*sim::BoardLock());
}

void Run(const Words& words, const BoardFiles& files) {
  std::string names = sim::CommandNames();
  for (const OwnCommand& own : kOwnCommands) {
    names.append(", ").append(own.name);
    if (own.name != words[0]) continue;
    if (words.size() - 1 <= own.maxArguments)
      return own.run({words.begin() + 1, words.end()}, files);
    sim::Refuse(sim::Join(words), "has the wrong number of arguments", own.Usage());
  }
  if (!sim::IsCommand(words[0])) sim::Refuse(words[0], "is no command", names);
  RunOnBoard(words, files);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Words words(argv + 1, argv + argc);
    const BoardFiles files = TakeFiles(words);
    if (words.empty() || words[0] == "--help") words = {"help"};
    Run(words, files);
    return EXIT_SUCCESS;
  } catch (const sim::CommandError& error) {
    std::cerr << "cvnsim: " << error.what() << '\n';
    return kWrongCommand;
  } catch (const std::exception& error) {
    std::cerr << "cvnsim: " << error.what() << '\n';
    return kNoBoard;
  }
}
