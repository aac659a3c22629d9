// cvntrace stats: number and durations of calls, by function and by test.
#include <algorithm>
#include <cstdio>
#include <map>

#include "trace/Commands.h"
#include "trace/Histogram.h"

namespace record {
namespace {

using Table = std::map<std::string, Histogram>;

double Us(uint64_t ns) {
  return static_cast<double>(ns) / 1e3;
}

void PrintTable(const char* title, const Table& table) {
  std::vector<const Table::value_type*> rows;
  for (const auto& row : table) rows.push_back(&row);
  std::ranges::stable_sort(rows, std::greater{},
                           [](const auto* row) { return row->second.SumNs(); });
  std::printf("%-50s %9s %12s %10s %10s %10s\n", title, "calls", "total us", "median us", "p99 us",
              "worst us");
  for (const auto* row : rows) {
    const Histogram& times = row->second;
    std::printf("%-50s %9llu %12.3f %10.3f %10.3f %10.3f\n", row->first.c_str(),
                static_cast<unsigned long long>(times.Count()), Us(times.SumNs()),
                Us(times.Quantile(0.5)), Us(times.Quantile(0.99)), Us(times.WorstNs()));
  }
}

}  // namespace

int Stats(const std::string& directory, const TraceOptions& options) {
  const auto recording = OpenOrSay(directory);
  if (recording == nullptr) return kUsage;
  CallFilter filter(options);
  std::vector<Histogram> functions(recording->Calls().Functions().size());
  Table tests;
  uint64_t unfinished = 0;
  ReadCalls(*recording, {[&](const Call& call) {
    if (!filter.Takes(call)) return;
    if (call.endNs == 0) {
      ++unfinished;
      return;
    }
    const uint64_t ns = call.endNs - std::min(call.beginNs, call.endNs);
    functions[call.index].Add(ns);
    if (call.test != nullptr) {
      tests[std::to_string(call.test->number) + ' ' + call.test->name].Add(ns);
    }
  }});
  Table table;
  for (size_t i = 0; i < functions.size(); ++i) {
    if (functions[i].Count() != 0) {
      table[recording->Calls().Functions()[i].name] = std::move(functions[i]);
    }
  }
  PrintTable("function", table);
  if (!tests.empty()) {
    std::printf("\n");
    PrintTable("test", tests);
  }
  if (unfinished != 0) {
    std::printf("\n%llu calls did not return\n", static_cast<unsigned long long>(unfinished));
  }
  std::fflush(stdout);
  return SayProblems(*recording);
}

}  // namespace record
