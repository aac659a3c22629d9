// The link tests with the simulated slave: each step that can fail, and the data received by the
// slave.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "LinkFaults.h"
#include "LinkMemory.h"
#include "LinkPlay.h"
#include "RlinkTestCase.h"
#include "Scripted.h"
#include "SimHal.h"

namespace {

using test::Count;
using test::PlayTest;
using TestFunction = int (*)(char*);

std::string Result(const std::string& name, const std::string& outcome) {
  const std::string stars(46, '*');
  return '\n' + stars + '\n' + name + ' ' + outcome + ".\n" + stars + "\n\n";
}

TEST(LinkTests, ReportEachStepAndPassTheParametersToTheSlave) {
  const std::string open = "Open session success. session_id = 00000001\n";
  const struct {
    TestFunction test;
    std::string name;
    std::string output;
    std::string call;  // without the result
  } kCases[] = {
      {Wrapper_TestFunc_OpenCloseSession, "OpenCloseSession",
       "Close session success. session_id = 00000001\n", "OpenSession(1413829460, "},
      {Wrapper_TestFunc_Send_Test1, "Send_Test1", "Send OK.\nReturn value correct.\n",
       "Send({class=54455354, id=00000001}, {cmd=0x1001, types=0x231, 54455355:54455356, "
       "54455359:5445535a, 5445535b:5445535c})"},
      {Wrapper_TestFunc_Send_Test2, "Send_Test2", "Send OK.\nReturn value correct.\n",
       "Send({class=54455354, id=00000001}, {cmd=0x1002, types=0x7675, memory:8, memory:10, "
       "memory:10, memory:18})"},
      {Wrapper_TestFunc_Buffer_Send, "Buffer_Send",
       "AllocateBuffer success. Buffer handle = 00000001.\nQueryBufferFreeSize = 4096\n"
       "SendBuffer 1024 byte success. checksum = 00000400\nQueryBufferFreeSize = 3072\n"
       "Return value correct.\nReleaseBuffer success.\n",
       "Send({class=54455354, id=00000001}, {cmd=0x1005, types=0x211, 1:400, 400:0, 400:400})"},
      {Wrapper_TestFunc_Buffer_Get_2, "Buffer_Get_2",
       "AllocateBuffer success. Buffer handle = 00000001.\nQueryBufferDataSize = 1024\n"
       "Return value correct.\nReleaseBuffer success.\n",
       "GetBuffer({class=54455354, id=00000001}, 1, 1024)"},
      {Wrapper_TestFunc_Buffer_AllocateRelease, "Buffer_AllocateRelease",
       "AllocateBuffer success. Send buffer handle = 00000001.\nQueryBufferFreeSize = 4096\n"
       "AllocateBuffer success. Recv buffer handle = 00000002.\nQueryBufferFreeSize = 4096\n"
       "ReleaseBuffer (Recv) success.\nReleaseBuffer success.\n",
       "ReleaseBuffer({class=54455354, id=00000001}, 2)"},
  };
  for (const auto& c : kCases) {
    simhal::Reset();
    const auto run = PlayTest(c.test);
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.output, open + c.output + Result("TestFunc_" + c.name, "Passed"));
    const auto calls = simhal::Calls();
    EXPECT_TRUE(std::ranges::any_of(
        calls, [&](const auto& line) { return line.starts_with("RLink::" + c.call); }))
        << c.call << "\nis not one of\n"
        << testing::PrintToString(calls);
  }
}

struct FaultCase {
  TestFunction test;
  const char* command;  // for the board
  const char* line;     // expected line of output
};

void ExpectFailures(const std::vector<FaultCase>& cases) {
  for (const FaultCase& c : cases) {
    simhal::Reset();
    ASSERT_EQ(simhal::Apply(c.command), "");
    const auto run = PlayTest(c.test);
    EXPECT_EQ(run.result, 1) << c.command << '\n' << run.output;
    EXPECT_NE(run.output.find(c.line), std::string::npos) << c.command << '\n' << run.output;
    EXPECT_EQ(Count(run.output, " Failed.\n*"), 1) << run.output;
    EXPECT_NE(simhal::State().find("no session"), std::string::npos)
        << "session left open: " << c.command;
  }
}

