// cvnsim: inspects a running simulated board and changes it, from another terminal.
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "BoardFiles.h"
#include "core/Areas.h"
#include "core/SharedBoard.h"

namespace {

using cvnsim::BoardFiles;
using sim::Words;

constexpr int kNoBoard = 1;
constexpr int kWrongCommand = 2;

void PrintState(const Words&, const BoardFiles& files) {
  cvnsim::Attach(files);
  std::cout << sim::Describe(*sim::BoardLock());
}

void PrintTrace(const Words& arguments, const BoardFiles& files) {
  const auto count = static_cast<size_t>(
      arguments.empty() ? 20 : sim::ParseNumber(arguments[0], "count", 1, 1'000'000));
  for (const std::string& line : cvnsim::LastCalls(files, count)) std::cout << line << '\n';
}

// Works only between two sessions: during one, the board goes off when its program ends.
void SwitchOff(const Words&, const BoardFiles& files) {
  if (files.directory.empty() || cvnsim::InSession(files))
    throw std::runtime_error("the board is in use; it is switched off when its session ends");
  std::filesystem::remove(cvnsim::OnFile(files));
}

void Reset(const Words&, const BoardFiles& files) {
  cvnsim::NeedBoardThatIsOn(files);
  cvnsim::Attach(files);
  sim::ResetBoard(*sim::BoardLock());
}

// The panel's program is next to this one, if it was built: only it needs the libraries that
// make pictures. It accepts the same `--board DIR` and uses the same environment.
[[noreturn]] void RunPanelProgram(const char* task, const Words& words, const BoardFiles& files) {
  const std::string program =
      std::filesystem::read_symlink("/proc/self/exe").replace_filename("cvnpanel");
  Words line = {program};
  if (!files.directory.empty()) line.insert(line.end(), {"--board", files.directory});
  line.emplace_back(task);
  line.insert(line.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  for (std::string& word : line) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execv(program.c_str(), arguments.data());
  if (errno == ENOENT)
    throw std::runtime_error("this build has no panel; install its packages with ./run.sh --panel");
  throw std::runtime_error(program + ": " + std::strerror(errno));
}

void RunCamera(const Words& words, const BoardFiles& files) {
  RunPanelProgram("camera", words, files);
}

void RunPanel(const Words& words, const BoardFiles& files) {
  RunPanelProgram("panel", words, files);
}

void PrintHelp(const Words&, const BoardFiles&);

// Commands that scenario files do not have, because they make sense only from outside the board.
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
    {"state", "", "print the state of the board", 0, PrintState},
    {"trace", "[N]", "print the last N HAL calls (default 20)", 1, PrintTrace},
    {"camera", "FILE.png | --y4m [--rate N] [--pictures N]",
     "save a picture of the panel, or write a video stream to standard output", 5, RunCamera},
    {"panel", "[--port N] [--with PROCESS]",
     "serve a page with the live panel to this machine's browser, until PROCESS ends", 4, RunPanel},
    {"reset", "", "power-cycle the board: back to the initial state of its scenario", 0, Reset},
    {"off", "", "switch off a board that ./run.sh --keep-on left on", 0, SwitchOff},
    {"help", "", "print this help", 0, PrintHelp},
};

void PrintHelp(const Words&, const BoardFiles&) {
  std::cout << "usage: cvnsim [--board DIR] COMMAND\n\n"
               "DIR is the directory of a started board (default: $CVN_BOARD, then ./board).\n\n"
               "Commands that can also be used in scenario files:\n"
            << sim::CommandHelp() << "Other commands:\n";
  for (const OwnCommand& own : kOwnCommands) {
    std::cout << "  " << own.Usage() << "\n      " << own.help << '\n';
  }
}

void RunOnBoard(const Words& words, const BoardFiles& files) {
  const sim::Action action = sim::ParseCommand(words);
  cvnsim::NeedBoardThatIsOn(files);
  cvnsim::Attach(files);
  action(*sim::BoardLock());
}

void Run(const Words& words, const BoardFiles& files) {
  std::string names = sim::CommandNames();
  for (const OwnCommand& own : kOwnCommands) {
    names.append(", ").append(own.name);
    if (own.name != words[0]) continue;
    if (words.size() - 1 <= own.maxArguments)
      return own.run({words.begin() + 1, words.end()}, files);
    sim::RefuseCount(words, own.Usage());
  }
  if (!sim::IsCommand(words[0])) sim::RefuseWord("unknown command", words[0], names);
  RunOnBoard(words, files);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Words words(argv + 1, argv + argc);
    const BoardFiles files = cvnsim::TakeFiles(words);
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
