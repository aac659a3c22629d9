// cvntrace drive: repeats the recorded calls on the HAL that is loaded.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <map>

#include "Descriptions.inc"
#include "HalInterface.h"
#include "interface/Decoder.h"
#include "trace/Commands.h"
#include "trace/Compare.h"

namespace record {
namespace {

/// A call that is being repeated: its result is compared when the recorded one returns.
class Driven {
 public:
  virtual ~Driven() = default;
  /// Makes the call; false if it cannot be repeated.
  virtual bool Make(CodecContext& context, void* library, Bytes entry) = 0;
  /// The results, encoded as in a recording.
  virtual std::vector<uint8_t> Back(CodecContext& context, Bytes recorded) = 0;
};

template <typename Call>
class DrivenCall : public Driven {
 public:
  bool Make(CodecContext& context, void* library, Bytes entry) override {
    EntryDecoder decoder(context, entry, arena_);
    call_.Entry(decoder);
    typename Call::Function next = nullptr;
    if constexpr (Call::kIsMethod) {
      if (call_.link == nullptr) return false;
    } else {
      next = reinterpret_cast<typename Call::Function>(dlsym(library, Call::kSymbol));
      if (next == nullptr) return false;
    }
    if (decoder.HadSecrets()) return false;
    call_.Make(next);
    return true;
  }

  std::vector<uint8_t> Back(CodecContext& context, [[maybe_unused]] Bytes recorded) override {
    if constexpr (Call::kMakesObject) {
      uint32_t number = 0;
      std::memcpy(&number, recorded.data(), std::min(sizeof number, recorded.size()));
      context.objects.Bind(call_.result, number);
    }
    std::vector<uint8_t> bytes;
    for (;;) {
      Encoder<true> encoder(context, bytes.data(), bytes.size());
      call_.Return(encoder);
      const bool fits = encoder.Fits();
      bytes.resize(encoder.Size());
      if (fits) return bytes;
    }
  }

 private:
  Arena arena_;
  Call call_;
};

using Maker = std::unique_ptr<Driven> (*)();

template <typename Call>
std::unique_ptr<Driven> Make() {
  return std::make_unique<DrivenCall<Call>>();
}

std::map<unsigned, Maker> Makers() {
  std::map<unsigned, Maker> makers;
#define CVN_ANY(call) makers[call::kIndex] = Make<call>;
#define CVN_FUNCTION(result, name, parameters, call, arguments) CVN_ANY(call)
#define CVN_METHOD(result, name, parameters, call, arguments) CVN_ANY(call)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments) CVN_ANY(call)
#define CVN_CALLBACK(result, name, parameters, call, arguments)
#include "HalCalls.inc"
#undef CVN_FUNCTION
#undef CVN_METHOD
#undef CVN_LINK_FUNCTION
#undef CVN_CALLBACK
  CVN_ANY(Call_RLink_Delete)
#undef CVN_ANY
  return makers;
}

class Driver {
 public:
  Driver(Recording& recording, void* library, const TraceOptions& options)
      : recording_(recording),
        library_(library),
        report_(options.factor),
        makers_(Makers()),
        streams_(recording.Streams().size()) {}

  void Take(size_t index, const Event& event) {
    if (event.IsMark()) return;
    Thread& thread = streams_[index];
    if (event.IsReturn()) {
      if (thread.depth != 0 && --thread.depth == 0) End(thread, event);
      return;
    }
    const Function& function = recording_.Calls().Functions()[event.Call()];
    if (thread.depth++ != 0) return;
    if (function.isCallback) return;
    Begin(index, thread, function, event);
  }

  bool End() {
    if (notMade_ != 0) std::printf("%u calls not made: secrets, or the HAL lacks them\n", notMade_);
    return report_.End();
  }

 private:
  struct Thread {
    unsigned depth = 0;
    uint64_t ordinal = 0;
    std::unique_ptr<Driven> driven;
    KeptCall recorded{};
    uint64_t beginNs = 0;
    uint64_t tookNs = 0;
  };

  void Begin(size_t index, Thread& thread, const Function& function, const Event& event) {
    thread.recorded = {
        &function,
        "thread " + std::to_string(index) + ", call " + std::to_string(thread.ordinal++),
        {event.payload.begin(), event.payload.end()},
        {},
        0,
        true};
    thread.beginNs = event.ns;
    thread.driven = makers_.at(event.Call())();
    const auto begin = std::chrono::steady_clock::now();
    if (!thread.driven->Make(context_, library_, thread.recorded.entry)) {
      thread.driven.reset();
      ++notMade_;
    }
    thread.tookNs = static_cast<uint64_t>((std::chrono::steady_clock::now() - begin).count());
  }

  void End(Thread& thread, const Event& event) {
    if (thread.driven == nullptr) return;
    thread.recorded.back.assign(event.payload.begin(), event.payload.end());
    KeptCall now = thread.recorded;
    now.back = thread.driven->Back(context_, thread.recorded.back);
    const std::string difference = AnswerDifference(thread.recorded, now);
    const std::string& name = thread.recorded.function->name;
    if (!difference.empty()) {
      report_.Say(thread.recorded.where, TextOf(thread.recorded) + ": " + difference);
    }
    report_.Time(name, event.ns - thread.beginNs, thread.tookNs);
    thread.driven.reset();
  }

  Recording& recording_;
  void* library_;
  DifferenceReport report_;
  std::map<unsigned, Maker> makers_;
  std::vector<Thread> streams_;
  CodecContext context_;
  unsigned notMade_ = 0;
};

}  // namespace

int Drive(const std::string& directory, const TraceOptions& options) {
  const auto recording = OpenOrSay(directory);
  if (recording == nullptr) return kUsage;
  std::string error;
  const auto own = Description::Parse(TextOf(kDescription), error);
  for (const std::string& name : own->Differences(recording->Calls())) {
    std::fprintf(stderr, "cvntrace: recorded with another %s\n", name.c_str());
    error = "other headers";
  }
  if (!error.empty()) return kUsage;
  void* const library = dlopen(options.library.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (library == nullptr) {
    std::fprintf(stderr, "cvntrace: %s\n", dlerror());
    return kUsage;
  }
  Driver drive(*recording, library, options);
  recording->ForEach([&](size_t stream, const Event& event) { drive.Take(stream, event); });
  const bool differs = drive.End();
  const int problems = SayProblems(*recording);
  return differs ? int{kProblem} : problems;
}

}  // namespace record
