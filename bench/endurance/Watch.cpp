#include "Watch.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>

namespace endurance {
namespace {

namespace fs = std::filesystem;

// Normal fluctuation: a heap of a few MiB varies by some pages, not by hundreds.
constexpr long kBreathKib = 256;
constexpr long kBreathDivisor = 100;
// Processor time varies with the load of the machine; work that grows with the run exceeds this.
constexpr double kSlower = 1.5;
constexpr double kSlowerMs = 1000;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kMemoryTells = false;
#elif defined(__has_feature)
constexpr bool kMemoryTells = !__has_feature(address_sanitizer);
#else
constexpr bool kMemoryTells = true;
#endif

fs::path ProcessDirectory(pid_t process) {
  return "/proc/" + std::to_string(process);
}

/// The number after `name` in a file of lines such as "VmRSS:   1234 kB"; 0 without such a line.
long NumberIn(const fs::path& path, const std::string& name) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(name)) return std::stol(line.substr(name.size()));
  }
  return 0;
}

/// The fields of /proc/PID/stat after the program's name, starting with the state.
std::vector<std::string> StatFields(pid_t process) {
  std::ifstream file(ProcessDirectory(process) / "stat");
  std::string text;
  std::getline(file, text);  // empty if the process ends meanwhile
  std::istringstream fields(text.substr(text.rfind(')') + 1));
  return {std::istream_iterator<std::string>(fields), {}};
}

long CpuMs(pid_t process) {
  constexpr std::size_t kFirst =
      11;  // utime, stime and those of waited-for children, in clock ticks
  const std::vector<std::string> fields = StatFields(process);
  long ticks = 0;
  for (std::size_t i = kFirst; i < kFirst + 4 && i < fields.size(); ++i)
    ticks += std::stol(fields[i]);
  return ticks * 1000 / sysconf(_SC_CLK_TCK);
}

long CountEntries(const fs::path& directory) {
  std::error_code gone;
  long count = 0;
  for (fs::directory_iterator entry(directory, gone), end; !gone && entry != end;
       entry.increment(gone)) {
    ++count;
  }
  return count;
}

/// Reports are excluded: they grow by one line per test, which is checked elsewhere.
bool Counts(const fs::directory_entry& entry) {
  std::error_code ignored;
  return entry.is_regular_file(ignored) && !entry.is_symlink(ignored) &&
         entry.path().parent_path().filename() != "log";
}

long KibOfFiles(const fs::path& directory) {
  std::error_code gone;
  std::uintmax_t bytes = 0;
  for (fs::recursive_directory_iterator entry(directory, gone), end; !gone && entry != end;
       entry.increment(gone)) {
    std::error_code ignored;
    const std::uintmax_t size = Counts(*entry) ? entry->file_size(ignored) : 0;
    if (!ignored) bytes += size;
  }
  return static_cast<long>(bytes / 1024);
}

std::vector<pid_t> Children(pid_t process) {
  std::vector<pid_t> children;
  std::error_code gone;
  for (fs::directory_iterator task(ProcessDirectory(process) / "task", gone), end;
       !gone && task != end; task.increment(gone)) {
    std::ifstream list(task->path() / "children");
    children.insert(children.end(), std::istream_iterator<pid_t>(list), {});
  }
  return children;
}

/// All descendants of `ancestor`, nearer ones first.
std::vector<pid_t> Descendants(pid_t ancestor) {
  std::vector<pid_t> found = Children(ancestor);
  for (std::size_t i = 0; i < found.size(); ++i) {
    const std::vector<pid_t> children = Children(found[i]);
    found.insert(found.end(), children.begin(), children.end());
  }
  return found;
}

bool IsZombie(pid_t process) {
  const std::vector<std::string> fields = StatFields(process);
  return !fields.empty() && fields[0] == "Z";
}

std::vector<long> Sorted(const std::vector<Sample>& samples, Figure figure) {
  std::vector<long> values;
  values.reserve(samples.size());
  for (const Sample& sample : samples) values.push_back(sample[figure]);
  std::ranges::sort(values);
  return values;
}