TEST(LinkTests, FailingStepsAreReportedAndTheSessionIsClosed) {
  ExpectFailures({
      {Wrapper_TestFunc_SendAsync, "fail RLink::Create 0", "Open session failed.\n"},
      {Wrapper_TestFunc_SendAsync, "fail RLink::OpenSession -1", "Open session failed.\n"},
      {Wrapper_TestFunc_SendAsync, "fail RLink::RegisterInvokeCommand -1",
       "RegisterInvokeCommand failed.\n"},
      {Wrapper_TestFunc_SendAsync, "fail RLink::SendAsync -1", "Send Async Command error.\n"},
      {Wrapper_TestFunc_Send_Test1, "fail RLink::Send -1", "Send Command error.\n"},
      {Wrapper_TestFunc_Send_Test1, "link silent on", "Send Command error.\n"},
      {Wrapper_TestFunc_Send_Test1, "link wrong on", "Send OK.\nReturn value incorrect.\n"},
      {Wrapper_TestFunc_Send_Test2, "link wrong on",
       "Return value incorrect.\ndata:[4148, 4149] data:[4150, 4150] "},
      {Wrapper_TestFunc_Send_Test1_Multiple, "fail RLink::Send -1 --at 4",
       "Return value correct. round = 2.\nSend Command error. round = 3.\n"},
      {Wrapper_TestFunc_Send_Test2_Multiple, "link wrong on",
       "Send OK. round = 0.\nSend test 1 Failed. round = 0.\n"},
      {Wrapper_TestFunc_InvokeCommand_Test1, "link silent on", "to invoke command.\n"},
      {Wrapper_TestFunc_InvokeCommand_Test1, "link wrong on", "]: Failed\n"},
      {Wrapper_TestFunc_InvokeCommand_Test2, "link wrong on", "param[3] size: [00000018, 24]\n"},
      {Wrapper_TestFunc_InvokeCommand_Test2, "fail RLink::Send -1", "]: RLinkSend: Failed\n"},
  });
}

TEST(LinkTests, FailingBufferStepsAreReported) {
  ExpectFailures({
      {Wrapper_TestFunc_Buffer_Send, "fail RLink::AllocateBuffer 0", "AllocateBuffer failed.\n"},
      {Wrapper_TestFunc_Buffer_Send, "link full on",
       "QueryBufferFreeSize = 0\nSendBuffer failed.\nReleaseBuffer success.\n"},
      {Wrapper_TestFunc_Buffer_Send, "link wrong on", "Return value (00000401) incorrect.\n"},
      {Wrapper_TestFunc_Buffer_Send, "fail RLink::ReleaseBuffer -1", "ReleaseBuffer failed.\n"},
      {Wrapper_TestFunc_Buffer_Get_1, "fail RLink::GetBufferDataRange -1",
       "GetAvailBufferRange failed.\n"},
      {Wrapper_TestFunc_Buffer_Get_1, "fail RLink::UpdateReadPointer -1",
       "Copy data done.\nUpdateReadPointer failed.\n"},
      {Wrapper_TestFunc_Buffer_Get_2, "fail RLink::GetBuffer -1", "GetBuffer failed.\n"},
      {Wrapper_TestFunc_Buffer_Get_2, "link wrong on", ") incorrect.\n"},
      {Wrapper_TestFunc_Buffer_Get_2_Multiple, "fail RLink::QueryBufferDataSize 0",
       "Expect data from slave, but got nothing.\n"},
      {Wrapper_TestFunc_Buffer_Flush_Recv, "fail RLink::QueryBufferDataSize 5",
       "Buffer data size(5) incorrect.\n"},
      {Wrapper_TestFunc_Buffer_Flush_Recv, "fail RLink::QueryBufferDataSize 5 --at 2",
       "Buffer data size(5) incorrect after flushing buffer.\n"},
      {Wrapper_TestFunc_Buffer_Flush_Send, "fail RLink::FlushBuffer -1", "FlushBuffer failed.\n"},
      {Wrapper_TestFunc_Buffer_Flush_Send, "fail RLink::QueryBufferFreeSize 9 --at 3",
       "Buffer free size(9) incorrect after flushing buffer.\n"},
      {Wrapper_TestFunc_Buffer_Flush_Send_Multiple, "fail RLink::QueryBufferFreeSize 9 --at 3",
       "Buffer free size(9/4096) incorrect after flushing buffer.\n"},
      {Wrapper_TestFunc_Buffer_AllocateRelease, "fail RLink::AllocateBuffer 0 --at 2",
       "AllocateBuffer (Recv) failed.\nReleaseBuffer success.\n"},
      {Wrapper_TestFunc_Buffer_AllocateRelease, "fail RLink::ReleaseBuffer -1 --times 1",
       "ReleaseBuffer (Recv) failed.\nReleaseBuffer success.\n"},
  });
}

