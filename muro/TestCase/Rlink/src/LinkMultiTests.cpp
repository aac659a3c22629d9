// Tests of several concurrent sessions: in one thread, in two threads, in two processes.
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "LinkCommands.h"
#include "LinkSession.h"
#include "RlinkTestCase.h"

namespace {

constexpr unsigned kHoldS = 2;  // for which a session stays open next to another one

bool DoNothing(const Link&) {
  return true;
}

bool Hold(const Link&) {
  sleep(kHoldS);
  return true;
}

bool SendNoticeTold(const Link& link) {
  const uint32_t id = link.session->session_id;
  if (SendNotice(link) != 0) {
    std::puts("Send Async Command error.");
    return false;
  }
  std::printf("SendAsync of session(%08x) OK.\n", id);
  return true;
}

/// Executes `body` in one session after the other while both are open.
bool RunTwoSessions(LinkHost& first, LinkHost& second, LinkBody body) {
  return WithSession(first, kTestClass, [&](const Link& outer) {
    return WithSession(second, kSecondClass,
                       [&](const Link& inner) { return body(outer) && body(inner); });
  });
}

/// Executes `body` in a session of a separate link.
bool RunOwnLink(uint32_t classId, LinkBody body) {
  LinkHost host;
  return WithSession(host, classId, body);
}

int RunTwoLinks(const char* name, LinkBody body) {
  LinkHost first;
  LinkHost second;
  const bool ok = first.rlink && second.rlink && RunTwoSessions(first, second, body);
  CheckResult(ok, name);
  return ok;
}

void RunThread(const char* name, uint32_t classId, LinkBody body, void* result) {
  const bool ok = RunOwnLink(classId, body);
  CheckResult(ok, name);
  *static_cast<int*>(result) = ok;
}

template <LinkBody body>
void* ThreadFunc_V(void* result) {
  RunThread("ThreadFunc_V", kTestClass, body, result);
  return nullptr;
}

template <LinkBody body>
void* ThreadFunc_A(void* result) {
  RunThread("ThreadFunc_A", kSecondClass, body, result);
  return nullptr;
}

struct Thread {
  const char* name;
  void* (*function)(void*);
};

/// Starts the first thread, does the same for the remaining ones, and then joins it. After a thread
/// that cannot be started, no further one is started. Returns whether all started and succeeded.
bool RunThreads(const Thread* threads, int count) {
  if (count == 0) return true;
  int result = 0;
  pthread_t thread{};
  if (const int error = pthread_create(&thread, nullptr, threads->function, &result); error != 0) {
    errno = error;
    std::printf("Create %s failed. error = %s\n", threads->name, std::strerror(errno));
    return false;
  }
  const bool othersOk = RunThreads(threads + 1, count - 1);
  pthread_join(thread, nullptr);
  return othersOk && result == 1;
}

template <LinkBody body>
int RunTwoThreads(const char* name) {
  static constexpr Thread kThreads[] = {
      {"ThreadFunc_V", ThreadFunc_V<body>},
      {"ThreadFunc_A", ThreadFunc_A<body>},
  };
  const bool ok = RunThreads(kThreads, std::size(kThreads));
  CheckResult(ok, name);
  return ok;
}

struct Process {
  const char* hello;
  const char* name;
  uint32_t classId;
};

bool RunProcess(const Process& process, LinkBody body) {
  std::puts(process.hello);
  const bool ok = RunOwnLink(process.classId, body);
  CheckResult(ok, process.name);
  return ok;
}

bool ChildSucceeded(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return status == 0;
}

/// Output printed so far is flushed before the fork, so that it does not appear twice.
int RunTwoProcesses(const char* childName, const char* parentName, LinkBody body) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child < 0) {
    std::puts("Fork error!");
    return 0;
  }
  if (child == 0) {
    const bool ok = RunProcess({"Child process!", childName, kSecondClass}, body);
    std::fflush(stdout);
    _exit(ok ? 0 : 1);
  }
  const bool ok = RunProcess({"Parent process!", parentName, kTestClass}, body);
  return ChildSucceeded(child) && ok;
}

}  // namespace

int TestFunc_Multi_RLink() {
  return RunTwoLinks(__func__, DoNothing);
}

int TestFunc_Multi_RLink_Send() {
  return RunTwoLinks(__func__, Once<SendValues>);
}

int TestFunc_Multi_Session() {
  LinkHost host;
  const bool ok = RunTwoSessions(host, host, SendNoticeTold);
  CheckResult(ok, __func__);
  return ok;
}

int TestFunc_Multi_RLink_1() {
  return RunTwoThreads<Hold>(__func__);
}

int TestFunc_Multi_RLink_1_Send() {
  return RunTwoThreads<Once<SendValues>>(__func__);
}

int TestFunc_Multi_RLink_2() {
  return RunTwoProcesses("TestFunc_Multi_RLink_2(child)", "TestFunc_Multi_RLink_2(parent)", Hold);
}

int TestFunc_Multi_RLink_2_Send() {
  return RunTwoProcesses("TestFunc_Multi_RLink_2_Send(child)",
                         "TestFunc_Multi_RLink_2_Send(parent)", Once<SendValues>);
}
