#include "LinkSession.h"

#include <cstdio>

#include "LinkCommands.h"

namespace {

bool Register(RLink& rlink, RLNK_INVOKE_HANDLER handler) {
  if (handler == nullptr || rlink.RegisterInvokeCommand(kTestClass, handler) == 0) return true;
  std::puts("RegisterInvokeCommand failed.");
  return false;
}

bool OpenAndRun(LinkHost& host, RLNK_INVOKE_HANDLER handler, LinkBody body, LinkClosed closed) {
  RLink& rlink = *host.rlink;
  RLNK_HOST_SESSION session{};
  if (rlink.OpenSession(kTestClass, &session) != 0) {
    std::puts("Open session failed.");
    return false;
  }
  const uint32_t id = session.session_id;
  std::printf("Open session success. session_id = %08x\n", id);
  const bool ok = Register(rlink, handler) && body({rlink, host.memory, &session});
  if (rlink.CloseSession(&session) != 0) {
    std::puts("Close session failed.");
    return false;
  }
  return (closed == nullptr || closed(id)) && ok;
}

}  // namespace

bool DoRounds(const std::function<bool(int round)>& step) {
  for (int round = 0; round < kRounds; ++round) {
    if (!step(round)) return false;
  }
  return true;
}

void TellRound(const char* text, int round) {
  if (round == kNoRound) {
    std::puts(text);
  } else {
    std::printf("%s round = %d.\n", text, round);
  }
}

// A single call, so that the output of two threads is not mixed.
void CheckResult(int ok, const char* name) {
  static constexpr char kStars[] = "**********************************************";
  std::printf("\n%s\n%s %s.\n%s\n\n", kStars, name, ok != 0 ? "Passed" : "Failed", kStars);
}

int RunSession(const char* name, RLNK_INVOKE_HANDLER handler, LinkBody body, LinkClosed closed) {
  bool ok = false;
  if (LinkHost host; host.rlink) {
    ok = OpenAndRun(host, handler, body, closed);
  } else {
    std::puts("Open session failed.");
  }
  CheckResult(ok, name);
  return ok;
}

bool WithSession(LinkHost& host, uint32_t classId, const std::function<bool(const Link&)>& inside) {
  if (!host.rlink) return false;
  RLink& rlink = *host.rlink;
  RLNK_HOST_SESSION session{};
  if (rlink.OpenSession(classId, &session) != 0) {
    std::printf("Open session of class_id(%08x) failed.\n", classId);
    return false;
  }
  const uint32_t id = session.session_id;
  std::printf("Open session(%08x) of class_id(%08x) success.\n", id, classId);
  const bool ok = inside({rlink, host.memory, &session});
  if (rlink.CloseSession(&session) != 0) {
    std::printf("Close session(%08x) failed.\n", id);
    return false;
  }
  std::printf("Close session(%08x) success\n", id);
  return ok;
}

bool SendCommand(const Link& link, RLNK_CMD_PARAMS* params, int round) {
  if (link.rlink.Send(link.session, params) == 0) return true;
  TellRound("Send Command error.", round);
  return false;
}

bool SendValues(const Link& link, int round) {
  RLNK_CMD_PARAMS params{
      kCommandValues, 0x231, {{Letters('U'), Letters('V')}, {Letters('W'), Letters('X')}, {}, {}}};
  if (!SendCommand(link, &params, round)) return false;
  TellRound("Send OK.", round);
  const auto& [first, inout, out, last] = params.param;
  const bool ok = inout.a == Letters('Y') && inout.b == Letters('Z') && out.a == Letters('[') &&
                  out.b == Letters('\\');
  TellRound(ok ? "Return value correct." : "Return value incorrect.", round);
  return ok;
}

int SendNotice(const Link& link) {
  RLNK_CMD_PARAMS params{
      kCommandNotice, 0x51, {{11'111'111, 22'222'222}, link.memory.Param(0, 16), {}, {}}};
  return link.memory.IsUsable() ? link.rlink.SendAsync(link.session, &params) : -1;
}
