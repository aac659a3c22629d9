// Marks that the harness sets, so that the calls of one test can be found. The harness looks up
// these functions by name.
#include <cstdint>
#include <cstring>

#include "recorder/Session.h"

namespace {

using namespace record;

class MarkBytes {
 public:
  MarkBytes(uint8_t* memory, size_t room) : memory_(memory), room_(room) {}

  void Number(uint32_t number) { Bytes(&number, sizeof number); }
  void Text(const char* text) {
    Bytes(text, strnlen(text, kMaxTextBytes));
    Bytes("", 1);
  }
  size_t Size() const { return size_; }

 private:
  void Bytes(const void* data, size_t size) {
    if (size_ + size <= room_) std::memcpy(memory_ + size_, data, size);
    size_ += size;
  }

  uint8_t* memory_;
  size_t room_;
  size_t size_ = 0;
};

template <typename Put>
void Mark(MarkEvent event, Put put) {
  WriteEvent(event, [&](uint8_t* memory, size_t room) {
    MarkBytes bytes(memory, room);
    put(bytes);
    return bytes.Size();
  });
}

}  // namespace

extern "C" {

void cvn_mark_test_begins(uint32_t number, const char* name) {
  Mark(kTestBegins, [=](MarkBytes& bytes) {
    bytes.Number(number);
    bytes.Text(name);
  });
}

void cvn_mark_test_ends(uint32_t number, const char* name, const char* verdict) {
  Mark(kTestEnds, [=](MarkBytes& bytes) {
    bytes.Number(number);
    bytes.Text(name);
    bytes.Text(verdict);
  });
}

void cvn_mark_prompt(const char* kind, const char* text) {
  Mark(kPrompt, [=](MarkBytes& bytes) {
    bytes.Text(kind);
    bytes.Text(text);
  });
}

void cvn_mark_answer(const char* answer) {
  Mark(kAnswer, [=](MarkBytes& bytes) { bytes.Text(answer); });
}

}  // extern "C"
