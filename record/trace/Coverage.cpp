// cvntrace coverage: functions that were never called, and the argument values of the others.
#include <cstdio>
#include <map>
#include <set>

#include "reader/Text.h"
#include "trace/Commands.h"

namespace record {
namespace {

constexpr size_t kMostValues = 8;

/// The values of one number: all if there are few, otherwise the lowest and the highest.
struct Seen {
  std::set<int64_t> values;
  bool isMany = false;
  int64_t lowest = 0;
  int64_t highest = 0;

  void Add(int64_t value) {
    lowest = values.empty() ? value : std::min(lowest, value);
    highest = values.empty() ? value : std::max(highest, value);
    isMany = isMany || (values.size() == kMostValues && !values.contains(value));
    if (!isMany) values.insert(value);
  }

  std::string Text() const {
    if (isMany) return std::to_string(lowest) + " to " + std::to_string(highest);
    std::string text;
    for (const int64_t value : values) text += (text.empty() ? "" : " ") + std::to_string(value);
    return text;
  }
};

class Collected {
 public:
  uint64_t calls = 0;

  void Add(const std::string& name, const Value& value) {
    if (value.record != nullptr) {
      for (size_t i = 0; i < value.items.size(); ++i) {
        Add(name + '.' + value.record->fields[i].name, value.items[i]);
      }
    } else if (!value.isSeveral && value.type->IsNumber()) {
      seen_[name].Add(value.Signed());
    }
  }
  void AddNull(const std::string& name) { nulls_.insert(name); }

  void Print() const {
    for (const std::string& name : nulls_) std::printf("    %s: NULL\n", name.c_str());
    for (const auto& [name, seen] : seen_) {
      std::printf("    %s: %s\n", name.c_str(), seen.Text().c_str());
    }
  }

 private:
  std::map<std::string, Seen> seen_;
  std::set<std::string> nulls_;
};

void Collect(const Call& call, Collected& collected) {
  ++collected.calls;
  bool good = false;
  const CallValues entered = ReadCall(*call.function, false, call.entry, good);
  for (size_t i = 0; good && i < entered.arguments.size(); ++i) {
    const Argument& argument = call.function->arguments[i];
    const ArgumentValue& value = entered.arguments[i];
    if (argument.way == Way::kThis || argument.way == Way::kObject) continue;
    if (!value.isGiven) collected.AddNull(argument.name);
    if (value.isGiven && value.value) collected.Add(argument.name, *value.value);
  }
  if (call.endNs == 0) return;
  const CallValues back = ReadCall(*call.function, true, call.back, good);
  if (good && call.function->resultKind == ResultKind::kNumber) {
    collected.Add("result", *back.result.value);
  }
}

}  // namespace

int Coverage(const std::string& directory, const TraceOptions& options) {
  const auto recording = OpenOrSay(directory);
  if (recording == nullptr) return kUsage;
  const std::vector<Function>& functions = recording->Calls().Functions();
  std::vector<Collected> collected(functions.size());
  CallFilter filter(options);
  ReadCalls(*recording, {[&](const Call& call) {
    if (filter.Takes(call)) Collect(call, collected[call.index]);
  }});
  size_t called = 0;
  for (const Collected& one : collected) called += one.calls != 0;
  std::printf("called: %zu of %zu functions\n", called, functions.size());
  for (size_t i = 0; i < functions.size(); ++i) {
    if (collected[i].calls == 0) continue;
    std::printf("  %s: %llu calls\n", functions[i].name.c_str(),
                static_cast<unsigned long long>(collected[i].calls));
    collected[i].Print();
  }
  std::printf("never called: %zu functions\n", functions.size() - called);
  for (size_t i = 0; i < functions.size(); ++i) {
    if (collected[i].calls == 0) std::printf("  %s\n", functions[i].name.c_str());
  }
  std::fflush(stdout);
  return SayProblems(*recording);
}

}  // namespace record
