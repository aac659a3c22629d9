// Runs that are killed at random moments and resumed: in every result format each test appears
// once, with the same verdict. CVN_KILLS is the number of kills (default 6; ./test.sh --kills).
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "UnattendedFixture.h"

namespace {

namespace fs = std::filesystem;
using test::FileText;
using test::Pty;
using Clock = std::chrono::steady_clock;

/// Ids of tests and the verdicts of their results, as "pass" or "error".
using Results = std::multimap<std::string, std::string>;

std::string Word(const std::string& said) {
  const bool passed = said == "PASS" || said == "ok" || said == "pass" || said.empty();
  return passed ? "pass" : "error";
}

/// Extracts a result from every match of the expression; `id` and `verdict` are the numbers of the
/// groups that contain them.
Results Find(const std::string& text, const std::string& expression, int id, int verdict) {
  Results results;
  const std::regex regex(expression);
  for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) {
    std::string name = (*at)[static_cast<std::size_t>(id)];
    std::replace(name.begin(), name.end(), '.', '/');  // as in LAVA names
    results.emplace(name, Word((*at)[static_cast<std::size_t>(verdict)]));
  }
  return results;
}

class KillsTest : public test::UnattendedTest {
 protected:
  /// The results as found in each format.
  std::map<std::string, Results> ReadAll() const {
    const auto text = [&](const char* file) { return FileText(OnBoard(file)); };
    constexpr char kCase[] =
        "<testcase [^>]*name=\"(\\S+) [^>]*>\\s*(?:<properties>\\s*(?:<property "
        "[^>]*>\\s*)*</properties>)?"
        "\\s*(?:<(error|failure|skipped))?";
    const std::string merged = test::RunShell(CVN_SOURCE_DIRECTORY "/tools/report/cvnreport " +
                                              test::Quoted(OnBoard("/tmp/res")) + " --junit -")
                                   .output;
    return {
        {"report", Find(merged, kCase, 1, 2)},
        {"console", Find(Screen(), "(PASS|ERROR|FAIL|SKIPPED|BLOCKED) +(\\S+) UTVpq Test", 2, 1)},
        {"journal", Find(text("/tmp/res/journal"), "end\\t(\\S+)\\t(\\S+)\\t", 1, 2)},
        {"json",
         Find(text("/tmp/o.json"),
              "\"test-end\"[^\\n]*\"test\": \"([^\"]+)\"[^\\n]*\"verdict\": \"(\\w+)\"", 1, 2)},
        {"junit", Find(text("/tmp/o.xml"), kCase, 1, 2)},
        {"tap", Find(text("/tmp/o.tap"), "(ok|not ok) \\d+ - (\\S+) UTVpq", 2, 1)},
        {"lava", Find(text("/tmp/o.lava"), "CASE_ID=(\\S+) RESULT=(\\w+)", 1, 2)}};
  }

  /// Starts or resumes the run and kills it, together with the board, `delay` after it has
  /// started writing. Returns false if it had ended before.
  bool KillAfter(const std::vector<std::string>& arguments, Clock::duration delay) {
    const bool resumed = arguments[0] == "--resume";
    Pty& pty = Start({.arguments = arguments});
    while (!(resumed ? test::Contains(pty.Transcript(), "Report file path")
                     : fs::exists(OnBoard("/tmp/res"))) &&
           !pty.ExpectEnd(1)) {
    }
    const Clock::time_point end = Clock::now() + delay;
    while (Clock::now() < end && !pty.ExpectEnd(1)) {
    }
    kill(pty.Pid(), SIGKILL);
    EXPECT_TRUE(pty.ExpectEnd());
    return pty.Wait() == 128 + SIGKILL;
  }
};

TEST_F(KillsTest, EveryTestHasOneResultAfterRepeatedKills) {
  const std::vector<std::string> run = {
      "--run",       "UTVpqModule/2*", "--results",    "/tmp/res", "--json",
      "/tmp/o.json", "--tap",          "/tmp/o.tap",   "--junit",  "/tmp/o.xml",
      "--lava",      "/tmp/o.lava",    "--no-operator"};
  const char* asked = std::getenv("CVN_KILLS");
  const int kills = asked == nullptr ? 6 : std::atoi(asked);
  const Clock::time_point begin = Clock::now();
  ASSERT_EQ(Run(run), 0);
  const auto whole = Clock::now() - begin;
  const std::size_t tests = ReadAll()["json"].size();
  ASSERT_EQ(tests, 56U);

  std::mt19937 random(static_cast<std::uint32_t>(kills));
  const auto delay = [&] { return whole * static_cast<int>(random() % 1000) / 1000; };
  int cutOff = 0;
  for (int killed = 0; killed < kills;) {
    fs::remove_all(OnBoard("/tmp/res"));
    if (KillAfter(run, delay())) ++killed;
    // A resumed run may be killed as well.
    if (killed < kills && random() % 3 == 0 && KillAfter({"--resume", "/tmp/res"}, delay()))
      ++killed;
    const int status = Run({"--resume", "/tmp/res"});
    if (status == 99) {
      // No test of the run had started.
      EXPECT_TRUE(!fs::exists(OnBoard("/tmp/res/journal")) ||
                  !test::Contains(FileText(OnBoard("/tmp/res/journal")), "start\t"))
          << Screen();
      continue;
    }
    const auto all = ReadAll();
    const Results& told = all.at("json");
    EXPECT_EQ(told.size(), tests) << killed;
    for (const auto& [reader, results] : all) EXPECT_EQ(results, told) << reader << killed;
    std::size_t passed = 0;
    for (const auto& [id, word] : told) {
      EXPECT_EQ(told.count(id), 1U) << id;
      if (word == "pass") ++passed;
    }
    cutOff += static_cast<int>(tests - passed);
    EXPECT_EQ(status, passed == tests ? 0 : 1) << Screen();
  }
  std::printf("%d kills, %d of them in a test\n", kills, cutOff);
}

}  // namespace