std::string Grew(const std::string& what, long from, long to) {
  return what + " grew from " + std::to_string(from) + " to " + std::to_string(to);
}

/// Processor time of a tenth in milliseconds.
long TenthCpuMs(const Tenths& tenths, std::size_t index) {
  return tenths[index].Last(kCpuMs) - (index == 0 ? 0 : tenths[index - 1].Last(kCpuMs));
}

/// Samples vary with what the current test has open; leftovers raise all of them.
bool HasMore(const Tenth& late, const Tenth& early, Figure figure) {
  return late.Least(figure) > early.Least(figure) && late.Median(figure) > early.Median(figure) &&
         late.Most(figure) > early.Most(figure);
}

}  // namespace

long Tenth::Median(Figure figure) const {
  return Sorted(samples, figure)[samples.size() / 2];
}

long Tenth::Least(Figure figure) const {
  return Sorted(samples, figure).front();
}

long Tenth::Most(Figure figure) const {
  return Sorted(samples, figure).back();
}

pid_t FindProgram(pid_t ancestor, const std::string& name) {
  std::vector<pid_t> processes = Descendants(ancestor);
  processes.insert(processes.begin(), ancestor);
  for (const pid_t process : processes) {
    std::ifstream file(ProcessDirectory(process) / "comm");
    std::string command;
    if (std::getline(file, command) && command == name) return process;
  }
  return 0;
}

std::size_t CountDescendants(pid_t ancestor) {
  return Descendants(ancestor).size();
}

Sample Look(pid_t harness, const fs::path& boardTmp) {
  const fs::path directory = ProcessDirectory(harness);
  const std::vector<pid_t> all = Descendants(getpid());
  Sample sample{};
  sample[kResident] = NumberIn(directory / "status", "VmRSS:");
  sample[kPeak] = NumberIn(directory / "status", "VmHWM:");
  sample[kPrivate] = NumberIn(directory / "smaps_rollup", "Private_Dirty:");
  sample[kDescriptors] = CountEntries(directory / "fd");
  sample[kThreads] = NumberIn(directory / "status", "Threads:");
  sample[kProcesses] = static_cast<long>(all.size());
  sample[kZombies] = std::ranges::count_if(all, IsZombie);
  sample[kBoardTmp] = KibOfFiles(boardTmp);
  sample[kCpuMs] = CpuMs(harness);
  return sample;
}

std::vector<std::string> Growth(const Tenths& tenths) {
  constexpr struct {
    Figure figure;
    const char* name;
  } kCounted[] = {{kDescriptors, "descriptors"},
                  {kThreads, "threads"},
                  {kProcesses, "processes on the board"},
                  {kZombies, "zombies"}};
  constexpr Figure kMeasured[] = {kPrivate, kBoardTmp};
  const Tenth& early = tenths[1];
  const Tenth& late = tenths.back();
  std::vector<std::string> grown;
  for (const auto& row : kCounted) {
    if (HasMore(late, early, row.figure))
      grown.push_back(Grew(row.name, early.Median(row.figure), late.Median(row.figure)));
  }
  for (const Figure figure : kMeasured) {
    const long from = early.Median(figure);
    const long to = late.Median(figure);
    if (figure == kPrivate && !kMemoryTells) continue;
    if (to > from + from / kBreathDivisor + kBreathKib)
      grown.push_back(
          Grew(figure == kPrivate ? "private memory (KiB)" : "files in /tmp (KiB)", from, to));
  }
  const double before = static_cast<double>(TenthCpuMs(tenths, 1));
  const double after = static_cast<double>(TenthCpuMs(tenths, kTenths - 1));
  if (after > kSlower * before + kSlowerMs)
    grown.push_back(Grew("processor time of a tenth (ms)", static_cast<long>(before),
                         static_cast<long>(after)));
  return grown;
}

}  // namespace endurance
