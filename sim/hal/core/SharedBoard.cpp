#include "core/SharedBoard.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>

#include "core/Command.h"
#include "core/Events.h"
#include "media/Media.h"

namespace sim {
namespace {

constexpr char kDefaultScenario[] =
    "plug 0 3840x2160p60 hdr\n"
    "plug 1 1920x1080p60\n";

struct Header {
  char magic[8];
  uint32_t version;
  uint32_t size;
};

struct SharedBoard {
  Header header;
  pthread_mutex_t mutex;
  char scenarioName[PATH_MAX];
  char scenario[64 * 1024];
  Board board;
};

// The version changes with the meaning of fields; the size detects changes of layout.
constexpr Header kHeader = {{'C', 'V', 'N', 'B', 'O', 'A', 'R', 'D'}, 2, sizeof(SharedBoard)};

SharedBoard* shared = nullptr;
std::string statePath;  // empty: anonymous memory

std::runtime_error SystemError(const std::string& path) {
  return std::runtime_error(path + ": " + std::strerror(errno));
}

/// An open file that is unlocked and closed at the end of the scope.
class File {
 public:
  File(const std::string& path, int flags)
      : path_(path), fd_(open(path.c_str(), flags | O_CLOEXEC, 0644)) {
    if (fd_ < 0) throw SystemError(path);
  }
  ~File() {
    flock(fd_, LOCK_UN);  // closing is not enough: the mapping keeps the file open
    close(fd_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  void LockExclusively() const {
    if (flock(fd_, LOCK_EX) != 0) throw SystemError(path_);
  }

  size_t Size() const {
    struct stat status = {};
    if (fstat(fd_, &status) != 0) throw SystemError(path_);
    return static_cast<size_t>(status.st_size);
  }

  void Resize(size_t bytes) const {
    if (ftruncate(fd_, static_cast<off_t>(bytes)) != 0) throw SystemError(path_);
  }

  /// The text of a regular file; a file of `limit` bytes or more is not read to its end.
  std::string Text(size_t limit) const {
    struct stat status = {};
    if (fstat(fd_, &status) != 0) throw SystemError(path_);
    if (S_ISDIR(status.st_mode)) throw std::runtime_error(path_ + ": Is a directory");
    if (!S_ISREG(status.st_mode)) throw std::runtime_error(path_ + ": not a regular file");
    std::string text;
    char block[4096];
    ssize_t got = 0;
    while (text.size() < limit && (got = read(fd_, block, sizeof(block))) > 0)
      text.append(block, static_cast<size_t>(got));
    if (got < 0) throw SystemError(path_);
    return text;
  }

  SharedBoard* Map() const {
    void* memory = mmap(nullptr, sizeof(SharedBoard), PROT_READ | PROT_WRITE, MAP_SHARED, fd_, 0);
    if (memory == MAP_FAILED) throw SystemError(path_);
    return static_cast<SharedBoard*>(memory);
  }

 private:
  std::string path_;
  int fd_;
};

SharedBoard* MapAnonymously() {
  void* memory =
      mmap(nullptr, sizeof(SharedBoard), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw SystemError("shared memory");
  return static_cast<SharedBoard*>(memory);
}

double TimeScale() {
  const char* text = std::getenv("CVNSIM_TIME_SCALE");
  return text == nullptr ? 1.0 : ParseDecimal(text, "value of CVNSIM_TIME_SCALE", 0.001, 1e6);
}

void InitializeMutex(pthread_mutex_t& mutex) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutex_init(&mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

template <size_t Size>
void StoreText(char (&target)[Size], const std::string& text, const std::string& what) {
  if (text.size() >= Size) {
    throw std::runtime_error(what + " is too long: expected at most " + std::to_string(Size - 1) +
                             " bytes");
  }
  text.copy(target, text.size());
  target[text.size()] = '\0';
}

void LoadScenario(SharedBoard& target) {
  const char* path = std::getenv("CVNSIM_SCENARIO");
  const char* shownPath = std::getenv("CVNSIM_SCENARIO_NAME");
  const std::string name = path == nullptr        ? "default scenario"
                           : shownPath != nullptr ? shownPath
                                                  : path;
  const std::string text = path != nullptr
                               ? File(path, O_RDONLY | O_NONBLOCK).Text(sizeof target.scenario)
                               : kDefaultScenario;
  StoreText(target.scenarioName, name, "scenario's name");
  StoreText(target.scenario, text, name);
}

void RunScenario(const SharedBoard& from, Board& board) {
  std::istringstream lines(from.scenario);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    const Words words = Split(line.substr(0, line.find('#')));
    if (words.empty()) continue;
    try {
      ParseCommand(words)(board);
    } catch (const CommandError& error) {
      throw std::runtime_error(std::string(from.scenarioName) + ":" + std::to_string(number) +
                               ": " + error.what());
    }
  }
}

// Starts a board of zero bytes.
void SwitchOn(Board& board, double timeScale) {
  board.clock.timeScale = timeScale;
  board.clock.powerOnNs = MonotonicNs();
  RunScenario(*shared, board);
  ShowOutside(board);
  LogStart();
}

// Expects zeroed memory and touches as little of it as possible: most of a board is frame buffers.
void Start(SharedBoard& target) {
  InitializeMutex(target.mutex);
  LoadScenario(target);
  shared = &target;
  SwitchOn(target.board, TimeScale());
  // The header is written last, so that an interrupted start does not look like a board.
  target.header = kHeader;
}

bool IsBoard(const SharedBoard& candidate) {
  return std::memcmp(&candidate.header, &kHeader, sizeof(kHeader)) == 0;
}

bool NeverStarted(const SharedBoard& candidate) {
  constexpr Header kNone = {};
  return std::memcmp(&candidate.header, &kNone, sizeof(kNone)) == 0;
}

std::runtime_error NotABoard(const std::string& path) {
  return std::runtime_error(path +
                            ": state file of another version of the simulated board; "
                            "remove it or use another");
}

SharedBoard* Open(const std::string& path, int flags, bool mayStart) {
  const File file(path, flags);
  file.LockExclusively();
  if (mayStart && file.Size() == 0) file.Resize(sizeof(SharedBoard));
  if (file.Size() != sizeof(SharedBoard)) throw NotABoard(path);
  SharedBoard* board = file.Map();
  if (mayStart && NeverStarted(*board)) {
    // Discards what an interrupted start may have left.
    file.Resize(0);
    file.Resize(sizeof(SharedBoard));
    Start(*board);
  }
  if (!IsBoard(*board)) throw NotABoard(path);
  return board;
}

Board& LockedBoard() {
  const int error = pthread_mutex_lock(&shared->mutex);
  if (error == EOWNERDEAD) {
    // The owner died during its call. Calls keep the records they change usable at every step.
    pthread_mutex_consistent(&shared->mutex);
  } else if (error != 0) {
    std::fprintf(stderr, "simulated board: cannot be locked: %s\n", std::strerror(error));
    std::abort();
  }
  return shared->board;
}

// A thread of the library may be inside a call while another one forks: the fork waits for the end
// of the call, so that the child sees consistent memory. The lock itself stays with the parent.
void FinishCallsBeforeForks() {
  pthread_atfork([] { LockedBoard(); }, [] { pthread_mutex_unlock(&shared->mutex); }, nullptr);
}

}  // namespace

void PowerOn() {
  const char* path = std::getenv("CVNSIM_STATE");
  if (path != nullptr) {
    statePath = path;
    shared = Open(path, O_RDWR | O_CREAT, true);
  } else {
    Start(*MapAnonymously());
  }
  FinishCallsBeforeForks();
}

void Attach(const std::string& path) {
  SharedBoard* const next = Open(path, O_RDWR, false);
  if (shared != nullptr) munmap(shared, sizeof(SharedBoard));
  shared = next;
  statePath = path;
}

BoardLock::BoardLock() : board_(LockedBoard()) {
  RunDueEvents(board_);
}

BoardLock::~BoardLock() {
  pthread_mutex_unlock(&shared->mutex);
}

std::string StatePath() {
  return statePath;
}

std::string StateDirectory() {
  if (statePath.empty()) return "";
  // Resolves links in the path, such as a board's run/, to the directory that has the file.
  return std::filesystem::weakly_canonical(statePath).parent_path().string();
}

void ResetBoard(Board& board) {
  const double timeScale = board.clock.timeScale;
  std::memset(&board, 0, sizeof(board));
  LoseVolatileFiles();
  SwitchOn(board, timeScale);
}

}  // namespace sim
