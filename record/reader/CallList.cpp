#include "reader/CallList.h"

#include <deque>

namespace record {
namespace {

struct Open {
  unsigned index;
  uint64_t ordinal;
  uint64_t beginNs;
  std::vector<uint8_t> entry;
  const TestMark* test;
};

struct StreamState {
  std::vector<Open> open;
  std::vector<std::vector<uint8_t>> spare;  // memory of finished calls
  uint64_t calls = 0;
};

class Reading {
 public:
  Reading(Recording& recording, const CallListener& listener)
      : recording_(recording), listener_(listener), streams_(recording.Streams().size()) {}

  void Take(size_t stream, const Event& event) {
    if (event.IsMark()) return TakeMark(stream, event);
    if (event.IsReturn()) return TakeReturn(stream, event);
    TakeEntry(streams_[stream], event);
  }

  void End() {
    for (size_t stream = 0; stream < streams_.size(); ++stream) {
      for (const Open& open : streams_[stream].open) Report(stream, open, 0, {}, false);
    }
  }

 private:
  void TakeMark(size_t stream, const Event& event) {
    const MarkText mark = ReadMark(event);
    if (event.number == kTestBegins) {
      tests_.push_back({mark.number, mark.text, event.ns});
      test_ = &tests_.back();
    }
    if (listener_.mark) listener_.mark(stream, event, mark);
    if (event.number == kTestEnds) test_ = nullptr;
  }

  void TakeEntry(StreamState& state, const Event& event) {
    std::vector<uint8_t> memory;
    if (!state.spare.empty()) {
      memory = std::move(state.spare.back());
      state.spare.pop_back();
    }
    memory.assign(event.payload.begin(), event.payload.end());
    state.open.push_back({event.Call(), state.calls++, event.ns, std::move(memory), test_});
  }

  // A return without its entry occurs only in a file that was modified.
  void TakeReturn(size_t stream, const Event& event) {
    StreamState& state = streams_[stream];
    if (state.open.empty() || state.open.back().index != event.Call()) return;
    Report(stream, state.open.back(), event.ns, event.payload, state.open.size() > 1);
    state.spare.push_back(std::move(state.open.back().entry));
    state.open.pop_back();
  }

  void Report(size_t stream, const Open& open, uint64_t endNs, Bytes back, bool isNested) {
    if (!listener_.call) return;
    listener_.call({&recording_.Calls().Functions()[open.index], open.index, stream, open.ordinal,
                    open.beginNs, endNs, open.entry, back, open.test, isNested});
  }

  Recording& recording_;
  const CallListener& listener_;
  std::vector<StreamState> streams_;
  std::deque<TestMark> tests_;
  const TestMark* test_ = nullptr;
};

}  // namespace

void ReadCalls(Recording& recording, const CallListener& listener) {
  Reading reading(recording, listener);
  recording.ForEach([&](size_t stream, const Event& event) { reading.Take(stream, event); });
  reading.End();
}

}  // namespace record
