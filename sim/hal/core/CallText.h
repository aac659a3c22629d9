// Text of a HAL call for the trace: K2V_RHAL_VSC_SetWinBlank(0, 1, 0) = 0
// A line in hal/text/texts.txt defines the text of a record type. A type whose text needs more than
// its fields has an overload of Put next to its HAL functions.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include "text/NumberText.h"

namespace sim {

struct CallText {
  std::ostringstream text;
  bool succeeded;  // if not, the output of the call is not read
};

/// An argument that points to a record which the call only writes.
template <typename T>
struct Out {
  T* pointer;
  operator T*() const { return pointer; }
};
template <typename T>
Out(T*) -> Out<T>;

/// An argument that points to `count` elements; the trace shows the size and the CRC-32.
template <typename T>
struct Buffer {
  T* pointer;
  size_t count;
  operator T*() const { return pointer; }
};
template <typename T>
Buffer(T*, size_t) -> Buffer<T>;

/// CRC-32 (as in zlib, gzip and PNG) of `size` bytes in eight hexadecimal digits.
std::string Crc32Text(const void* data, size_t size);

void PutBuffer(CallText& out, const void* data, size_t size);

template <typename T>
requires std::integral<T> || std::is_enum_v<T>
void Put(CallText& out, T number) {
  out.text << +number;
}

/// Prints a field in the format given in texts.txt.
template <typename T>
requires std::integral<T> || std::is_enum_v<T>
void PutAs(CallText& out, T number, std::string_view format) {
  out.text << haltext::NumberText(number, format);
}
template <size_t size>
void PutAs(CallText& out, const char (&text)[size], std::string_view) {
  out.text << std::string_view(text, strnlen(text, size));
}

template <typename T>
void Put(CallText& out, T* pointer) {
  if (pointer == nullptr) {
    out.text << "NULL";
  } else if constexpr (std::is_class_v<T>) {
    Put(out, *pointer);
  } else {
    out.text << '{' << +*pointer << '}';
  }
}

template <typename T>
void Put(CallText& out, const Out<T>& output) {
  if (output.pointer != nullptr && !out.succeeded) {
    out.text << "{}";
  } else {
    Put(out, output.pointer);
  }
}

template <typename T>
void Put(CallText& out, const Buffer<T>& buffer) {
  PutBuffer(out, buffer.pointer, buffer.count * sizeof(T));
}

/// The whole line of a call, without newline.
template <typename Result, typename... Arguments>
std::string FormatCall(const char* function, Result result, const Arguments&... arguments) {
  CallText out = {{}, std::is_pointer_v<Result> == (result != Result{})};
  [[maybe_unused]] const char* separator = "";
  out.text << function << '(';
  ((out.text << separator, separator = ", ", Put(out, arguments)), ...);
  out.text << ") = ";
  Put(out, result);
  return out.text.str();
}

}  // namespace sim
