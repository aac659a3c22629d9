// Tests in which the operator changes several numbers of one HAL call by single keys.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <tuple>
#include <vector>

#include "TestCase/sic_video/VpqFields.h"

namespace record_adjuster {

/// A number with a key to step it up and one to step it down.
struct Adjustable {
  const char* name;
  int min;
  int max;
  int value;
  int step = 0;           // 0: a hundredth of the range, at least 1
  bool isChoice = false;  // selects what the others belong to: not changed together with them
};

/// Sets the numbers through `apply`, which receives the index of the changed one (0 initially) and
/// returns the HAL's result, until the operator leaves or the result is not 0. The first ten
/// numbers have keys. Returns 0.
int Adjust(std::span<Adjustable> numbers, const std::function<int(std::size_t changed)>& apply);

/// The fields of a record as numbers, at their neutral values. A 3 by 3 matrix is nine numbers that
/// form the identity. Any other array is one number: the slope of its elements, in percent of a
/// straight line from the smallest to the largest value.
std::vector<Adjustable> NumbersOf(std::span<const k2v::RecordField> fields);

/// Writes such numbers to the record.
void Store(std::span<const Adjustable> numbers, std::span<const k2v::RecordField> fields,
           void* record);

/// Lets the operator adjust all fields of a record; `labels` replace the names of the first fields.
/// Returns 0.
template <typename Record>
int AdjustRecord(int (*set)(Record* record), std::initializer_list<const char*> labels = {}) {
  const auto record = std::make_unique<Record>();  // some have large tables
  const auto fields = k2v::FieldsOf(record.get());
  std::vector<Adjustable> numbers = NumbersOf(fields);
  std::size_t i = 0;
  for (const char* label : labels) numbers[i++].name = label;
  return Adjust(numbers, [&](std::size_t) {
    Store(numbers, fields, record.get());
    return set(record.get());
  });
}

/// Lets the operator adjust the numbers of a call. Returns 0.
template <typename... Numbers, std::size_t count>
int AdjustNumbers(int (*set)(Numbers...), const Adjustable (&start)[count]) {
  static_assert(sizeof...(Numbers) == count);
  std::array<Adjustable, count> numbers = std::to_array(start);
  return Adjust(numbers, [&](std::size_t) {
    std::array<int32_t, count> values;
    for (std::size_t i = 0; i < count; ++i) values[i] = numbers[i].value;
    return std::apply(set, values);
  });
}

}  // namespace record_adjuster
