// cvntrace print: the calls as text, as the simulated board's trace shows them.
#include <cstdio>

#include "trace/Commands.h"

namespace record {
namespace {

class Printer {
 public:
  Printer(const Recording& recording, const TraceOptions& options)
      : recording_(recording), options_(options), filter_(options) {}

  void Print(const Call& call) {
    if (!filter_.Takes(call)) return;
    PutTime(call.stream, call.beginNs, call.endNs);
    std::printf("%s%s\n", call.function->isCallback ? "# called " : "", TextOf(call).c_str());
  }

  void Print(size_t stream, const Event& event, const MarkText& mark) {
    if (!options_.function.empty()) return;
    const bool isTest = event.number == kTestBegins || event.number == kTestEnds;
    if (isTest) isShown_ = filter_.TakesTest(mark.number, mark.text);
    if (!isShown_) return;
    PutTime(stream, event.ns, 0);
    switch (event.number) {
      case kTestBegins:
        std::printf("# test %u begins: %s\n", mark.number, mark.text.c_str());
        return;
      case kTestEnds:
        std::printf("# test %u ends: %s: %s\n", mark.number, mark.text.c_str(),
                    mark.verdict.c_str());
        isShown_ = options_.test.empty();
        return;
      case kPrompt:
        std::printf("# prompt for a %s: %s\n", mark.kind.c_str(), mark.text.c_str());
        return;
      default:
        std::printf("# answer: %s\n", mark.text.c_str());
    }
  }

 private:
  // Time since the first event, duration, process and thread.
  void PutTime(size_t stream, uint64_t ns, uint64_t endNs) {
    if (!options_.times) return;
    if (beginNs_ == 0) beginNs_ = ns;
    const StreamReader& reader = *recording_.Streams()[stream];
    const double since = static_cast<double>(static_cast<int64_t>(ns - beginNs_)) / 1e9;
    std::printf("%12.6f ", since);
    if (endNs != 0) {
      std::printf("%10.1f us ", static_cast<double>(endNs - ns) / 1e3);
    } else {
      std::printf("%13s ", "");
    }
    std::printf("%u/%u ", reader.Pid(), reader.Tid());
  }

  const Recording& recording_;
  const TraceOptions& options_;
  CallFilter filter_;
  uint64_t beginNs_ = 0;
  bool isShown_ = options_.test.empty();
};

}  // namespace

int Print(const std::string& directory, const TraceOptions& options) {
  const auto recording = OpenOrSay(directory);
  if (recording == nullptr) return kUsage;
  Printer printer(*recording, options);
  ReadCalls(*recording, {[&](const Call& call) { printer.Print(call); },
                         [&](size_t stream, const Event& event, const MarkText& mark) {
                           printer.Print(stream, event, mark);
                         }});
  std::fflush(stdout);
  return SayProblems(*recording);
}

}  // namespace record
