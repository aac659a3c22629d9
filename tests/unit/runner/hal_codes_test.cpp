// Tests of all kinds with a HAL whose functions, one at a time, return arbitrary numbers.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "SimHal.h"
#include "TestFrame.h"
#include "runner/IsolatedTest.h"
#include "runner/TestList.h"
#include "runner/Text.h"

namespace {

constexpr int kCodes[] = {INT_MIN, -3, 1, INT_MAX};

/// Modules whose tests check results, and the functions whose results they ignore.
constexpr struct {
  const char* moduleClass;
  const char* unregarded;
} kLooking[] = {
    {"VbeModule", "K2V_RHAL_VBE_DISP_ScreenShift"},
    {"UTVfeHdmiModule",
     "K2V_RHAL_VFE_HDMI_Uninitialize K2V_RHAL_VFE_HDMI_GetRxPortCnt "
     "K2V_RHAL_VFE_HDMI_GetARCChannel K2V_RHAL_VFE_HDMI_Get_isHDMI20Supported "
     "K2V_RHAL_VFE_HDMI_isHDCP22Supported K2V_RHAL_VFE_HDMI_Get_HDCP_Version"},
    {"CRlinkModule", "RLink::QueryBufferFreeSize"},
};
constexpr const char* kNotLooking[] = {"UTGalModule", "UTVpqModule", "VpqModule", "VpqExtModule"};

std::set<std::string> FunctionsCalled() {
  std::set<std::string> names;
  for (const std::string& call : simhal::Calls()) names.insert(call.substr(0, call.find('(')));
  return names;
}

/// Run in a separate process: runs the test normally, and then with every function that it calls
/// failing with every code. Writes function and code before, and the result after each run.
int RunWithEveryCode(TestCase& test, const std::string& notes) {
  std::ofstream out(notes);
  simhal::Reset();
  test.Execute();
  for (const std::string& function : FunctionsCalled()) {
    for (const int code : kCodes) {
      simhal::Reset();
      simhal::Fail(function, code);
      out << function << ' ' << code << ' ' << std::flush;
      out << test.Execute() << std::endl;
    }
  }
  return 0;
}

/// The functions whose failure did not fail the test, separated by blanks.
std::string PassedWithout(const std::string& notes) {
  std::set<std::string> functions;
  std::ifstream file(notes);
  std::string function;
  int code = 0;
  int result = 0;
  while (file >> function >> code >> result) {
    if (result == 0) functions.insert(function);
  }
  return runner::Joined({functions.begin(), functions.end()}, " ");
}

std::string RunIsolated(TestCase& test) {
  const std::string notes = testing::TempDir() + "codes";
  runner::IsolatedTest child;
  EXPECT_EQ(child.Start([&] { return RunWithEveryCode(test, notes); }), "");
  for (std::string output; child.Wait(1000, output); output.clear()) {
  }
  std::ostringstream text;
  text << std::ifstream(notes).rdbuf();
  EXPECT_EQ(child.End().kind, runner::ChildEnd::kReturned) << text.str();
  std::string passed = PassedWithout(notes);
  std::remove(notes.c_str());
  return passed;
}

class HalCodes : public testing::TestWithParam<const char*> {};

TEST_P(HalCodes, CrashNoTestAndFailTestsThatCheckThem) {
  TestFrame::GetInstance()->DoInit();
  const auto* const row = std::find_if(std::begin(kLooking), std::end(kLooking), [](const auto& r) {
    return std::string(r.moduleClass) == GetParam();
  });
  int tests = 0;
  for (const runner::TestEntry& entry : runner::AllTests()) {
    if (entry.moduleClass != GetParam() || !entry.test->hasFunction() || entry.test->asks())
      continue;
    ++tests;
    std::istringstream passed(RunIsolated(*entry.test));
    for (std::string function; row != std::end(kLooking) && passed >> function;)
      EXPECT_NE(std::string(row->unregarded).find(function), std::string::npos)
          << entry.id << " passes where " << function << " fails";
  }
  EXPECT_GT(tests, 1);
}

std::vector<const char*> Modules() {
  std::vector<const char*> modules(std::begin(kNotLooking), std::end(kNotLooking));
  for (const auto& row : kLooking) modules.push_back(row.moduleClass);
  return modules;
}

INSTANTIATE_TEST_SUITE_P(Modules, HalCodes, testing::ValuesIn(Modules()),
                         [](const auto& module) { return std::string(module.param); });

}  // namespace
