// The link, device and thermal modules on the simulated board: whole modules in a row, injected
// failures, and the clock tool with the board's register file.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "BoardFixture.h"

namespace {

using test::Pty;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr char kReported[] = "Test Report file generated";
constexpr int kLinkTests = 26;  // without the clock tool

class LinkTest : public test::BoardFixture {
 protected:
  /// Starts the harness and opens the menu of a module.
  Pty& OpenModule(const std::vector<std::string>& choices, const test::BoardOptions& options) {
    Pty& pty = Start(options);
    for (const std::string& choice : choices) EXPECT_TRUE(pty.Answer(kChoice, choice));
    return pty;
  }

  static testing::AssertionResult RunTest(Pty& pty, int test) {
    if (auto chosen = pty.Answer(kChoice, std::to_string(test)); !chosen) return chosen;
    return pty.Expect(kReported);
  }

  void Quit(Pty& pty, int total, int passed) const {
    EXPECT_TRUE(pty.Answer(kChoice, "q"));
    EXPECT_EQ(pty.Wait(), 0);
    const std::string line = "Total TestCase : " + std::to_string(total) +
                             " +PASS : " + std::to_string(passed) + " +FAIL : +" +
                             std::to_string(total - passed) + " ";
    EXPECT_TRUE(std::regex_search(ReportText(), std::regex(line))) << ReportText();
  }
};

std::ptrdiff_t Count(const std::string& text, const std::string& regex) {
  const std::regex pattern(regex);
  return std::distance(std::sregex_iterator(text.begin(), text.end(), pattern), {});
}

TEST_F(LinkTest, AllLinkTestsPassInARow) {
  Pty& pty = OpenModule({"6", "0"}, {.timeScale = 20});
  for (int test = 0; test < kLinkTests; ++test) ASSERT_TRUE(RunTest(pty, test)) << test;
  ASSERT_TRUE(pty.Answer(kChoice, "26"));
  ASSERT_TRUE(pty.Answer("input:\n", "5"));
  Quit(pty, kLinkTests + 1, kLinkTests + 1);
  // One block per test, two more for threads; two instead of one for processes.
  EXPECT_EQ(Count(pty.Transcript(), " Passed\\.\n"), kLinkTests + 2 * 2 + 2);
  EXPECT_EQ(Count(pty.Transcript(), " Failed\\.\n"), 0);
  for (const char* role : {"Child", "Parent"}) {
    EXPECT_EQ(Count(pty.Transcript(), role + std::string(" process!\n")), 2) << role;
  }
}

TEST_F(LinkTest, ClockToolChangesTheCounterSpeed) {
  constexpr int kPresses = 400;  // 8192 presses would double the speed
  Pty& pty = OpenModule({"6", "0", "26"}, {});
  for (int press = 0; press < kPresses; ++press) {
    ASSERT_TRUE(pty.Answer("input:\n", "1"));
  }
  ASSERT_TRUE(pty.Expect("Speed = 400\033[m\n"));
  ASSERT_TRUE(pty.Answer("input:\n", "4"));
  ASSERT_TRUE(pty.Answer("input:\n", "5", 30000));
  std::istringstream lines(pty.Before());
  std::vector<int> speeds;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("stc_diff=")) speeds.push_back(std::stoi(line.substr(9)));
  }
  ASSERT_GT(speeds.size(), 10u) << pty.Before();
  std::ranges::sort(speeds);
  // Single differences vary with the time taken by the shell.
  EXPECT_NEAR(speeds[speeds.size() / 2], 90000.0 * (8192 + kPresses) / 8192, 1500);
  EXPECT_NE(Cvnsim("state").find("broadcast clock at speed step 400\n"), std::string::npos);
  Quit(pty, 1, 1);
}

TEST_F(LinkTest, DeviceTestsReportTheBoardsState) {
  Pty& pty = OpenModule({"6", "1"}, {.scenario = "device healthy 3\n", .timeScale = 20});
  for (const int test : {0, 1, 2}) ASSERT_TRUE(RunTest(pty, test));
  EXPECT_EQ(Count(pty.Before(), "(Media|Broadcast) Clock_Value = [1-9][0-9]* \n"), 2);
  ASSERT_TRUE(pty.Answer(kChoice, "3"));
  ASSERT_TRUE(pty.Expect("K2V_RHAL_slave_ready ret = 1 \n"));
  Cvnsim("link silent on");
  ASSERT_TRUE(pty.Expect("K2V_RHAL_slave_ready ret = 0 \n"));
  pty.Send("\x03");
  EXPECT_EQ(pty.Wait(), 128 + SIGINT) << "the polling loop ends when the program is interrupted";
}

TEST_F(LinkTest, ThermalSessionsFollowTheTemperature) {
  Pty& pty = OpenModule({"4", "0"}, {.scenario = "thermal off\n", .timeScale = 20});
  ASSERT_TRUE(pty.ExpectRegex("([0-9]+) *\\.UTThermal Function Test"));
  const std::string module = pty.Groups()[1];
  ASSERT_TRUE(pty.Answer(kChoice, module));
  ASSERT_TRUE(pty.Answer(kChoice, "0"));
  for (const char* degrees : {"61", "72", "83"}) {
    ASSERT_TRUE(pty.Expect("TEST_K2V_RHAL_thermal_callback: sleep\n"));
    Cvnsim("temperature " + std::string(degrees));
    ASSERT_TRUE(pty.Expect("my_thermal_cb: cur_degree(" + std::string(degrees) + ")\n"));
  }
  ASSERT_TRUE(pty.Expect("TEST_K2V_RHAL_thermal_callback: exit\n"));
  ASSERT_TRUE(pty.Expect("TestCase1: child process done. status=0\n"));
  Cvnsim("thermal 2");
  ASSERT_TRUE(RunTest(pty, 1));
  EXPECT_EQ(Count(pty.Before(), "TestCase2: child_pid\\([0-9]+\\) exited, status=0\n"), 2);
  EXPECT_GE(Count(pty.Before(), "my_thermal_cb: cur_degree\\(83\\)\n"), 6) << pty.Before();
  Quit(pty, 2, 2);
}

}  // namespace
