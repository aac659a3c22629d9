// Console lines that are written for every frame: collected in a large buffer, because writing them
// to the terminal line by line would cost more than comparing the frame.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

/// Text for standard output, in the right order with what is printed before and after.
class FrameLog {
 public:
  FrameLog() : buffer_(kSize) {}
  ~FrameLog() { Flush(); }
  FrameLog(const FrameLog&) = delete;
  FrameLog& operator=(const FrameLog&) = delete;

  template <std::size_t kLength>
  FrameLog& operator<<(const char (&text)[kLength]) {
    static_assert(kLength <= kMargin);
    std::memcpy(Room(), text, kLength - 1);
    used_ += kLength - 1;
    return *this;
  }
  FrameLog& operator<<(std::string_view text) {
    for (std::size_t taken = 0; taken < text.size(); taken += kMargin) {
      const std::string_view piece = text.substr(taken, kMargin);
      std::memcpy(Room(), piece.data(), piece.size());
      used_ += piece.size();
    }
    return *this;
  }
  FrameLog& operator<<(int32_t number) { return Append(number, 10); }
  /// Appends the number as "%x" prints it, with leading zeros up to `width` digits.
  FrameLog& Hex(int32_t number, std::size_t width = 1) {
    char* const first = Room();
    Append(static_cast<uint32_t>(number), 16);
    const auto length = static_cast<std::size_t>(buffer_.data() + used_ - first);
    if (length < width) {
      std::memmove(first + width - length, first, length);
      std::memset(first, '0', width - length);
      used_ += width - length;
    }
    return *this;
  }

  /// Writes the collected text.
  void Flush();

 private:
  static constexpr std::size_t kSize = std::size_t{64} * 1024;
  static constexpr std::size_t kMargin = 128;  // space guaranteed for every append

  char* Room() {
    if (used_ + kMargin > kSize) Flush();
    return buffer_.data() + used_;
  }

  template <class Number>
  FrameLog& Append(Number number, int base) {
    char* const first = Room();
    used_ +=
        static_cast<std::size_t>(std::to_chars(first, first + kMargin, number, base).ptr - first);
    return *this;
  }

  std::vector<char> buffer_;
  std::size_t used_ = 0;
};
