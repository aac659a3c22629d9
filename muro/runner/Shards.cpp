#include "Shards.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <numeric>
#include <utility>

#include "InputFile.h"
#include "ResultDirectory.h"

namespace runner {
namespace {

constexpr std::size_t kLargestFile = std::size_t{256} << 20;
constexpr double kLongestS = 1e9;
constexpr int64_t kUnknownMs = 1000;  // if no test has a duration

/// Tests that stay together, as indexes into the selection.
struct Group {
  std::vector<std::size_t> tests;
  int64_t ms = 0;
};

/// A shard while it is being filled.
struct Load {
  int64_t ms = 0;
  std::size_t tests = 0;
  std::vector<std::size_t> places;

  bool operator<(const Load& other) const {
    return std::pair(ms, tests) < std::pair(other.ms, other.tests);
  }
};

int64_t Milliseconds(double seconds) {
  return static_cast<int64_t>(seconds * 1000);
}

/// The duration assumed for a test without one.
int64_t UsualMs(const Durations& durations) {
  int64_t sum = 0;
  for (const auto& [id, seconds] : durations) sum += Milliseconds(seconds);
  return durations.empty() ? kUnknownMs : sum / static_cast<int64_t>(durations.size());
}

std::vector<Group> GroupsOf(const std::vector<TestEntry>& selection, const Durations& durations) {
  const int64_t usual = UsualMs(durations);
  std::vector<Group> groups;
  std::map<std::string, std::size_t> byModule;
  for (std::size_t i = 0; i < selection.size(); ++i) {
    const TestEntry& entry = selection[i];
    std::size_t at = groups.size();
    if (entry.buildsOnOthers) at = byModule.try_emplace(entry.moduleClass, at).first->second;
    if (at == groups.size()) groups.emplace_back();
    const auto known = durations.find(entry.id);
    groups[at].tests.push_back(i);
    groups[at].ms += known == durations.end() ? usual : Milliseconds(known->second);
  }
  return groups;
}

/// The value of an XML attribute in a tag; empty if it is missing.
std::string AttributeOf(std::string_view tag, const std::string& name) {
  const std::string begin = " " + name + "=\"";
  const std::size_t at = tag.find(begin);
  if (at == tag.npos) return "";
  const std::string_view value = tag.substr(at + begin.size());
  return std::string(value.substr(0, value.find('"')));
}

std::string ReadJUnitDurations(const std::string& path, Durations& durations) {
  std::string text;
  std::string problem = ReadInputFile(path, kLargestFile + 1, text);
  if (!problem.empty()) return problem;
  if (text.size() > kLargestFile) return path + ": is larger than 256 MiB";
  for (std::size_t at = text.find("<testcase "); at != text.npos;
       at = text.find("<testcase ", at + 1)) {
    const std::string_view tag = std::string_view(text).substr(at, text.find('>', at) - at);
    const std::string time = AttributeOf(tag, "time");
    double seconds = 0;
    const auto [end, error] = std::from_chars(time.data(), time.data() + time.size(), seconds);
    const bool isTime = error == std::errc() && end == time.data() + time.size() && seconds >= 0 &&
                        seconds <= kLongestS;
    if (isTime) {
      const std::string title = AttributeOf(tag, "name");
      durations[BaseId(title.substr(0, title.find(' ')))] = seconds;
    }
  }
  return durations.empty() ? path + ": no JUnit results with times" : "";
}

std::string ReadJournalDurations(const std::string& directory, Durations& durations) {
  RunHead head;
  std::vector<JournalEntry> entries;
  std::string problem = ReadJournal(directory, head, entries);
  for (const JournalEntry& entry : entries) {
    if (entry.ended) durations[BaseId(entry.id)] = entry.seconds;
  }
  if (problem.empty() && durations.empty()) problem = directory + ": no finished test";
  return problem;
}

}  // namespace

std::string ReadDurations(const std::string& path, Durations& durations) {
  std::error_code ignored;
  return std::filesystem::is_directory(path, ignored) ? ReadJournalDurations(path, durations)
                                                      : ReadJUnitDurations(path, durations);
}

/// The longest group goes first, each to the shard with the smallest load so far.
std::vector<TestEntry> TestsOf(const Shard& shard, const std::vector<TestEntry>& selection,
                               const Durations& durations) {
  std::vector<Group> groups = GroupsOf(selection, durations);
  std::ranges::stable_sort(groups, std::ranges::greater(), &Group::ms);
  std::vector<Load> loads(shard.of);
  for (const Group& group : groups) {
    Load& least = *std::ranges::min_element(loads, std::less<>());
    least.ms += group.ms;
    least.tests += group.tests.size();
    least.places.insert(least.places.end(), group.tests.begin(), group.tests.end());
  }
  std::vector<std::size_t>& places = loads[shard.number - 1].places;
  std::ranges::sort(places);
  std::vector<TestEntry> tests;
  tests.reserve(places.size());
  for (const std::size_t place : places) tests.push_back(selection[place]);
  return tests;
}

}  // namespace runner
