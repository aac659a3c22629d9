// cvnworld: services around a running board. Its network cable leads to a TFTP server; marker files
// in the simulator's directory give the state of both. Events that are due run even if no program
// calls the HAL.
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <system_error>
#include <utility>

#include "Address.h"
#include "TftpServer.h"
#include "core/SharedBoard.h"
#include "core/Trace.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned short kTftpPort = 69;
constexpr int kTickMs = 100;

/// Returns a descriptor that becomes readable when files of a directory come or go.
int Watch(const fs::path& directory) {
  const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  if (watch < 0 || inotify_add_watch(watch, directory.c_str(), IN_CREATE | IN_DELETE | IN_MOVE) < 0)
    throw std::system_error(errno, std::generic_category(), directory.string());
  return watch;
}

void ForgetEvents(int watch) {
  char events[4096];
  while (read(watch, events, sizeof(events)) > 0) {
  }
}

/// Continues in the background, without the terminal. The calling process ends here.
void Detach() {
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child > 0) _exit(EXIT_SUCCESS);
  setsid();
  const int null = open("/dev/null", O_RDWR);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(null, descriptor);
  close(null);
}

/// Runs the board's events, once a program has started the board.
class Time {
 public:
  explicit Time(fs::path state) : state_(std::move(state)) {}

  void Tick() {
    if (!attached_ && !Attach()) return;
    const sim::BoardLock board;  // runs what is due
  }

 private:
  bool Attach() try {
    if (!fs::exists(state_)) return false;
    sim::Attach(state_);
    sim::OpenTraceFile();
    return attached_ = true;
  } catch (const std::exception&) {
    return false;  // the board is just being started
  }

  const fs::path state_;
  bool attached_ = false;
};

[[noreturn]] void Run(const fs::path& simulator) {
  fs::create_directories(simulator / "tftp");
  network::SetAddress(true);
  network::TftpServer tftp(simulator / "tftp", kTftpPort);
  const int watch = Watch(simulator);
  Time time(simulator / "state");
  Detach();
  for (;;) {
    const bool isUp = !fs::exists(simulator / "network-down");
    network::SetAddress(isUp);
    pollfd waited[] = {{tftp.Socket(), POLLIN, 0}, {watch, POLLIN, 0}};
    poll(waited, std::size(waited), kTickMs);
    time.Tick();
    ForgetEvents(watch);
    if (waited[0].revents == 0) continue;
    const bool isDown =
        fs::exists(simulator / "network-down") || fs::exists(simulator / "tftp-down");
    tftp.Serve(!isDown);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "cvnworld: usage: cvnworld DIRECTORY\n";
    return 2;
  }
  try {
    Run(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "cvnworld: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
