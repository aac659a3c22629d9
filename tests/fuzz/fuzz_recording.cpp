// One thread's file of a recording of HAL calls, garbled in any way, and descriptions of calls.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Descriptions.inc"
#include "FuzzFile.h"
#include "reader/CallList.h"
#include "reader/Text.h"

namespace {

const std::string& Directory() {
  static const std::string directory = [] {
    const std::string made = fuzz::NewDirectory();
    fuzz::WriteFile(made + "/metadata", std::string("/* CTF 1.8 */\n/* cvn-descriptions\n") +
                                            record::TextOf(record::kDescription) + "*/\n");
    return made;
  }();
  return directory;
}

/// The bytes of a text that begins with "hex", the form in which the corpus is stored.
std::string FromHex(std::string_view text) {
  std::string bytes;
  int digits = 0, byte = 0;
  for (const char c : text) {
    const bool isLetter = c >= 'a' && c <= 'f';
    if (!isLetter && (c < '0' || c > '9')) continue;
    byte = byte << 4 | (isLetter ? c - 'a' + 10 : c - '0');
    if (++digits % 2 == 0) bytes.push_back(static_cast<char>(byte));
  }
  return bytes;
}

std::string Text(const record::Call& call) {
  bool isEntryGood = false, isBackGood = false;
  const auto entry = ReadCall(*call.function, false, call.entry, isEntryGood);
  fuzz::Require(isEntryGood, "a malformed entry was accepted");
  if (call.endNs == 0) return CallText(*call.function, entry, nullptr);
  const auto back = ReadCall(*call.function, true, call.back, isBackGood);
  fuzz::Require(isBackGood, "a malformed return was accepted");
  return CallText(*call.function, entry, &back);
}

void ReadStream(std::string_view bytes) {
  fuzz::WriteFile(Directory() + "/stream-1-1-0", bytes);
  std::string error;
  const auto recording = record::Recording::Open(Directory(), error);
  fuzz::Require(recording != nullptr, "a recording is refused for one of its streams");
  record::ReadCalls(*recording, {[](const record::Call& call) {
    const std::string text = Text(call);
    fuzz::Require(text.starts_with(call.function->name), "a call without a name");
    fuzz::Plant("a return", call.endNs != 0 && call.ordinal > 2);
  }});
  for (const std::string& problem : recording->Problems()) {
    fuzz::Require(problem.find('\n') == std::string::npos, "a problem is not one line");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  constexpr std::string_view kHex = "hex\n";
  if (bytes.starts_with(kHex)) {
    ReadStream(FromHex(bytes.substr(kHex.size())));
  } else {
    ReadStream(bytes);
  }
  std::string error;
  const auto description = record::Description::Parse(bytes, error);
  fuzz::Require((description == nullptr) == !error.empty(), "refused without a reason");
  return 0;
}
