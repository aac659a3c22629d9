// A recording: its description, and the events of all its threads in order of time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "interface/Digest.h"
#include "interface/Format.h"
#include "reader/Description.h"
#include "reader/Value.h"

namespace record {

/// An event in place; its payload is valid until the next event of its stream is read.
struct Event {
  uint64_t ns = 0;
  uint16_t number = 0;
  Bytes payload;

  bool IsMark() const { return number < kFirstCallEvent; }
  bool IsReturn() const { return (number - kFirstCallEvent) % 2 != 0; }
  unsigned Call() const { return (number - kFirstCallEvent) / 2U; }
};

/// The content of a mark; `text` is a test, a prompt or an answer.
struct MarkText {
  uint32_t number = 0;
  std::string kind;  // of input that the prompt expects
  std::string text;
  std::string verdict;
};
MarkText ReadMark(const Event& event);

/// The events of one thread, read packet by packet.
class StreamReader {
 public:
  StreamReader(std::filesystem::path path, const Description& description);

  /// The next event; false at the end. If it could not read on, `Problem()` has the reason.
  bool Next(Event& event);
  /// The time of the first event, for the order of streams; false if there is none.
  bool PeekBegin(uint64_t& ns);

  uint32_t Pid() const { return header_.pid; }
  uint32_t Tid() const { return header_.tid; }
  uint32_t ParentPid() const { return header_.parentPid; }
  const std::string& Problem() const { return problem_; }
  std::string Name() const { return path_.filename(); }

 private:
  bool ReadPacket();
  bool End(const std::string& problem);

  std::filesystem::path path_;
  const Description& description_;
  uint64_t offset_ = 0;  // of the next packet in the file
  PacketHeader header_{};
  std::vector<uint8_t> packet_;
  size_t at_ = 0;
  bool isCut_ = false;
  bool isAtEnd_ = false;
  std::string problem_;
};

class Recording {
 public:
  /// Opens the recording in `directory`; null with `error` if it is not a recording.
  static std::unique_ptr<Recording> Open(const std::filesystem::path& directory,
                                         std::string& error);

  const Description& Calls() const { return *description_; }
  const Salt& TheSalt() const { return salt_; }
  const std::vector<std::unique_ptr<StreamReader>>& Streams() const { return streams_; }

  /// Calls `each(stream, event)` for all events in order of time. Can be called only once.
  void ForEach(const std::function<void(size_t stream, const Event& event)>& each);
  /// What could not be read, one line each.
  std::vector<std::string> Problems() const;

 private:
  std::unique_ptr<Description> description_;
  Salt salt_{};
  std::vector<std::unique_ptr<StreamReader>> streams_;  // in the order in which they begin
  std::vector<uint64_t> begins_;
};

}  // namespace record
