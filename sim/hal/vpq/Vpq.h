// Declarations shared by the picture-quality files.
#pragma once

#include <initializer_list>

#include "TestCase/sic_video/VpqFields.h"
#include "core/Board.h"

namespace sim {

/// The number that is stored for a function.
int32_t ValueOf(const Vpq& vpq, VpqValue key);
void SetValue(Vpq& vpq, VpqValue key, int32_t value);

/// A number and its range.
struct Ranged {
  int32_t value;
  int32_t min;
  int32_t max;
};

/// Returns whether all values are in their ranges.
bool AreInRange(std::initializer_list<Ranged> values);

/// Returns whether every field of a record is in its range.
template <typename Record>
bool HasItsRanges(const Record& record) {
  for (const k2v::RecordField& field : k2v::FieldsOf(&record)) {
    for (std::size_t i = 0; i < field.count; ++i) {
      const int64_t value = k2v::GetField(&record, field, i);
      if (value < field.min || value > field.max) return false;
    }
  }
  return true;
}

}  // namespace sim
