#include "recorder/Session.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "Descriptions.inc"

namespace record {

constinit thread_local ThreadState threadState;

namespace {

constexpr char kVariable[] = "CVN_RECORD";
// The recording to which programs started by this one may add.
constexpr char kJoinVariable[] = "CVN_RECORD_JOIN";
constexpr int kRefused = 2;  // exit status

// Never destroyed: calls may come from destructors at the end of the process.
std::string& Directory() {
  static auto& directory = *new std::string;
  return directory;
}

// Shared with forked children: one message is enough for all of them.
std::atomic<bool>* isStopped = nullptr;
bool isOn = false;

/// Deletes the stream of a thread when the thread ends.
struct OwnedStream {
  Stream* stream = nullptr;
  ~OwnedStream() {
    threadState.stream = nullptr;
    delete stream;
  }
};
thread_local OwnedStream ownedStream;

// Not printf: this runs in the midst of the harness's own output, or before main.
void Say(const std::string& text) {
  const std::string line = "cvnrecord: " + text + '\n';
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

[[noreturn]] void Refuse(const std::string& reason) {
  Say(Directory() + ": " + reason);
  _exit(kRefused);
}

std::string Hex(const Salt& salt) {
  std::string text;
  char digits[3];
  for (const uint8_t byte : salt) {
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

Salt FromHex(std::string_view text) {
  Salt salt{};
  for (size_t i = 0; i < salt.size() && 2 * i + 2 <= text.size(); ++i) {
    salt[i] =
        static_cast<uint8_t>(std::strtoul(std::string(text.substr(2 * i, 2)).c_str(), nullptr, 16));
  }
  return salt;
}

std::string Metadata(const std::string& salt) {
  std::string text = "/* CTF 1.8 */\n/* cvn-descriptions\n";
  text += TextOf(kDescription);
  text +=
      "*/\ntrace { major = 1; minor = 8; byte_order = le; packet.header := struct { "
      "integer { size = 32; align = 8; signed = false; } magic; }; };\n";
  text += "env { tracer_name = \"cvnrecord\"; fingerprint = \"";
  text += kFingerprint;
  text += "\"; salt = \"" + salt + "\"; };\n";
  text +=
      "clock { name = monotonic; freq = 1000000000; };\n"
      "typealias integer { size = 64; align = 8; signed = false; "
      "map = clock.monotonic.value; } := time;\n";
  text += TextOf(kMetadata);
  text +=
      "stream { packet.context := struct { u32 pid; u32 tid; u32 parent_pid; "
      "time timestamp_begin; u64 content_size; u64 packet_size; }; "
      "event.header := struct { u16 id; time timestamp; }; };\n";
  return text;
}

bool IsEmpty(const char* path) {
  DIR* const entries = opendir(path);
  if (entries == nullptr) Refuse(std::strerror(errno));
  bool isEmpty = true;
  while (const dirent* entry = readdir(entries)) {
    const std::string_view name = entry->d_name;
    isEmpty = isEmpty && (name == "." || name == "..");
  }
  closedir(entries);
  return isEmpty;
}

void WriteMetadata(const std::string& text) {
  const std::string path = Directory() + '/' + kMetadataName;
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
  if (fd < 0) Refuse(std::strerror(errno));
  const ssize_t written = write(fd, text.data(), text.size());
  if (written != static_cast<ssize_t>(text.size())) {
    Refuse(written < 0 ? std::strerror(errno) : "no space left for the metadata");
  }
  close(fd);
}

// The path is made absolute: the program may change its working directory.
void Begin() {
  if (mkdir(Directory().c_str(), 0755) != 0 && errno != EEXIST) Refuse(std::strerror(errno));
  char* const whole = realpath(Directory().c_str(), nullptr);
  if (whole == nullptr) Refuse(std::strerror(errno));
  Directory() = whole;
  std::free(whole);
  const char* const joined = std::getenv(kJoinVariable);
  const std::string_view join = joined == nullptr ? "" : joined;
  const size_t salted = 2 * Salt{}.size();
  if (join.size() > salted && join.substr(salted) == Directory()) {
    Context().salt = FromHex(join.substr(0, salted));
    return;
  }
  if (!IsEmpty(Directory().c_str())) Refuse("not empty; use a new directory for a recording");
  if (getrandom(Context().salt.data(), Context().salt.size(), 0) < 0) Refuse(std::strerror(errno));
  WriteMetadata(Metadata(Hex(Context().salt)));
  setenv(kVariable, Directory().c_str(), 1);
  setenv(kJoinVariable, (Hex(Context().salt) + Directory()).c_str(), 1);
}

void LockForFork() {
  Context().objects.Mutex().lock();
  Context().functions.Mutex().lock();
}

void UnlockAfterFork() {
  Context().functions.Mutex().unlock();
  Context().objects.Mutex().unlock();
}

void StartInChild() {
  UnlockAfterFork();
  if (threadState.stream != nullptr) threadState.stream->Abandon();
}

// Commands started by the harness inherit the recorder, but they have no HAL.
bool HasHal() {
  return dlsym(RTLD_NEXT, "_ZN5RLink6CreateEv") != nullptr;
}

__attribute__((constructor)) void BeginWhenAsked() {
  const char* const wanted = std::getenv(kVariable);
  if (wanted == nullptr || *wanted == '\0' || !HasHal()) return;
  Directory() = wanted;
  Begin();
  void* const shared =
      mmap(nullptr, sizeof *isStopped, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) Refuse(std::strerror(errno));
  isStopped = new (shared) std::atomic<bool>(false);
  pthread_atfork(LockForFork, UnlockAfterFork, StartInChild);
  isOn = true;
}

}  // namespace

bool IsRecording() {
  return isOn && !isStopped->load(std::memory_order_relaxed);
}

// Never destroyed: calls may come from destructors at the end of the process.
CodecContext& Context() {
  static auto& context = *new CodecContext;
  return context;
}

Stream& ThreadStream() {
  ownedStream.stream = new Stream(Directory());
  threadState.stream = ownedStream.stream;
  return *ownedStream.stream;
}

void StopRecording(int error) {
  if (isStopped->exchange(true)) return;
  Say(Directory() + ": " + std::strerror(error) + "; the recording ends here");
}

}  // namespace record
