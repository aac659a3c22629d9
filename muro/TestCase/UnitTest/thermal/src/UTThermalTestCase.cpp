#include "UTThermalTestCase.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include "DriverTest.h"
#include "k2v/thermal.h"

namespace {

constexpr int kNotifications = 3;  // number that ends a session
constexpr unsigned kPollS = 3;

// The notifier's thread counts, the session polls.
std::atomic<int> notified{0};

void my_thermal_cb(int degree) {
  std::printf("%s: cur_degree(%d)\n", __func__, degree);
  ++notified;
}

/// Forks a process that runs a session. Returns its id, or a negative number after a message.
pid_t StartSession(const char* test) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child < 0) std::printf("%s: fork fail. ret=%d\n", test, child);
  if (child != 0) return child;
  const int result = TEST_K2V_RHAL_thermal_callback();
  std::fflush(stdout);
  _exit(result == 0 ? 0 : 1);
}

pid_t WaitFor(pid_t child, int* status) {
  pid_t ended = -1;
  do {
    ended = waitpid(child, status, 0);
  } while (ended < 0 && errno == EINTR);
  return ended;
}

/// Ends a session that nobody will wait for.
void End(pid_t child) {
  kill(child, SIGKILL);
  int status = 0;
  WaitFor(child, &status);
}

}  // namespace

int TEST_K2V_RHAL_thermal_callback() {
  if (K2V_RHAL_register_thermal_notifier(my_thermal_cb) != 0) return -1;
  while (notified < kNotifications) {
    sleep(kPollS);
    std::printf("%s: sleep\n", __func__);
  }
  std::printf("%s: exit\n", __func__);
  return 0;
}

int UTThermalTestCase::TestCase1(char*) {
  PrintUnitTraceLine(__func__);
  const pid_t child = StartSession(__func__);
  if (child < 0) return 1;
  int status = 0;
  WaitFor(child, &status);
  std::printf("%s: child process done. status=%d\n", __func__, status);
  return status != 0 ? 1 : 0;
}

int UTThermalTestCase::TestCase2(char*) {
  PrintUnitTraceLine(__func__);
  const pid_t first = StartSession(__func__);
  if (first < 0) return 1;
  if (StartSession(__func__) < 0) {
    End(first);
    return 1;
  }
  int result = 0;
  int status = 0;
  for (pid_t child = WaitFor(-1, &status); child > 0; child = WaitFor(-1, &status)) {
    std::printf("%s: child_pid(%u) exited, status=%d\n", __func__, static_cast<unsigned>(child),
                status);
    if (status != 0) result = 1;
  }
  return result;
}
