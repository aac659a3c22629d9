// A recording in memory, by thread.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "reader/Recording.h"

namespace record {

struct StoredEvent {
  uint64_t ns;
  uint16_t number;
  Bytes payload;
  uint32_t ordinal;  // of the call that it begins, within its stream

  bool IsMark() const { return number < kFirstCallEvent; }
  bool IsTestMark() const { return number == kTestBegins || number == kTestEnds; }
  bool IsEntry() const { return !IsMark() && (number - kFirstCallEvent) % 2 == 0; }
  bool IsReturn() const { return !IsMark() && !IsEntry(); }
  uint16_t Call() const { return static_cast<uint16_t>((number - kFirstCallEvent) / 2); }
};

struct StoredStream {
  uint32_t pid = 0;
  uint32_t tid = 0;
  uint32_t parentPid = 0;
  std::vector<StoredEvent> events;
  bool isOfHandlers = false;  // a thread of the HAL, on which it calls handlers
};

/// A test, from its first mark.
struct StoredTest {
  size_t stream;
  size_t event;
  uint32_t number;
  std::string name;
};

class Store {
 public:
  /// Returns null and sets `error` if there is no such recording, or if it was made with other
  /// headers.
  static std::unique_ptr<Store> Load(const std::string& directory, std::string_view description,
                                     std::string& error);

  const Description& Calls() const { return recording_->Calls(); }
  const Salt& TheSalt() const { return recording_->TheSalt(); }
  const std::vector<StoredStream>& Streams() const { return streams_; }
  const std::vector<StoredTest>& Tests() const { return tests_; }
  std::vector<std::string> Problems() const { return recording_->Problems(); }

 private:
  void Keep(size_t stream, const Event& event);

  std::unique_ptr<Recording> recording_;
  std::vector<StoredStream> streams_;
  std::vector<StoredTest> tests_;
  std::deque<std::vector<uint8_t>> payloads_;
};

}  // namespace record
