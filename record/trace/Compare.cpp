#include "trace/Compare.h"

#include <cstdio>

#include "reader/Text.h"

namespace record {
namespace {

// Smaller differences go unnoticed, and occur whenever the machine is busy.
constexpr uint64_t kNoticedNs = 20'000;

std::string KeyOf(const ArgumentValue& argument) {
  if (!argument.isGiven) return "NULL";
  return argument.value ? ComparedText(*argument.value) : std::to_string(argument.room);
}

CallValues EntryOf(const KeptCall& call) {
  bool good = false;
  return ReadCall(*call.function, false, call.entry, good);
}

CallValues BackOf(const KeptCall& call) {
  bool good = false;
  return ReadCall(*call.function, true, call.back, good);
}

// Shows the printed texts if they differ, otherwise the complete ones.
std::string Differing(const std::string& name, const std::string& one, const std::string& two,
                      const std::string& allOfOne, const std::string& allOfTwo) {
  const bool isShown = one != two;
  return name + ' ' + (isShown ? one : allOfOne) + ", now " + (isShown ? two : allOfTwo);
}

}  // namespace

std::string TextOf(const KeptCall& call) {
  const CallValues entry = EntryOf(call);
  if (!call.hasReturned) return CallText(*call.function, entry, nullptr);
  const CallValues back = BackOf(call);
  return CallText(*call.function, entry, &back);
}

std::string ArgumentsKey(const KeptCall& call) {
  std::string key = call.function->name;
  for (const ArgumentValue& argument : EntryOf(call).arguments)
    key.append("|").append(KeyOf(argument));
  return key;
}

std::string ArgumentDifference(const KeptCall& one, const KeptCall& two) {
  const CallValues was = EntryOf(one), is = EntryOf(two);
  for (size_t i = 0; i < was.arguments.size(); ++i) {
    const std::string before = KeyOf(was.arguments[i]), now = KeyOf(is.arguments[i]);
    if (before == now) continue;
    const Argument& argument = one.function->arguments[i];
    return Differing("argument " + argument.name + ':',
                     ArgumentText(argument, was.arguments[i], nullptr, true),
                     ArgumentText(argument, is.arguments[i], nullptr, true), before, now);
  }
  return {};
}

std::string AnswerDifference(const KeptCall& one, const KeptCall& two) {
  if (one.hasReturned != two.hasReturned) {
    return two.hasReturned ? "did not return, now it does" : "returned, now it does not";
  }
  if (!one.hasReturned) return {};
  const CallValues was = BackOf(one), is = BackOf(two);
  const Function& function = *one.function;
  // A new object gets a different number; only whether there is one is compared.
  const bool isObject = function.resultKind == ResultKind::kObject;
  const std::string before = isObject ? ResultText(function, was.result) : KeyOf(was.result);
  const std::string now = isObject ? ResultText(function, is.result) : KeyOf(is.result);
  if (before != now) {
    return Differing("result", ResultText(function, was.result), ResultText(function, is.result),
                     before, now);
  }
  for (size_t i = 0; i < was.arguments.size(); ++i) {
    const std::string left = KeyOf(was.arguments[i]), leftNow = KeyOf(is.arguments[i]);
    if (left != leftNow)
      return Differing("wrote to " + function.arguments[i].name, left, leftNow, left, leftNow);
  }
  return {};
}

void DifferenceReport::Say(const std::string& where, const std::string& what) {
  std::printf("%s: %s\n", where.c_str(), what.c_str());
  ++count_;
}

void DifferenceReport::Time(const std::string& function, uint64_t beforeNs, uint64_t nowNs) {
  Times& times = times_[function];
  times.before.Add(beforeNs);
  times.now.Add(nowNs);
}

bool DifferenceReport::End() {
  for (const auto& [function, times] : times_) {
    const uint64_t before = times.before.Quantile(0.5), now = times.now.Quantile(0.5);
    const bool isSlower = static_cast<double>(now) > static_cast<double>(before) * factor_;
    if (!isSlower || now - before < kNoticedNs) continue;
    std::printf("%s: slower: median %.3f us, now %.3f us\n", function.c_str(),
                static_cast<double>(before) / 1e3, static_cast<double>(now) / 1e3);
    ++count_;
  }
  if (count_ == 0) {
    std::printf("no differences\n");
  } else {
    std::printf("%u difference%s\n", count_, count_ == 1 ? "" : "s");
  }
  std::fflush(stdout);
  return count_ != 0;
}

}  // namespace record
