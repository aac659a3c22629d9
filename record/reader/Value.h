// Decodes the bytes of an event into values, using the description of its function.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "reader/Description.h"

namespace record {

using Bytes = std::span<const uint8_t>;

/// Takes numbers and bytes from the front of an event. Past its end, everything is zero.
class ByteReader {
 public:
  explicit ByteReader(Bytes bytes) : bytes_(bytes) {}

  bool IsGood() const { return isGood_; }
  size_t Position() const { return at_; }
  Bytes Take(uint64_t size);
  uint64_t Number(unsigned bytes);
  /// Characters up to a zero byte.
  std::string_view Text();

 private:
  Bytes bytes_;
  size_t at_ = 0;
  bool isGood_ = true;
};

/// A number, the bytes of several, or a record with its fields.
struct Value {
  const Type* type = nullptr;
  const Record* record = nullptr;
  uint64_t number = 0;
  Bytes bytes;               // of an array of numbers
  bool isSeveral = false;    // an array or a buffer
  uint32_t count = 0;        // of its elements
  std::vector<Value> items;  // fields of a record, or records of an array

  int64_t Signed() const { return static_cast<int64_t>(number); }
  /// A field by its name; "a.b" is field b of record a. Null if there is none.
  const Value* Find(std::string_view name) const;
};

/// An argument as it was passed or as it came back.
struct ArgumentValue {
  bool isGiven = true;  // not a null pointer; in results: written
  uint64_t room = 0;    // elements of an output buffer
  std::optional<Value> value;
};

struct CallValues {
  std::vector<ArgumentValue> arguments;
  ArgumentValue result;
};

/// The values of an entry or a return. `good`: whether the payload had exactly the bytes for them.
CallValues ReadCall(const Function& function, bool isReturn, Bytes payload, bool& good);

/// The size in bytes of the event that begins here; nothing if it is incomplete.
std::optional<size_t> SizeOfCall(const Function& function, bool isReturn, Bytes bytes);

}  // namespace record
