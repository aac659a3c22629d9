// Division of a selection into shards.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "runner/Shards.h"

namespace {

using runner::Durations;
using runner::TestEntry;

std::vector<TestEntry> Selection(int alone, int together) {
  std::vector<TestEntry> tests;
  const auto add = [&](const std::string& module, int number, bool buildsOnOthers) {
    const std::string id = module + "/" + std::to_string(number);
    tests.push_back({nullptr, module, id, "", "", buildsOnOthers});
  };
  for (int i = 0; i < together; ++i) add("VscModule", i, true);
  for (int i = 0; i < alone; ++i) add("UTVpqModule", i, false);
  for (int i = 0; i < together; ++i) add("VbeModule", i, true);
  return tests;
}

std::vector<std::string> Ids(const std::vector<TestEntry>& tests) {
  std::vector<std::string> ids(tests.size());
  std::ranges::transform(tests, ids.begin(), &TestEntry::id);
  return ids;
}

double SecondsOf(const std::vector<TestEntry>& tests, const Durations& durations) {
  return std::accumulate(tests.begin(), tests.end(), 0.0, [&](double sum, const TestEntry& test) {
    return sum + durations.at(test.id);
  });
}

TEST(ShardsTest, AreDisjointAndCompleteAndKeepDependentModulesTogether) {
  const std::vector<TestEntry> all = Selection(50, 7);
  const std::vector<std::string> order = Ids(all);
  for (const std::size_t of : {1UL, 2UL, 3UL, 5UL, 8UL, 200UL}) {
    std::vector<std::string> found;
    for (std::size_t number = 1; number <= of; ++number) {
      const std::vector<std::string> ids = Ids(runner::TestsOf({number, of}, all, {}));
      // In list order, and with all or none of the tests of a module.
      EXPECT_TRUE(std::ranges::is_sorted(ids, {}, [&](const std::string& id) {
        return std::ranges::find(order, id) - order.begin();
      }));
      for (const char* module : {"VscModule/", "VbeModule/"}) {
        const auto count =
            std::ranges::count_if(ids, [&](const auto& id) { return id.starts_with(module); });
        EXPECT_TRUE(count == 0 || count == 7) << number << " of " << of << ": " << count;
      }
      found.insert(found.end(), ids.begin(), ids.end());
    }
    EXPECT_EQ(std::multiset<std::string>(found.begin(), found.end()),
              std::multiset<std::string>(order.begin(), order.end()))
        << of;
  }
  // All machines must compute the same shards.
  EXPECT_EQ(Ids(runner::TestsOf({2, 3}, Selection(4, 2), {})),
            (std::vector<std::string>{"UTVpqModule/3", "VbeModule/0", "VbeModule/1"}));
}

TEST(ShardsTest, HaveSimilarDurations) {
  std::mt19937 random(7);
  const std::vector<TestEntry> all = Selection(300, 20);
  Durations durations;
  for (const TestEntry& test : all)
    durations[test.id] = static_cast<double>(random() % 20000) / 1e3;
  const double whole = SecondsOf(all, durations);
  for (const std::size_t of : {2UL, 3UL, 4UL, 7UL}) {
    for (std::size_t number = 1; number <= of; ++number)
      EXPECT_LE(SecondsOf(runner::TestsOf({number, of}, all, durations), durations),
                1.1 * whole / static_cast<double>(of));
  }
  // A test of unknown duration counts as the average of the others: 10 s.
  const std::vector<TestEntry> three = Selection(3, 0);
  EXPECT_EQ(Ids(runner::TestsOf({1, 2}, three, {{"UTVpqModule/0", 14}, {"UTVpqModule/1", 6}})),
            std::vector<std::string>{"UTVpqModule/0"});
}

TEST(ShardsTest, DurationsComeFromAJournalOrFromJUnit) {
  const std::string directory = testing::TempDir();
  std::ofstream(directory + "/journal")
      << "cvntester journal 1\ndirectory\t/\nword\t--run\nword\tA\ntest\tA/1\ntest\tA/2\ntests\t2\n"
         "start\tA/1\nend\tA/1\tPASS\t0\t1.500\t\nstart\tA/1@2\nend\tA/1@2\tFAIL\t1\t2.500\tx\n"
         "suspect\tA/1@2\nstart\tA/2\n";
  Durations durations;
  EXPECT_EQ(runner::ReadDurations(directory, durations), "");
  EXPECT_EQ(durations, (Durations{{"A/1", 2.5}}));

  const std::string file = directory + "/junit.xml";
  std::ofstream(file) << "<testsuites time=\"9\"><testsuite name=\"A\" time=\"8\">\n"
                         "<testcase classname=\"A\" name=\"A/1 One &lt;\" time=\"0.250\">\n"
                         "<testcase classname=\"A\" name=\"A/2@3 Two\" time=\"7\"/>"
                         "<testcase name=\"A/3\" time=\"nan\"/><testcase name=\"A/4\" time=\"-1\"/>"
                         "<testcase name=\"A/5\" time=\"1s\"/><testcase name=\"A/6\"/>";
  durations.clear();
  EXPECT_EQ(runner::ReadDurations(file, durations), "");
  EXPECT_EQ(durations, (Durations{{"A/1", 0.25}, {"A/2", 7}}));

  const struct {
    std::string path, problem;
  } kWrong[] = {{directory + "/none", "/none"},
                {directory + "/other", "/other: no JUnit results with times"},
                {directory + "/empty", "/journal"}};
  std::ofstream(directory + "/other") << "<html/>";
  ASSERT_EQ(mkdir((directory + "/empty").c_str(), 0755), 0);
  for (const auto& wrong : kWrong) {
    Durations none;
    const std::string problem = runner::ReadDurations(wrong.path, none);
    EXPECT_NE(problem.find(wrong.problem), std::string::npos) << problem;
  }
}

}  // namespace
