#include "LinkFaults.h"

#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace {

struct Fault {
  int callsLeft = 0;  // until the failing call; 0 for none
  int error = 0;

  bool IsDue() { return callsLeft > 0 && --callsLeft == 0; }
};

Fault forkFault;
Fault threadFault;
std::function<std::string()> shellAnswer;
int64_t timeUs = -1;

}  // namespace

// The linker redirects the harness's calls to these functions (--wrap).
extern "C" {

pid_t __real_fork();
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __real_gettimeofday(timeval*, void*);

pid_t __wrap_fork() {
  if (!forkFault.IsDue()) return __real_fork();
  errno = forkFault.error;
  return -1;
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument) {
  if (threadFault.IsDue()) return threadFault.error;
  return __real_pthread_create(thread, attributes, start, argument);
}

std::FILE* __wrap_popen(const char*, const char*) {
  const std::string answer = shellAnswer ? shellAnswer() : "";
  if (answer.empty()) return nullptr;
  int ends[2];
  if (pipe(ends) != 0) return nullptr;
  [[maybe_unused]] const ssize_t written = write(ends[1], answer.data(), answer.size());
  close(ends[1]);
  return fdopen(ends[0], "r");
}

int __wrap_gettimeofday(timeval* now, void* zone) {
  if (timeUs < 0) return __real_gettimeofday(now, zone);
  *now = {static_cast<time_t>(timeUs / 1'000'000), static_cast<suseconds_t>(timeUs % 1'000'000)};
  return 0;
}
}

namespace faults {

void FailFork(int nth, int error) {
  forkFault = {nth, error};
}

void FailThread(int nth, int error) {
  threadFault = {nth, error};
}

void AnswerShell(std::function<std::string()> answer) {
  shellAnswer = std::move(answer);
}

void SetTimeUs(int64_t us) {
  timeUs = us;
}

}  // namespace faults
