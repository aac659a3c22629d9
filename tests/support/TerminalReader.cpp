#include "TerminalReader.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace test {
namespace {

namespace fs = std::filesystem;

/// The single line of a file in /proc; empty if its process has ended.
std::string ReadAll(const fs::path& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

/// One thread of a program, by its directory under /proc.
struct Thread {
  fs::path directory;
  bool leaf;  // its process has no children
};

/// The threads of `pid` and of all its descendants, parents first.
void CollectThreads(pid_t pid, std::vector<Thread>& threads) {
  std::vector<pid_t> children;
  std::vector<fs::path> own;
  std::error_code gone;
  for (fs::directory_iterator task("/proc/" + std::to_string(pid) + "/task", gone), end;
       !gone && task != end; task.increment(gone)) {
    own.push_back(task->path());
    std::ifstream list(task->path() / "children");
    children.insert(children.end(), std::istream_iterator<pid_t>(list), {});
  }
  for (const fs::path& directory : own) threads.push_back({directory, children.empty()});
  for (const pid_t child : children) CollectThreads(child, threads);
}

/// Returns true if the thread sleeps and its process group is the one that may read its terminal.
bool SleepsInForeground(const Thread& thread) {
  const std::string stat = ReadAll(thread.directory / "stat");
  std::istringstream fields(stat.substr(std::min(stat.rfind(')'), stat.size() - 1) + 1));
  char state = 0;
  pid_t parent = 0;
  pid_t group = 0;
  pid_t session = 0;
  int terminal = 0;
  pid_t foregroundGroup = 0;
  fields >> state >> parent >> group >> session >> terminal >> foregroundGroup;
  return fields && state == 'S' && terminal != 0 && group == foregroundGroup;
}

/// The kernel function in which a thread sleeps; empty if the kernel does not report it.
std::string SleepsIn(const Thread& thread) {
  const std::string name = ReadAll(thread.directory / "wchan");
  return name == "0" ? "" : name;
}

/// Launchers sleep in poll too, so polling counts as a terminal read only for a leaf.
bool IsTerminalRead(const std::string& function, bool leaf) {
  if (function == "wait_woken" || function == "n_tty_read") return true;
  return leaf && (function.find("poll") != std::string::npos ||
                  function.find("select") != std::string::npos);
}

/// If the kernel does not report the function: the thread sleeps for a while and uses no CPU time.
bool StaysAsleep(const Thread& thread) {
  constexpr std::chrono::milliseconds kWhile(20);
  const std::string before = ReadAll(thread.directory / "schedstat");
  if (!SleepsInForeground(thread)) return false;
  std::this_thread::sleep_for(kWhile);
  return SleepsInForeground(thread) && before == ReadAll(thread.directory / "schedstat");
}

}  // namespace

bool SleepsInTerminalRead(pid_t pid) {
  std::vector<Thread> threads;
  CollectThreads(pid, threads);
  bool told = false;
  for (const Thread& thread : threads) {
    const std::string function = SleepsIn(thread);
    if (IsTerminalRead(function, thread.leaf) && SleepsInForeground(thread)) return true;
    told = told || !function.empty();
  }
  return !told && !threads.empty() && StaysAsleep(threads.back());
}

}  // namespace test
