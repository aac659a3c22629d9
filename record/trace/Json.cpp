// cvntrace json: trace events for trace viewers.
#include <cstdio>

#include "trace/Commands.h"

namespace record {
namespace {

std::string JsonText(const std::string& text) {
  std::string out = "\"";
  char escape[8];
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F) {
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
      out += escape;
    } else {
      out += c;
    }
  }
  return out + '"';
}

class JsonWriter {
 public:
  explicit JsonWriter(const Recording& recording) : recording_(recording) {
    std::printf("{\"displayTimeUnit\": \"ns\", \"traceEvents\": [");
  }

  void Put(const Call& call) {
    const char* const phase = call.endNs == 0 ? "B" : "X";
    Begin(call.function->name, phase, call.stream, call.beginNs);
    if (call.endNs != 0) {
      std::printf(", \"dur\": %.3f", static_cast<double>(call.endNs - call.beginNs) / 1e3);
    }
    std::printf(", \"cat\": \"%s\", \"args\": {\"call\": %s}}",
                call.function->isCallback ? "callback" : "call", JsonText(TextOf(call)).c_str());
  }

  void Put(size_t stream, const Event& event, const MarkText& mark) {
    if (event.number == kTestBegins || event.number == kTestEnds) {
      Begin(std::to_string(mark.number) + ' ' + mark.text, event.number == kTestBegins ? "b" : "e",
            stream, event.ns);
      std::printf(", \"cat\": \"test\", \"id\": 1, \"args\": {\"verdict\": %s}}",
                  JsonText(mark.verdict).c_str());
      return;
    }
    Begin((event.number == kPrompt ? "prompt: " : "answer: ") + mark.text, "i", stream, event.ns);
    std::printf(", \"s\": \"t\", \"cat\": \"console\"}");
  }

  void End() { std::printf("\n]}\n"); }

 private:
  void Begin(const std::string& name, const char* phase, size_t stream, uint64_t ns) {
    const StreamReader& reader = *recording_.Streams()[stream];
    std::printf("%s\n{\"name\": %s, \"ph\": \"%s\", \"ts\": %.3f, \"pid\": %u, \"tid\": %u",
                isFirst_ ? "" : ",", JsonText(name).c_str(), phase, static_cast<double>(ns) / 1e3,
                reader.Pid(), reader.Tid());
    isFirst_ = false;
  }

  const Recording& recording_;
  bool isFirst_ = true;
};

}  // namespace

int Json(const std::string& directory, const TraceOptions& options) {
  const auto recording = OpenOrSay(directory);
  if (recording == nullptr) return kUsage;
  JsonWriter writer(*recording);
  CallFilter filter(options);
  ReadCalls(*recording, {[&](const Call& call) {
                           if (filter.Takes(call)) writer.Put(call);
                         },
                         [&](size_t stream, const Event& event, const MarkText& mark) {
                           writer.Put(stream, event, mark);
                         }});
  writer.End();
  std::fflush(stdout);
  return SayProblems(*recording);
}

}  // namespace record
