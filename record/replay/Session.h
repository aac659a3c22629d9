// A process whose calls are answered from a recording: which recorded thread each of its threads
// corresponds to, and how far each has got.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "interface/Codec.h"
#include "replay/Answers.h"
#include "replay/Store.h"

namespace record {

/// Result of every call for which the recording has no answer.
inline constexpr int kDiverged = -200;

class ReplaySession {
 public:
  /// The session of this process, from the environment. Prints one line and ends the process with
  /// status 2 if there is no recording to replay.
  static ReplaySession& Get();

  CodecContext& Context() { return context_; }
  SecretStandIns& Secrets() { return secrets_; }
  Arena& HalMemory() { return halMemory_; }

  /// The number in the recording of the handler that the next call registers.
  uint32_t NextHandler(uint16_t call);

  /// Takes the next call of this thread, which must be this one, and calls the handlers that were
  /// called meanwhile. Returns the event with the results; null if the recording has a different
  /// call, which is reported in one line.
  const StoredEvent* Answer(uint16_t call, Bytes entry);

  /// Compares the results of a handler with the recorded ones.
  void CheckHandler(uint16_t call, Bytes left);

  /// The harness's marks: moves to this test; reports calls that the test did not make, or a
  /// different verdict.
  void BeginTest(uint32_t number, const std::string& name);
  void EndTest(const std::string& verdict);

  /// At the end of the program: reports calls that this thread did not make.
  void End();

 private:
  explicit ReplaySession(std::unique_ptr<Store> store);

  using Lock = std::unique_lock<std::mutex>;

  const StoredStream& Stream(size_t index) const { return store_->Streams()[index]; }
  const StoredEvent* Peek(size_t stream) const;
  bool Bind(uint16_t call, Bytes entry);
  bool IsFree(size_t stream) const;
  bool BeginsWith(size_t stream, uint16_t call, Bytes entry) const;
  size_t Choose(std::vector<size_t>& candidates) const;
  size_t RankOfProcess() const;
  void BindTo(Lock& lock, size_t stream);
  void StartHandlerThreads();
  void ServeHandlers(size_t stream);
  void WaitForOthers(Lock& lock, uint64_t ns, size_t own, bool handlersOnly);
  bool IsBefore(size_t stream, uint64_t ns) const;
  bool CallHandlers(Lock& lock, size_t stream, uint16_t until);
  const StoredEvent* Poll(Lock& lock, uint16_t call, Bytes entry);
  const StoredEvent* Finish(Lock& lock, size_t stream, uint16_t call);
  void SkipPolls(size_t stream);
  void Diverge(const std::string& what);
  std::string Where(size_t stream, uint32_t ordinal) const;
  std::string Difference(const StoredEvent& recorded, uint16_t call, Bytes entry) const;
  std::string TextOf(uint16_t call, Bytes entry) const;
  bool IsInsideTest(size_t stream) const;
  std::string FailedCall(size_t stream) const;
  void Advance(size_t stream);
  void KeepTime(uint64_t fromNs, uint64_t toNs, std::chrono::steady_clock::time_point since) const;
  static void LockForFork();
  static void UnlockAfterFork();
  static void StartInChild();

  std::unique_ptr<Store> store_;
  CodecContext context_;
  SecretStandIns secrets_;
  Arena halMemory_;
  std::set<uint16_t> polls_;
  bool keepsTimes_ = false;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<size_t> positions_;  // of the next event of each stream
  std::vector<bool> isBound_;      // to a thread of this process
  std::map<std::pair<uint16_t, std::string>, const StoredEvent*> lastAnswers_;
  uint32_t pid_ = 0;                    // recorded process that this one is; 0: not yet known
  uint32_t parentPid_ = 0;              // recorded process that forked this one
  size_t forks_ = 0;                    // by this process so far
  size_t forkNumber_ = 0;               // among the forks of the process that forked this one
  std::set<pid_t> threadsWithoutRank_;  // bound to a stream, or of the replay itself
  std::atomic<uint8_t>* takenStreams_ = nullptr;  // shared with forked processes
  std::atomic<uint8_t>* takenTests_ = nullptr;
};

}  // namespace record
