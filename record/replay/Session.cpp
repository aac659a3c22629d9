#include "replay/Session.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>

#include "Descriptions.inc"
#include "reader/Text.h"
#include "replay/Handlers.h"

namespace record {
namespace {

constexpr auto kLongestWait = std::chrono::seconds(5);
constexpr size_t kNoStream = SIZE_MAX;
constexpr int kRefused = 2;

struct Thread {
  size_t stream = kNoStream;
  bool hasDiverged = false;
};
constinit thread_local Thread thread;

void Say(const std::string& text) {
  const std::string line = "cvnreplay: " + text + '\n';
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

[[noreturn]] void Refuse(const std::string& reason) {
  Say(reason);
  _exit(kRefused);
}

std::atomic<uint8_t>* SharedFlags(size_t count) {
  void* const memory =
      mmap(nullptr, count + 1, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) Refuse("no memory");
  return static_cast<std::atomic<uint8_t>*>(memory);
}

/// The number of threads of this process created before this one, not counting those in `others`.
size_t RankOfThread(const std::set<pid_t>& others) {
  size_t rank = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task", error)) {
    const auto id = static_cast<pid_t>(std::strtol(entry.path().filename().c_str(), nullptr, 10));
    if (id < gettid() && id != getpid() && !others.contains(id)) ++rank;
  }
  return rank;
}

std::set<uint16_t> ParsePolls(const Description& calls) {
  std::set<uint16_t> polls;
  const char* const text = std::getenv("CVN_REPLAY_POLLS");
  std::istringstream names(text == nullptr ? "" : text);
  for (std::string name; std::getline(names, name, ',');) {
    const Function* const function = calls.Find(name);
    if (function == nullptr) Refuse("CVN_REPLAY_POLLS: the HAL has no " + name);
    polls.insert(static_cast<uint16_t>(function - calls.Functions().data()));
  }
  return polls;
}

bool ParseTimes() {
  const char* const text = std::getenv("CVN_REPLAY_TIMES");
  const std::string_view times = text == nullptr ? "fast" : text;
  if (times != "fast" && times != "recorded") {
    Refuse("invalid CVN_REPLAY_TIMES '" + std::string(times) + "': expected recorded or fast");
  }
  return times == "recorded";
}

}  // namespace

// Never destroyed: its threads live as long as the process.
ReplaySession& ReplaySession::Get() {
  static ReplaySession& session = *[] {
    const char* const directory = std::getenv("CVN_REPLAY");
    if (directory == nullptr || *directory == '\0') Refuse("CVN_REPLAY is not set");
    std::string error;
    auto store = Store::Load(directory, record::TextOf(kDescription), error);
    if (store == nullptr) Refuse(error);
    for (const std::string& problem : store->Problems()) Say(problem + "; replayed up to there");
    return new ReplaySession(std::move(store));
  }();
  return session;
}

ReplaySession::ReplaySession(std::unique_ptr<Store> store)
    : store_(std::move(store)),
      secrets_(context_.salt),
      polls_(ParsePolls(store_->Calls())),
      keepsTimes_(ParseTimes()),
      positions_(store_->Streams().size()),
      isBound_(store_->Streams().size()),
      takenStreams_(SharedFlags(store_->Streams().size())),
      takenTests_(SharedFlags(store_->Tests().size())) {
  context_.salt = store_->TheSalt();
  context_.secrets = &secrets_;
  pthread_atfork(LockForFork, UnlockAfterFork, StartInChild);
}

void ReplaySession::LockForFork() {
  ReplaySession& session = Get();
  session.mutex_.lock();
  ++session.forks_;
  session.context_.objects.Mutex().lock();
  session.context_.functions.Mutex().lock();
}

void ReplaySession::UnlockAfterFork() {
  ReplaySession& session = Get();
  session.context_.functions.Mutex().unlock();
  session.context_.objects.Mutex().unlock();
  session.mutex_.unlock();
}

void ReplaySession::StartInChild() {
  ReplaySession& session = Get();
  if (session.pid_ != 0) session.parentPid_ = session.pid_;
  session.pid_ = 0;
  session.forkNumber_ = session.forks_ - 1;
  session.forks_ = 0;
  session.threadsWithoutRank_.clear();
  session.isBound_.assign(session.isBound_.size(), false);
  thread = {};
  UnlockAfterFork();
}

/// The next event of a stream that is not a prompt or an answer; null at its end.
const StoredEvent* ReplaySession::Peek(size_t stream) const {
  const std::vector<StoredEvent>& events = Stream(stream).events;
  size_t at = positions_[stream];
  while (at < events.size() && events[at].IsMark() && !events[at].IsTestMark()) ++at;
  return at < events.size() ? &events[at] : nullptr;
}

void ReplaySession::Advance(size_t stream) {
  const StoredEvent* const event = Peek(stream);
  positions_[stream] = event == nullptr
                           ? Stream(stream).events.size()
                           : static_cast<size_t>(event - Stream(stream).events.data()) + 1;
  changed_.notify_all();
}

bool ReplaySession::IsFree(size_t stream) const {
  const StoredStream& candidate = Stream(stream);
  if (isBound_[stream] || candidate.isOfHandlers || candidate.events.empty()) return false;
  return pid_ != 0 ? candidate.pid == pid_ : takenStreams_[stream] == 0;
}

bool ReplaySession::BeginsWith(size_t stream, uint16_t call, Bytes entry) const {
  const StoredEvent* event = Peek(stream);
  if (event == nullptr) return false;
  if (event->number == kTestBegins && event + 1 <= &Stream(stream).events.back()) ++event;
  return event->number == EntryEvent(call) && std::ranges::equal(event->payload, entry);
}

// If several begin with the same call, threads and processes are matched in the order in which they
// were created, then and now.
size_t ReplaySession::Choose(std::vector<size_t>& candidates) const {
  std::ranges::sort(candidates, {}, [this](size_t i) {
    return std::pair{Stream(i).pid, Stream(i).tid};
  });
  const size_t rank = pid_ != 0 ? RankOfThread(threadsWithoutRank_) : RankOfProcess();
  return candidates[std::min(rank, candidates.size() - 1)];
}

size_t ReplaySession::RankOfProcess() const {
  std::set<uint32_t> taken;
  for (size_t i = 0; i < store_->Streams().size(); ++i) {
    const bool isSibling = parentPid_ != 0 && Stream(i).parentPid == parentPid_;
    if (isSibling && takenStreams_[i] != 0) taken.insert(Stream(i).pid);
  }
  return forkNumber_ > taken.size() ? forkNumber_ - taken.size() : 0;
}

// Matches a new thread with a recorded one that begins with the same call. For a new process,
// children of the recorded process that forked it are tried first.
bool ReplaySession::Bind(uint16_t call, Bytes entry) {
  if (thread.stream != kNoStream) return true;
  for (const bool isSame : {true, false}) {
    for (const bool isChild : {true, false}) {
      std::vector<size_t> candidates;
      for (size_t i = 0; i < store_->Streams().size(); ++i) {
        if (!IsFree(i) || (isChild && pid_ == 0 && Stream(i).parentPid != parentPid_)) continue;
        if (!isSame || BeginsWith(i, call, entry)) candidates.push_back(i);
      }
      if (candidates.empty()) continue;
      thread.stream = isSame ? Choose(candidates) : candidates[0];
      const StoredEvent* const event = Peek(thread.stream);
      if (event != nullptr && event->number == kTestBegins) Advance(thread.stream);
      return true;
    }
  }
  return false;
}

void ReplaySession::BindTo(Lock&, size_t stream) {
  thread.stream = stream;
  threadsWithoutRank_.insert(gettid());
  isBound_[stream] = true;
  takenStreams_[stream] = 1;
  if (pid_ == Stream(stream).pid) return;
  pid_ = Stream(stream).pid;
  for (size_t i = 0; i < store_->Streams().size(); ++i) {
    if (Stream(i).pid == pid_) takenStreams_[i] = 1;
  }
  StartHandlerThreads();
}

void ReplaySession::StartHandlerThreads() {
  for (size_t i = 0; i < store_->Streams().size(); ++i) {
    if (Stream(i).pid != pid_ || !Stream(i).isOfHandlers || isBound_[i]) continue;
    isBound_[i] = true;
    std::thread(&ReplaySession::ServeHandlers, this, i).detach();
  }
}

// Calls the handlers that the HAL called on a thread of its own, each at its place among the calls
// of the other threads.
void ReplaySession::ServeHandlers(size_t stream) {
  thread.stream = stream;
  Lock lock(mutex_);
  threadsWithoutRank_.insert(gettid());
  while (const StoredEvent* event = Peek(stream)) {
    WaitForOthers(lock, event->ns, stream, false);
    if (!CallHandlers(lock, stream, UINT16_MAX)) return;
  }
}

bool ReplaySession::IsBefore(size_t stream, uint64_t ns) const {
  const StoredEvent* const next = Peek(stream);
  return next != nullptr && next->ns < ns;
}

/// Waits until the other threads of this process have replayed everything recorded before `ns`.
void ReplaySession::WaitForOthers(Lock& lock, uint64_t ns, size_t own, bool handlersOnly) {
  const auto isDone = [&] {
    for (size_t i = 0; i < store_->Streams().size(); ++i) {
      const bool counts =
          i != own && Stream(i).pid == pid_ && (!handlersOnly || Stream(i).isOfHandlers);
      if (counts && IsBefore(i, ns)) return false;
    }
    return true;
  };
  // If the session takes a different course, the HAL's threads may never get there.
  while (!changed_.wait_for(lock, kLongestWait, isDone)) {
    if (handlersOnly) return;
  }
}

/// Calls handlers of this thread's stream up to the return of `until`; false at any other event.
bool ReplaySession::CallHandlers(Lock& lock, size_t stream, uint16_t until) {
  for (;;) {
    const StoredEvent* const event = Peek(stream);
    if (event == nullptr) return false;
    if (until != UINT16_MAX && event->number == ReturnEvent(until)) return true;
    if (!event->IsEntry() || !store_->Calls().Functions()[event->Call()].isCallback) return false;
    Advance(stream);
    lock.unlock();
    CallRecordedHandler(*this, event->Call(), event->payload);
    lock.lock();
    if (until == UINT16_MAX) return true;
  }
}

void ReplaySession::CheckHandler(uint16_t call, Bytes left) {
  const Lock lock(mutex_);
  const StoredEvent* const recorded = Peek(thread.stream);
  if (recorded == nullptr) return;
  if (recorded->number != ReturnEvent(call)) {
    Diverge(store_->Calls().Functions()[call].name + ": the handler called something else");
    return;
  }
  if (!std::ranges::equal(recorded->payload, left)) {
    Diverge(store_->Calls().Functions()[call].name + ": the handler answered something else");
  }
  Advance(thread.stream);
}

uint32_t ReplaySession::NextHandler(uint16_t call) {
  const Function& function = store_->Calls().Functions()[call];
  const auto handler = std::ranges::find(function.arguments, Way::kHandler, &Argument::way);
  if (handler == function.arguments.end()) return 0;
  const Lock lock(mutex_);
  const StoredEvent* const next = thread.stream == kNoStream ? nullptr : Peek(thread.stream);
  if (next == nullptr || next->number != EntryEvent(call)) return 0;
  bool good = false;
  const CallValues values = ReadCall(function, false, next->payload, good);
  const auto index = static_cast<size_t>(handler - function.arguments.begin());
  return good ? static_cast<uint32_t>(values.arguments[index].value->number) : 0;
}

const StoredEvent* ReplaySession::Answer(uint16_t call, Bytes entry) {
  Lock lock(mutex_);
  if (thread.hasDiverged) return nullptr;
  const bool isNew = thread.stream == kNoStream;
  if (!Bind(call, entry)) {
    Diverge("the recording has no further thread; now " + TextOf(call, entry));
    return nullptr;
  }
  const size_t stream = thread.stream;
  if (isNew) BindTo(lock, stream);
  const auto isNext = [&](const StoredEvent* next) {
    return next != nullptr && next->number == EntryEvent(call) &&
           std::ranges::equal(next->payload, entry);
  };
  if (!isNext(Peek(stream))) {
    SkipPolls(stream);
    if (!isNext(Peek(stream))) return Poll(lock, call, entry);
  }
  const StoredEvent* const next = Peek(stream);
  WaitForOthers(lock, next->ns, stream, true);
  Advance(stream);
  const auto since = std::chrono::steady_clock::now();
  const StoredEvent* const back = Finish(lock, stream, call);
  if (back == nullptr) {
    Diverge(Where(stream, next->ordinal) + TextOf(call, entry) +
            " did not return when it was recorded");
    // The test went no further; whatever it does now says nothing, and it could pass. Threads that
    // wait in the HAL when the program ends are not inside a test.
    if (IsInsideTest(stream)) std::abort();
    return nullptr;
  }
  if (polls_.contains(call)) lastAnswers_[{call, std::string(entry.begin(), entry.end())}] = back;
  lock.unlock();
  KeepTime(next->ns, back->ns, since);
  return back;
}

const StoredEvent* ReplaySession::Finish(Lock& lock, size_t stream, uint16_t call) {
  if (!CallHandlers(lock, stream, call)) return nullptr;
  const StoredEvent* const back = Peek(stream);
  WaitForOthers(lock, back->ns, stream, true);
  Advance(stream);
  return back;
}

// A polled function may be called more or fewer times than in the recording.
void ReplaySession::SkipPolls(size_t stream) {
  for (;;) {
    const StoredEvent* next = Peek(stream);
    if (next == nullptr || !next->IsEntry() || !polls_.contains(next->Call())) return;
    const uint16_t call = next->Call();
    const Bytes entry = next->payload;
    Advance(stream);
    while ((next = Peek(stream)) != nullptr && next->number != ReturnEvent(call)) Advance(stream);
    if (next != nullptr) lastAnswers_[{call, std::string(entry.begin(), entry.end())}] = next;
    Advance(stream);
  }
}

const StoredEvent* ReplaySession::Poll(Lock&, uint16_t call, Bytes entry) {
  const auto last = lastAnswers_.find({call, std::string(entry.begin(), entry.end())});
  if (polls_.contains(call) && last != lastAnswers_.end()) return last->second;
  const StoredEvent* const next = Peek(thread.stream);
  if (next == nullptr || !next->IsEntry()) {
    Diverge(Where(thread.stream, next == nullptr ? UINT32_MAX : 0) + "nothing more was recorded" +
            (next == nullptr ? "" : " in this test") + "; now " + TextOf(call, entry));
  } else {
    Diverge(Where(thread.stream, next->ordinal) + Difference(*next, call, entry));
  }
  return nullptr;
}

std::string ReplaySession::Where(size_t stream, uint32_t ordinal) const {
  const StoredStream& where = Stream(stream);
  std::string text = "thread " + std::to_string(where.pid) + '/' + std::to_string(where.tid);
  if (ordinal != UINT32_MAX) text += ", call " + std::to_string(ordinal);
  return text + ": ";
}

std::string ReplaySession::TextOf(uint16_t call, Bytes entry) const {
  bool good = false;
  const Function& function = store_->Calls().Functions()[call];
  return CallText(function, ReadCall(function, false, entry, good), nullptr);
}

std::string ReplaySession::Difference(const StoredEvent& recorded, uint16_t call,
                                      Bytes entry) const {
  std::string both =
      "recorded " + TextOf(recorded.Call(), recorded.payload) + ", now " + TextOf(call, entry);
  if (recorded.Call() != call) return both;
  const Function& function = store_->Calls().Functions()[call];
  bool good = false;
  const CallValues was = ReadCall(function, false, recorded.payload, good);
  const CallValues is = ReadCall(function, false, entry, good);
  for (size_t i = 0; i < function.arguments.size(); ++i) {
    const Argument& argument = function.arguments[i];
    const std::string before = ArgumentText(argument, was.arguments[i], nullptr, true);
    const std::string now = ArgumentText(argument, is.arguments[i], nullptr, true);
    if (before == now) continue;
    return (function.name + ", argument " + argument.name + ": recorded ")
        .append(before)
        .append(", now ")
        .append(now);
  }
  return function.name + ": secrets or fields that are not printed differ";
}

void ReplaySession::Diverge(const std::string& what) {
  if (!thread.hasDiverged) Say(what);
  thread.hasDiverged = true;
}

void ReplaySession::KeepTime(uint64_t fromNs, uint64_t toNs,
                             std::chrono::steady_clock::time_point since) const {
  if (keepsTimes_) std::this_thread::sleep_until(since + std::chrono::nanoseconds(toNs - fromNs));
}

void ReplaySession::BeginTest(uint32_t number, const std::string& name) {
  Lock lock(mutex_);
  const std::vector<StoredTest>& tests = store_->Tests();
  size_t best = SIZE_MAX;
  for (size_t i = 0; i < tests.size(); ++i) {
    if (tests[i].number != number || tests[i].name != name) continue;
    if (best == SIZE_MAX || (takenTests_[best] != 0 && takenTests_[i] == 0)) best = i;
  }
  thread = {};
  if (best == SIZE_MAX) {
    Diverge("the recording has no test " + std::to_string(number) + ' ' + name);
    return;
  }
  takenTests_[best] = 1;
  const size_t stream = tests[best].stream;
  const uint64_t ns = Stream(stream).events[tests[best].event].ns;
  // Move the other threads of that process to the same time.
  for (size_t i = 0; i < store_->Streams().size(); ++i) {
    if (Stream(i).pid != Stream(stream).pid) continue;
    const auto& events = Stream(i).events;
    positions_[i] = static_cast<size_t>(std::ranges::lower_bound(events, ns, {}, &StoredEvent::ns) -
                                        events.begin());
  }
  positions_[stream] = tests[best].event + 1;
  BindTo(lock, stream);
  changed_.notify_all();
}

/// Whether a test of this stream has begun and not ended.
bool ReplaySession::IsInsideTest(size_t stream) const {
  const std::vector<StoredEvent>& events = Stream(stream).events;
  for (size_t i = positions_[stream]; i-- > 0;) {
    if (events[i].IsTestMark()) return events[i].number == kTestBegins;
  }
  return false;
}

/// The first call of this test that failed when it was recorded, with its number; may be empty.
std::string ReplaySession::FailedCall(size_t stream) const {
  const std::vector<StoredEvent>& events = Stream(stream).events;
  std::string text;
  const StoredEvent* back = nullptr;
  for (size_t i = positions_[stream]; i-- > 0 && events[i].number != kTestBegins;) {
    if (events[i].IsMark()) continue;
    const Function& function = store_->Calls().Functions()[events[i].Call()];
    bool good = false;
    if (events[i].IsReturn()) {
      const CallValues values = ReadCall(function, true, events[i].payload, good);
      back = HasSucceeded(function, values.result) ? nullptr : &events[i];
    } else if (back != nullptr && back->Call() == events[i].Call()) {
      const CallValues values = ReadCall(function, true, back->payload, good);
      text = "; call " + std::to_string(events[i].ordinal) + ": " +
             CallText(function, ReadCall(function, false, events[i].payload, good), &values);
    }
  }
  return text;
}

void ReplaySession::EndTest(const std::string& verdict) {
  Lock lock(mutex_);
  if (thread.stream == kNoStream || thread.hasDiverged) return;
  SkipPolls(thread.stream);
  const StoredEvent* const next = Peek(thread.stream);
  if (next == nullptr) return;
  if (next->IsEntry()) {
    Diverge(Where(thread.stream, next->ordinal) + "recorded " +
            TextOf(next->Call(), next->payload) + ", now the test ends");
    return;
  }
  const MarkText recorded = ReadMark({next->ns, next->number, next->payload});
  if (next->number == kTestEnds && recorded.verdict != verdict) {
    Diverge("test " + std::to_string(recorded.number) + " (" + recorded.text + "): recorded " +
            recorded.verdict + ", now " + verdict + FailedCall(thread.stream));
  }
  WaitForOthers(lock, next->ns, thread.stream, true);
  Advance(thread.stream);
}

void ReplaySession::End() {
  Lock lock(mutex_);
  if (thread.stream == kNoStream || thread.hasDiverged) return;
  SkipPolls(thread.stream);
  const StoredEvent* const next = Peek(thread.stream);
  if (next == nullptr || !next->IsEntry()) return;
  Diverge(Where(thread.stream, next->ordinal) + "recorded " + TextOf(next->Call(), next->payload) +
          ", now the program ends");
}

}  // namespace record