TEST(LinkTests, FailingCloseFailsTheTest) {
  for (const TestFunction test : {Wrapper_TestFunc_OpenCloseSession, Wrapper_TestFunc_Send_Test1}) {
    simhal::Reset();
    simhal::Fail("RLink::CloseSession", -1);
    const auto run = PlayTest(test);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(Count(run.output, "Close session failed.\n"), 1) << run.output;
  }
  simhal::Reset();
  simhal::Fail("RLink::CloseSession", -1, 2);
  const auto run = PlayTest(Wrapper_TestFunc_Multi_RLink);
  EXPECT_EQ(run.result, 1);
  EXPECT_NE(run.output.find("Close session(00000002) success\nClose session(00000001) failed.\n"),
            std::string::npos)
      << run.output;
}

/// How often the slave's command arrived with the expected values.
int Notices(const std::string& output) {
  return Count(output, "cmd_id = 00002010\nparamTypes = 00000071\nVALUE IN, a = 11111111\n");
}

// The slave reads the memory of an asynchronous command long after it was sent. Memory that was
// released by then crashes the process.
TEST(LinkTests, MemoryOfAnAsynchronousCommandIsKeptUntilTheSlaveHasReadIt) {
  const auto one = PlayTest(Wrapper_TestFunc_SendAsync);
  EXPECT_EQ(one.result, 0);
  EXPECT_EQ(Notices(one.output), 1) << one.output;
  const auto two = PlayTest(Wrapper_TestFunc_Multi_Session);
  EXPECT_EQ(two.result, 0);
  EXPECT_NE(two.output.find("SendAsync of session("), std::string::npos) << two.output;
  for (const char* call : {"fail RLink::CloseSession -1", "fail RLink::SendAsync -1 --at 2"}) {
    ASSERT_EQ(simhal::Apply(call), "");
    EXPECT_EQ(PlayTest(Wrapper_TestFunc_Multi_Session).result, 1) << call;
    simhal::Apply("clear all");
  }
}

TEST(LinkTests, FailingSecondSessionClosesTheFirst) {
  simhal::Fail("RLink::OpenSession", -1, 2);
  const auto run = PlayTest(Wrapper_TestFunc_Multi_Session);
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(run.output,
            "Open session(00000001) of class_id(54455354) success.\n"
            "Open session of class_id(54455353) failed.\n"
            "Close session(00000001) success\n" +
                Result("TestFunc_Multi_Session", "Failed"));
}

TEST(LinkHandlers, PrintEveryKindOfParameter) {
  LinkMemory memory;
  ASSERT_TRUE(memory.IsUsable());
  RLNK_HOST_SESSION session{0, 0, 0x1F, 0, 0};
  RLNK_CMD_PARAMS params{7, 0x7432, {{1, 2}, {3, 4}, {5, 6}, memory.Param(0, 24)}};
  const auto run = scripted::Play("", [&] {
    Command_Test(&session, &params);
    Command_Test(nullptr, nullptr);
    return 0;
  });
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "MEMREF INOUT, buffer = %p\n",
                static_cast<void*>(&memory[0]));
  EXPECT_EQ(run.output,
            "Command_Test ->\nsession_id = 0000001f\ncmd_id = 00000007\nparamTypes = 00007432\n"
            "VALUE OUT, a = 1\nVALUE OUT, b = 2\nVALUE INOUT, a = 3\nVALUE INOUT, b = 4\n" +
                std::string(buffer) + "MEMREF INOUT, size = 24\nCommand_Test <-\n" +
                "Command_Test ->\nCommand_Test <-\n");
  EXPECT_EQ(memory[5], 0x41414141u);
  EXPECT_EQ(memory[6], 0u);
}

/// Two threads or processes, each with a session, wait here for each other. If they ran one after
/// the other, the first would wait in vain.
class Meeting {
 public:
  Meeting() {
    scripted::OnWait([this](unsigned long) { Arrive(); });
  }
  ~Meeting() {
    scripted::OnWait({});
    munmap(shared_, sizeof *shared_);
  }
  Meeting(const Meeting&) = delete;
  Meeting& operator=(const Meeting&) = delete;

