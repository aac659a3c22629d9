// Picture-quality records in the trace, field by field.
#pragma once

#include "TestCase/sic_video/VpqFields.h"
#include "core/CallText.h"

namespace sim {

/// A buffer of K2V_VPQ_TEXT_BYTES to which the call writes a text.
struct TextOut {
  char* pointer;
  operator char*() const { return pointer; }
};

inline void Put(CallText& out, const TextOut& text) {
  if (text.pointer == nullptr) {
    out.text << "NULL";
  } else if (out.succeeded) {
    out.text << '"' << text.pointer << '"';
  } else {
    out.text << "\"\"";
  }
}

inline void Put(CallText& out, const char* text) {
  if (text == nullptr) {
    out.text << "NULL";
  } else {
    out.text << '"' << text << '"';
  }
}

/// Prints a record field by field; long arrays as the CRC-32 of their elements.
void PutRecord(CallText& out, const void* record, std::span<const k2v::RecordField> fields);

template <typename Record>
requires requires {
  k2v::RecordFields<Record>::table;
}
void Put(CallText& out, const Record& record) {
  PutRecord(out, &record, k2v::FieldsOf(&record));
}

}  // namespace sim
