// Tests of one session that send commands, and of commands that the slave invokes.
#include <unistd.h>

#include <cstdio>

#include "LinkCommands.h"
#include "LinkInvoke.h"
#include "LinkMemory.h"
#include "LinkSession.h"
#include "RlinkTestCase.h"

namespace {

constexpr unsigned kInvokeWaitS = 2;  // in which the slave invokes its command

bool SendAsyncNotice(const Link& link) {
  if (SendNotice(link) != 0) {
    std::puts("Send Async Command error.");
    return false;
  }
  std::puts("SendAsync OK.");
  sleep(kInvokeWaitS);
  return true;
}

constexpr uint32_t kSentNumbers = 2;  // the slave does not change them
constexpr uint32_t kAnsweredNumbers = 14;

void PrintNumbers(LinkMemory& memory) {
  for (uint32_t i = 0; i < kAnsweredNumbers; ++i) {
    std::printf("data:[%d, %d] ", static_cast<int>(memory[kSentNumbers + i]),
                static_cast<int>(kFirstAnswer + i));
  }
}

bool AreAnswers(LinkMemory& memory) {
  for (uint32_t i = 0; i < kAnsweredNumbers; ++i) {
    if (memory[kSentNumbers + i] != kFirstAnswer + i) return false;
  }
  return true;
}

void TellMemory(bool ok, int round) {
  if (round == kNoRound) {
    std::puts(ok ? "Return value correct." : "Return value incorrect.");
  } else if (ok) {
    std::printf("Send test 1 Passed. round = %d,\n", round);
  } else {
    std::printf("Send test 1 Failed. round = %d.\n", round);
  }
}

bool SendMemory(const Link& link, int round) {
  LinkMemory memory;
  RLNK_CMD_PARAMS params{
      kCommandMemory,
      0x7675,
      {memory.Param(0, 8), memory.Param(8, 16), memory.Param(24, 16), memory.Param(40, 24)}};
  if (!memory.IsUsable()) {
    TellRound("Send Command error.", round);
    return false;
  }
  for (uint32_t i = 0; i < kSentNumbers + kAnsweredNumbers; ++i) memory[i] = kFirstNumber + i;
  if (!SendCommand(link, &params, round)) return false;
  TellRound("Send OK.", round);
  const bool ok = AreAnswers(memory);
  TellMemory(ok, round);
  if (!ok) PrintNumbers(memory);
  return ok;
}

/// A test in which the slave invokes a command; `command` makes it do so.
template <LinkCommand command>
bool LetSlaveInvoke(const Link& link) {
  std::puts("Send async command to trigger slave side to invoke command.");
  ExpectInvocation(link.rlink);
  RLNK_CMD_PARAMS params{command, 0, {}};
  if (link.rlink.SendAsync(link.session, &params) != 0) {
    std::puts("Send Async Command error.");
    return false;
  }
  sleep(kInvokeWaitS);
  return true;
}

bool TellClosed(uint32_t sessionId) {
  std::printf("Close session success. session_id = %08x\n", sessionId);
  return true;
}

}  // namespace

int TestFunc_OpenCloseSession() {
  return RunSession(
      __func__, nullptr, [](const Link&) { return true; }, TellClosed);
}

int TestFunc_SendAsync() {
  return RunSession(__func__, Command_Test, SendAsyncNotice);
}

int TestFunc_Send_Test1() {
  return RunSession(__func__, Command_Test, Once<SendValues>);
}

int TestFunc_Send_Test1_Multiple() {
  return RunSession(__func__, Command_Test, InRounds<SendValues>);
}

int TestFunc_Send_Test2() {
  return RunSession(__func__, Command_Test, Once<SendMemory>);
}

int TestFunc_Send_Test2_Multiple() {
  return RunSession(__func__, Command_Test, InRounds<SendMemory>);
}

int TestFunc_InvokeCommand_Test1() {
  return RunSession(__func__, Command_Test_1, LetSlaveInvoke<kCommandInvokeValues>,
                    InvocationSucceeded);
}

int TestFunc_InvokeCommand_Test2() {
  return RunSession(__func__, Command_Test_2, LetSlaveInvoke<kCommandInvokeMemory>,
                    InvocationSucceeded);
}
