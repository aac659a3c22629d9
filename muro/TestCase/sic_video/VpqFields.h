// The fields of the picture-quality parameter records as tables, for code that fills, prints or
// checks any record field by field. Names, widths and signs are those of the HAL's headers, ranges
// those of VpqRanges.def.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "k2v/vpq.h"

namespace k2v {

/// One field of a record: a number, or `count` of them `stride` bytes apart.
struct RecordField {
  const char* name;
  std::size_t offset;
  std::size_t width;  // bytes: 1, 2 or 4
  bool isSigned;
  std::size_t count;
  std::size_t stride;
  int min;
  int max;
  bool isMatrix = false;  // 3 by 3, row by row, in units of 1 / kMatrixOne
};

constexpr int kMatrixOne = 4096;
constexpr std::size_t kMatrixSide = 3;

/// `Record::table` of a record type contains its fields in the order of the record.
template <typename T>
struct RecordFields;

/// A field of type `T`, a number or an array of numbers.
template <typename T>
constexpr RecordField FieldOfType(const char* name, std::size_t offset, int min, int max) {
  using Number = std::remove_all_extents_t<T>;
  constexpr std::size_t kWidth = sizeof(Number);
  return {name, offset, kWidth, std::is_signed_v<Number>, sizeof(T) / kWidth, kWidth, min, max};
}

/// The same for a matrix.
template <typename T>
constexpr RecordField MatrixOfType(const char* name, std::size_t offset, int min, int max) {
  static_assert(std::extent_v<T> == kMatrixSide * kMatrixSide);
  RecordField field = FieldOfType<T>(name, offset, min, max);
  field.isMatrix = true;
  return field;
}

// clang-format off
#define RANGES_OF(record)   \
  template <>               \
  struct RecordFields<record> { \
    using Record = record;  \
    static constexpr RecordField table[] = {
#define RANGE(field, min, max) \
  FieldOfType<decltype(Record::field)>(#field, offsetof(Record, field), min, max),
#define MATRIX(field, min, max) \
  MatrixOfType<decltype(Record::field)>(#field, offsetof(Record, field), min, max),
#define RANGES_END }; };
#include "VpqRanges.def"
#undef RANGES_OF
#undef RANGE
#undef MATRIX
#undef RANGES_END
// clang-format on

/// The colour regions' gains, region by region in each field.
template <>
struct RecordFields<CHIP_COLOR_CONTROL_T> {
  static constexpr std::size_t kStride = sizeof(CHIP_COLOR_CONTROL_ENTRY_T);
  static constexpr RecordField table[] = {
      {"nMasterGain", 0, 2, false, K2V_VPQ_COLOR_REGIONS, kStride, 0, 65535},
      {"nHueGain", 2, 1, false, K2V_VPQ_COLOR_REGIONS, kStride, 0, 255},
      {"nSaturationGain", 3, 1, false, K2V_VPQ_COLOR_REGIONS, kStride, 0, 255},
      {"nBrightnessGain", 4, 1, false, K2V_VPQ_COLOR_REGIONS, kStride, 0, 255},
      {"nOffset", 5, 1, false, K2V_VPQ_COLOR_REGIONS, kStride, 0, 255},
  };
};

/// The fields of a record's type.
template <typename T>
constexpr std::span<const RecordField> FieldsOf(const T*) {
  return RecordFields<T>::table;
}

/// Calls `use` with a number of the field's type.
template <typename Use>
auto WithTypeOf(const RecordField& field, Use use) {
  switch (field.width) {
    case 1:
      return field.isSigned ? use(int8_t{}) : use(uint8_t{});
    case 2:
      return field.isSigned ? use(int16_t{}) : use(uint16_t{});
    default:
      return field.isSigned ? use(int32_t{}) : use(uint32_t{});
  }
}

/// Reads element `i` of a field.
inline int64_t GetField(const void* record, const RecordField& field, std::size_t i = 0) {
  const auto* const at = static_cast<const char*>(record) + field.offset + i * field.stride;
  return WithTypeOf(field, [at](auto number) {
    std::memcpy(&number, at, sizeof number);
    return int64_t{number};
  });
}

/// Writes element `i` of a field, truncated to the field's width.
inline void SetField(void* record, const RecordField& field, int64_t value, std::size_t i = 0) {
  auto* const at = static_cast<char*>(record) + field.offset + i * field.stride;
  WithTypeOf(field, [at, value](auto number) {
    number = static_cast<decltype(number)>(value);
    std::memcpy(at, &number, sizeof number);
  });
}

}  // namespace k2v
