// cvntrace diff: how a second recording differs.
#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

#include "trace/Commands.h"
#include "trace/Compare.h"

namespace record {
namespace {

// With more differences it is a different session.
constexpr int kMostEdits = 1000;

using Calls = std::vector<KeptCall>;

std::string Where(const Call& call) {
  std::string text;
  if (call.test != nullptr) {
    text = "test " + std::to_string(call.test->number) + " (" + call.test->name + "), ";
  }
  return text + "thread " + std::to_string(call.stream) + ", call " + std::to_string(call.ordinal);
}

/// All calls of each thread, in the order in which they began.
std::vector<Calls> Load(Recording& recording, const TraceOptions& options) {
  std::vector<std::map<uint64_t, KeptCall>> byOrdinal(recording.Streams().size());
  CallFilter filter(options);
  ReadCalls(recording, {[&](const Call& call) {
              if (!filter.Takes(call)) return;
              byOrdinal[call.stream].emplace(
                  call.ordinal, KeptCall{call.function,
                                         Where(call),
                                         {call.entry.begin(), call.entry.end()},
                                         {call.back.begin(), call.back.end()},
                                         call.endNs == 0 ? 0 : call.endNs - call.beginNs,
                                         call.endNs != 0});
            }});
  std::vector<Calls> streams;
  for (auto& calls : byOrdinal) {
    if (calls.empty()) continue;
    Calls& stream = streams.emplace_back();
    for (auto& [ordinal, call] : calls) stream.push_back(std::move(call));
  }
  return streams;
}

struct Pair {
  size_t one, two;
};

/// The longest common subsequence, by the shortest edit (Myers); empty if that is too long.
std::vector<Pair> CommonCalls(const std::vector<std::string>& one,
                              const std::vector<std::string>& two, bool& isTooFar) {
  const auto n = static_cast<int>(one.size()), m = static_cast<int>(two.size());
  const auto same = [&](int x, int y) {
    return one[static_cast<size_t>(x)] == two[static_cast<size_t>(y)];
  };
  std::vector<std::map<int, int>> steps;
  std::map<int, int> furthest = {{1, 0}};
  const int most = std::min(n + m, kMostEdits);
  isTooFar = true;
  for (int d = 0; d <= most && isTooFar; ++d) {
    steps.push_back(furthest);
    for (int k = -d; k <= d; k += 2) {
      const bool down = k == -d || (k != d && furthest[k - 1] < furthest[k + 1]);
      int x = down ? furthest[k + 1] : furthest[k - 1] + 1;
      while (x < n && x - k < m && same(x, x - k)) ++x;
      furthest[k] = x;
      if (x >= n && x - k >= m) {
        isTooFar = false;
        break;
      }
    }
  }
  std::vector<Pair> pairs;
  if (isTooFar) return pairs;
  int x = n, y = m;
  for (int d = static_cast<int>(steps.size()) - 1; d >= 0; --d) {
    std::map<int, int>& v = steps[static_cast<size_t>(d)];
    const int k = x - y;
    const bool down = k == -d || (k != d && v[k - 1] < v[k + 1]);
    const int before = down ? k + 1 : k - 1;
    const int fromX = d == 0 ? 0 : v[before], fromY = d == 0 ? 0 : fromX - before;
    while (x > fromX && y > fromY && same(x - 1, y - 1)) {
      --x, --y;
      pairs.push_back({static_cast<size_t>(x), static_cast<size_t>(y)});
    }
    x = fromX, y = fromY;
  }
  std::ranges::reverse(pairs);
  return pairs;
}

class ThreadDiff {
 public:
  ThreadDiff(const Calls& one, const Calls& two, DifferenceReport& report)
      : one_(one), two_(two), report_(report) {}

  void Run() {
    for (const KeptCall& call : one_) keysOne_.push_back(ArgumentsKey(call));
    for (const KeptCall& call : two_) keysTwo_.push_back(ArgumentsKey(call));
    bool isTooFar = false;
    const std::vector<Pair> pairs = CommonCalls(keysOne_, keysTwo_, isTooFar);
    if (isTooFar) {
      report_.Say((one_.empty() ? two_ : one_)[0].where,
                  "another session: more than " + std::to_string(kMostEdits) + " calls differ");
      return;
    }
    Pair last = {0, 0};
    for (const Pair& pair : pairs) {
      Gap(last, pair);
      Same(one_[pair.one], two_[pair.two]);
      last = {pair.one + 1, pair.two + 1};
    }
    Gap(last, {one_.size(), two_.size()});
    SayMoved();
    for (const size_t i : missing_) report_.Say(one_[i].where, "missing: " + TextOf(one_[i]));
    for (const size_t i : surplus_) report_.Say(two_[i].where, "new: " + TextOf(two_[i]));
  }

 private:
  void Same(const KeptCall& one, const KeptCall& two) {
    const std::string difference = AnswerDifference(one, two);
    if (!difference.empty()) report_.Say(one.where, one.function->name + ": " + difference);
    if (one.hasReturned && two.hasReturned) {
      report_.Time(one.function->name, one.durationNs, two.durationNs);
    }
  }

  // Calls of one function in the same gap count as the same call with other arguments.
  void Gap(const Pair& from, const Pair& to) {
    std::vector<size_t> rest;
    for (size_t i = from.two; i < to.two; ++i) rest.push_back(i);
    for (size_t i = from.one; i < to.one; ++i) {
      const auto other = std::ranges::find_if(
          rest, [&](size_t j) { return two_[j].function->name == one_[i].function->name; });
      if (other == rest.end()) {
        missing_.push_back(i);
        continue;
      }
      report_.Say(one_[i].where,
                  one_[i].function->name + ", " + ArgumentDifference(one_[i], two_[*other]));
      rest.erase(other);
    }
    surplus_.insert(surplus_.end(), rest.begin(), rest.end());
  }

  void SayMoved() {
    std::erase_if(missing_, [&](size_t i) {
      const auto moved =
          std::ranges::find_if(surplus_, [&](size_t j) { return keysTwo_[j] == keysOne_[i]; });
      if (moved == surplus_.end()) return false;
      report_.Say(one_[i].where, "other order: " + TextOf(one_[i]) + " is now in the place of " +
                                     two_[*moved].where);
      surplus_.erase(moved);
      return true;
    });
  }

  const Calls& one_;
  const Calls& two_;
  DifferenceReport& report_;
  std::vector<std::string> keysOne_, keysTwo_;
  std::vector<size_t> missing_, surplus_;
};

}  // namespace

int Diff(const std::string& one, const std::string& two, const TraceOptions& options) {
  const auto first = OpenOrSay(one), second = OpenOrSay(two);
  if (first == nullptr || second == nullptr) return kUsage;
  const std::vector<Calls> before = Load(*first, options), now = Load(*second, options);
  DifferenceReport report(options.factor);
  const Calls none;
  for (size_t i = 0; i < std::max(before.size(), now.size()); ++i) {
    ThreadDiff(i < before.size() ? before[i] : none, i < now.size() ? now[i] : none, report).Run();
  }
  const bool differs = report.End();
  const int problems = std::max(SayProblems(*first), SayProblems(*second));
  return differs ? int{kProblem} : problems;
}

}  // namespace record
