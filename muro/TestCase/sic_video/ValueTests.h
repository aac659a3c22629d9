// Tests that show one value of the HAL, and tests in which the operator changes one with single
// keys. They print their own texts only: the name of the test is printed by the test.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "TestCase/sic_video/VpqFields.h"

namespace value_tests {

using NumberGetter = int (*)(int32_t* value);
using NumberSetter = int (*)(int32_t value);

/// What the values of a setting mean, from `first` on.
struct Levels {
  int first;
  std::span<const char* const> names;
};

inline constexpr const char* kStrengthNames[] = {"off", "low", "mid", "high", "auto", "butt"};
inline constexpr const char* kSwitchNames[] = {"off", "on"};
inline constexpr const char* kDigitNames[] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"};
inline constexpr const char* kSignedNames[] = {"-3", "-2", "-1", "0", "1", "2", "3"};

inline constexpr Levels kStrengths = {0, kStrengthNames};
inline constexpr Levels kSwitch = {0, kSwitchNames};
inline constexpr Levels kSigned = {-3, kSignedNames};

/// Levels that have no other names than their numbers, 0 to `count` - 1.
constexpr Levels Digits(std::size_t count) {
  return {0, std::span(kDigitNames).first(count)};
}

/// Reads a number and shows it for four seconds. Returns 0 always.
int ShowNumber(const char* label, NumberGetter get);

/// The same for a setting of levels, with what they mean before it.
int ShowLevel(const char* label, const Levels& levels, NumberGetter get);

/// The same for a text.
int ShowText(const char* label, int (*get)(char* text));

/// Prints every field of a record on a line of its own, each element of an array too.
void PrintRecord(const void* record, std::span<const k2v::RecordField> fields);

/// Leaves what is on the screen there for four seconds.
void LetRead();

/// Reads a record, zero before, and shows it for four seconds. Returns 0 always.
template <typename Record>
int ShowRecord(int (*get)(Record* record)) {
  const auto record = std::make_unique<Record>();  // tables of some are large
  get(record.get());
  PrintRecord(record.get(), k2v::FieldsOf(record.get()));
  LetRead();
  return 0;
}

/// Shows a record and sets it. Returns 0 always.
template <typename Record>
int SendRecord(int (*set)(Record* record), Record record) {
  PrintRecord(&record, k2v::FieldsOf(&record));
  set(&record);
  return 0;
}

/// A setting of a range; `get` is null where the HAL tells none.
struct Range {
  const char* label;
  int min;
  int max;
  NumberSetter set;
  NumberGetter get = nullptr;
};

/// Lets the operator step through a range until he leaves or the HAL refuses a value. Returns 0.
int AdjustRange(const Range& range);

/// Lets the operator choose levels until he leaves or the HAL refuses one. Returns 0.
int ChooseLevel(const char* label, const Levels& levels, NumberSetter set,
                NumberGetter get = nullptr);

}  // namespace value_tests
