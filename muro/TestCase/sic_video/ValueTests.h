// Tests that show one value of the HAL, and tests in which the operator changes one by single keys.
// The functions only print their own texts: the name of the test is printed by the test.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "TestCase/sic_video/VpqFields.h"

namespace value_tests {

using NumberGetter = int (*)(int32_t* value);
using NumberSetter = int (*)(int32_t value);

/// The meanings of the values of a setting, starting at `first`.
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

/// Levels whose names are just their numbers, 0 to `count` - 1.
constexpr Levels Digits(std::size_t count) {
  return {0, std::span(kDigitNames).first(count)};
}

/// Reads a number and shows it for four seconds. Always returns 0.
int ShowNumber(const char* label, NumberGetter get);

/// The same for a setting of levels, preceded by their meanings.
int ShowLevel(const char* label, const Levels& levels, NumberGetter get);

/// The same for a text.
int ShowText(const char* label, int (*get)(char* text));

/// Prints every field of a record on a separate line, and each element of an array as well.
void PrintRecord(const void* record, std::span<const k2v::RecordField> fields);

/// Waits four seconds, so that the output can be read.
void LetRead();

/// Reads a zero-initialised record and shows it for four seconds. Always returns 0.
template <typename Record>
int ShowRecord(int (*get)(Record* record)) {
  const auto record = std::make_unique<Record>();  // some have large tables
  get(record.get());
  PrintRecord(record.get(), k2v::FieldsOf(record.get()));
  LetRead();
  return 0;
}

/// Shows a record and sets it. Always returns 0.
template <typename Record>
int SendRecord(int (*set)(Record* record), Record record) {
  PrintRecord(&record, k2v::FieldsOf(&record));
  set(&record);
  return 0;
}

/// A setting with a range; `get` is null if the HAL cannot read the setting.
struct Range {
  const char* label;
  int min;
  int max;
  NumberSetter set;
  NumberGetter get = nullptr;
};

/// Lets the operator step through a range until they leave or the HAL refuses a value. Returns 0.
int AdjustRange(const Range& range);

/// Lets the operator choose levels until they leave or the HAL refuses one. Returns 0.
int ChooseLevel(const char* label, const Levels& levels, NumberSetter set,
                NumberGetter get = nullptr);

}  // namespace value_tests
