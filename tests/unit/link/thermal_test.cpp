// Thermal, device and secure video path tests.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>

#include "DeviceTestCase.h"
#include "LinkFaults.h"
#include "LinkPlay.h"
#include "Scripted.h"
#include "SimHal.h"
#include "UTSvpTestCase.h"
#include "UTThermalModule.h"
#include "UTThermalTestCase.h"

namespace {

using test::Count;
using test::PlayTest;

/// Every wait of a session changes the temperature and ends with a notification.
void WarmUpWhileWaiting() {
  simhal::Apply("thermal off");
  scripted::OnWait([degrees = 60](unsigned long us) mutable {
    EXPECT_EQ(us, 3'000'000u);
    const std::size_t before = simhal::Calls().size();
    simhal::Apply("temperature " + std::to_string(degrees++));
    while (simhal::Calls().size() == before) std::this_thread::yield();
  });
}

TEST(Thermal, SessionEndsAfterTheThirdNotification) {
  WarmUpWhileWaiting();
  const auto run = scripted::Play("", TEST_K2V_RHAL_thermal_callback);
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.output,
            "my_thermal_cb: cur_degree(60)\nTEST_K2V_RHAL_thermal_callback: sleep\n"
            "my_thermal_cb: cur_degree(61)\nTEST_K2V_RHAL_thermal_callback: sleep\n"
            "my_thermal_cb: cur_degree(62)\nTEST_K2V_RHAL_thermal_callback: sleep\n"
            "TEST_K2V_RHAL_thermal_callback: exit\n");
}

TEST(Thermal, SessionsRunInChildrenWithoutDuplicateOutput) {
  WarmUpWhileWaiting();
  const auto one = PlayTest(UTThermalTestCase::TestCase1);
  EXPECT_EQ(one.result, 0);
  EXPECT_EQ(Count(one.output, ",TestCase1 ,"), 1) << one.output;
  EXPECT_EQ(Count(one.output, "TEST_K2V_RHAL_thermal_callback: exit\n"), 1);
  EXPECT_TRUE(one.output.ends_with("TestCase1: child process done. status=0\n"));
  const auto two = PlayTest(UTThermalTestCase::TestCase2);
  EXPECT_EQ(two.result, 0);
  EXPECT_EQ(Count(two.output, ",TestCase2 ,"), 1) << two.output;
  EXPECT_EQ(Count(two.output, "TEST_K2V_RHAL_thermal_callback: exit\n"), 2);
  EXPECT_EQ(Count(two.output, ") exited, status=0\n"), 2) << two.output;
}

TEST(Thermal, FailedRegistrationFailsTheTest) {
  simhal::Fail("K2V_RHAL_register_thermal_notifier", -1);
  const auto one = PlayTest(UTThermalTestCase::TestCase1);
  EXPECT_EQ(one.result, 1);
  EXPECT_TRUE(one.output.ends_with("TestCase1: child process done. status=256\n")) << one.output;
  simhal::Reset();
  WarmUpWhileWaiting();
  simhal::Fail("K2V_RHAL_register_thermal_notifier", -1, 1, 1);
  const auto two = PlayTest(UTThermalTestCase::TestCase2);
  EXPECT_EQ(two.result, 1) << "one of the two children";
  EXPECT_EQ(Count(two.output, "status=256\n"), 1) << two.output;
  EXPECT_EQ(Count(two.output, "status=0\n"), 1) << two.output;
}

TEST(Thermal, FailedForkIsReported) {
  faults::FailFork(1, EAGAIN);
  const auto one = PlayTest(UTThermalTestCase::TestCase1);
  EXPECT_EQ(one.result, 1);
  EXPECT_TRUE(one.output.ends_with("\033[mTestCase1: fork fail. ret=-1\n")) << one.output;
  // The first of two sessions may never end: nothing waits for it, and it is not left running.
  scripted::OnWait([](unsigned long) { pause(); });
  for (const int nth : {1, 2}) {
    faults::FailFork(nth, EAGAIN);
    const auto two = PlayTest(UTThermalTestCase::TestCase2);
    EXPECT_EQ(two.result, 1);
    EXPECT_TRUE(two.output.ends_with("\033[mTestCase2: fork fail. ret=-1\n")) << two.output;
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1) << "a session is still running";
  }
}

TEST(Thermal, ModulePrintsEveryAccess) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(UTThermalModule::GetInstance(), UTThermalModule::GetInstance());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "GetInstance(59)\nGetInstance(59)\n");
}

TEST(Device, PassesIfTheHalWritesZero) {
  EXPECT_EQ(PlayTest(Wrapper_TestFunc_Device_Ready).result, 0);
  simhal::Apply("device ready 4");
  EXPECT_EQ(PlayTest(Wrapper_TestFunc_Device_Ready).result, 1);
  EXPECT_EQ(PlayTest(Wrapper_TestFunc_Device_Healthy).result, 0);
  simhal::Apply("device healthy -4");
  EXPECT_EQ(PlayTest(Wrapper_TestFunc_Device_Healthy).result, 1);
  simhal::Fail("K2V_RHAL_DEVICE_Healthy", -1);
  EXPECT_EQ(PlayTest(Wrapper_TestFunc_Device_Healthy).result, 0) << "the result is ignored";
}

TEST(Device, SlaveIsPolledEverySecondUntilTheProgramEnds) {
  const pid_t child = getpid();
  EXPECT_EXIT(
      {
        scripted::OnWait([polls = 0, child](unsigned long us) mutable {
          if (us != 1'000'000 || getpid() == child) _exit(2);
          if (++polls == 2) simhal::Apply("link silent on");
          if (polls < 3) return;
          std::fflush(stdout);
          _exit(7);
        });
        std::fflush(stdout);
        dup2(2, 1);
        Wrapper_TestFunc_Slave_Ready(nullptr);
      },
      testing::ExitedWithCode(7),
      "slave_ready ret = 1 \nK2V_RHAL_slave_ready ret = 1 \nK2V_RHAL_slave_ready ret = 0 \n");
}

TEST(SecureVideoPath, OutcomesAreFixed) {
  EXPECT_EQ(PlayTest(UTSvpTestCase::UTSvpTestCase1).result, 0);
  const auto run = PlayTest(UTSvpTestCase::UTSvpTestCase2);
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(run.output.starts_with("\033[1;31m ")) << run.output;
  EXPECT_NE(run.output.find(",UTSvpTestCase2 ,"), std::string::npos);
}

}  // namespace