  bool TookPlace() const { return shared_->arrived == 2 && !shared_->missed; }

 private:
  struct Shared {
    std::atomic<int> arrived;
    std::atomic<bool> missed;
  };
  static constexpr auto kPatience = std::chrono::seconds(20);

  void Arrive() const {
    ++shared_->arrived;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (shared_->arrived < 2 && std::chrono::steady_clock::now() < end) sched_yield();
    if (shared_->arrived < 2) shared_->missed = true;
  }

  Shared* shared_ = static_cast<Shared*>(
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
};

TEST(LinkThreads, BothSessionsRunConcurrently) {
  {
    const Meeting meeting;
    EXPECT_EQ(PlayTest(Wrapper_TestFunc_Multi_RLink_1).result, 0);
    EXPECT_TRUE(meeting.TookPlace());
  }
  for (const TestFunction test :
       {Wrapper_TestFunc_Multi_RLink_1_Send, Wrapper_TestFunc_InvokeCommand_Test2}) {
    const auto run = PlayTest(test);
    EXPECT_EQ(run.result, 0) << run.output;
  }
}

TEST(LinkThreads, OneFailingSessionFailsTheTest) {
  simhal::Fail("RLink::OpenSession", -1, 2);
  const auto run = PlayTest(Wrapper_TestFunc_Multi_RLink_1);
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(Count(run.output, "Passed"), 1);
  EXPECT_EQ(Count(run.output, "Failed"), 2) << run.output;
}

TEST(LinkThreads, ThreadsThatCannotBeStartedAreReported) {
  simhal::Reset();  // the race detector runs all tests in one process
  faults::FailThread(1, EAGAIN);
  EXPECT_EQ(PlayTest(Wrapper_TestFunc_Multi_RLink_1_Send).output,
            "Create ThreadFunc_V failed. error = Resource temporarily unavailable\n" +
                Result("TestFunc_Multi_RLink_1_Send", "Failed"));
  EXPECT_TRUE(simhal::Calls().empty()) << "no other thread is started";
  faults::FailThread(2, EPERM);
  const auto run = PlayTest(Wrapper_TestFunc_Multi_RLink_1);
  EXPECT_EQ(run.result, 1);
  EXPECT_NE(run.output.find("Create ThreadFunc_A failed. error = Operation not permitted\n"),
            std::string::npos);
  EXPECT_NE(run.output.find(Result("ThreadFunc_V", "Passed")), std::string::npos)
      << "the thread is joined";
}

/// Runs a test whose child inherits buffered output of its parent.
scripted::Run PlayFork(TestFunction test) {
  return scripted::Play("", [test] {
    std::printf("before");
    return test(nullptr);
  });
}

TEST(LinkProcesses, BothReportTheirResultsWithoutDuplicates) {
  for (const auto& [test, name] :
       {std::pair{&Wrapper_TestFunc_Multi_RLink_2, "TestFunc_Multi_RLink_2"},
        std::pair{&Wrapper_TestFunc_Multi_RLink_2_Send, "TestFunc_Multi_RLink_2_Send"}}) {
    const auto run = PlayFork(test);
    EXPECT_EQ(run.result, 0);
    EXPECT_TRUE(run.output.starts_with("before"));
    for (const std::string& once :
         {std::string("before"), std::string("Child process!\n"), std::string("Parent process!\n"),
          Result(std::string(name) + "(child)", "Passed"),
          Result(std::string(name) + "(parent)", "Passed")}) {
      EXPECT_EQ(Count(run.output, once), 1) << once << " in\n" << run.output;
    }
  }
}

TEST(LinkProcesses, BothSessionsAreOpenConcurrently) {
  const Meeting meeting;
  EXPECT_EQ(PlayFork(Wrapper_TestFunc_Multi_RLink_2).result, 0);
  EXPECT_TRUE(meeting.TookPlace());
}

TEST(LinkProcesses, OneFailingSessionFailsTheTest) {
  for (const uint32_t at : {1u, 2u}) {
    simhal::Reset();
    simhal::Fail("RLink::OpenSession", -1, at, 1);
    const auto run = PlayFork(Wrapper_TestFunc_Multi_RLink_2);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(Count(run.output, "Passed"), 1) << run.output;
  }
  faults::FailFork(1, EAGAIN);
  EXPECT_EQ(PlayFork(Wrapper_TestFunc_Multi_RLink_2).output, "beforeFork error!\n");
}

}  // namespace
