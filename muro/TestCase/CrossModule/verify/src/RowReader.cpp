#include "RowReader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

namespace {

// Large enough to make the calls of the system cheap, small enough to stay in the cache.
constexpr std::size_t kBlockSize = 64 * 1024;

bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Value of every character as a digit, 16 and more for what is none.
constexpr auto kDigitValue = [] {
  std::array<uint8_t, 256> value{};
  value.fill(16);
  for (uint8_t i = 0; i < 10; ++i) value['0' + i] = i;
  for (uint8_t i = 0; i < 6; ++i) value['a' + i] = value['A' + i] = static_cast<uint8_t>(10 + i);
  return value;
}();

uint8_t DigitValue(char c) {
  return kDigitValue[static_cast<uint8_t>(c)];
}

/// Where the text stands behind the number it begins with; null when there is none. As in C, a
/// number that is by far too large is the largest one, and the lower 32 bits of it are kept.
const char* ParseNumber(const char* p, const char* end, unsigned base, int32_t& number) {
  while (p < end && IsSpace(*p)) ++p;
  const bool negative = p < end && *p == '-';
  if (p < end && (*p == '-' || *p == '+')) ++p;
  if (base == 16 && end - p > 2 && p[0] == '0' && (p[1] | 0x20) == 'x' && DigitValue(p[2]) < 16) {
    p += 2;
  }
  constexpr auto kLargest = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
  const char* const first = p;
  uint64_t value = 0;
  for (; p < end && DigitValue(*p) < base; ++p) {
    value = value > (kLargest - 15) / 16 ? kLargest : value * base + DigitValue(*p);
  }
  if (p == first) return nullptr;
  number = static_cast<int32_t>(static_cast<uint32_t>(negative ? 0 - value : value));
  return p;
}

unsigned BaseOf(const RowFormat& format, std::size_t item) {
  return (format.hexadecimal >> item & 1U) != 0 ? 16 : 10;
}

/// The end of the plain digits at `p`, which is `p` when there are none. Needs something behind
/// them that is no digit.
const char* SkipDigits(const char* p, unsigned base) {
  while (DigitValue(*p) < base) ++p;
  return p;
}

/// Passes by the items from `first` to before `last`, each plain digits and its separator. `p`
/// stands at item `first`. Null when one is written otherwise.
const char* SkipItems(const char* p, const RowFormat& format, std::size_t first, std::size_t last) {
  for (std::size_t i = first; i < last; ++i) {
    const char* const item = p;
    p = SkipDigits(p, BaseOf(format, i));
    if (p == item || *p != (i + 1 < format.itemCount ? ',' : '\n')) return nullptr;
    ++p;
  }
  return p;
}

/// True when `text` is `count` plain decimal numbers with single commas between them. Written
/// without a branch per character: this loop sees every byte of a dump.
bool IsPlainDecimal(const char* text, std::size_t length, std::size_t count) {
  if (length == 0 || length > 2 * 255 || text[0] == ',' || text[length - 1] == ',') return false;
  uint8_t commas = 0;  // cannot overflow: there is no comma next to another
  uint8_t wrong = 0;
  for (std::size_t i = 1; i < length; ++i) {
    const bool comma = text[i] == ',';
    const bool digit = static_cast<uint8_t>(text[i] - '0') < 10;
    commas = static_cast<uint8_t>(commas + comma);
    wrong = static_cast<uint8_t>(wrong | !(comma | digit) | (comma & (text[i - 1] == ',')));
  }
  return wrong == 0 && DigitValue(text[0]) < 10 && commas + std::size_t{1} == count;
}

/// Length of the sample's row when it is golden's but for digits in place of those from `field` to
/// `fieldEnd`; 0 when it is another one. What follows golden's field is no digit.
std::size_t LengthOfSame(std::string_view golden, std::string_view sample, const char* field,
                         const char* fieldEnd, unsigned base) {
  const auto before = static_cast<std::size_t>(field - golden.data());
  const std::string_view behind = golden.substr(static_cast<std::size_t>(fieldEnd - golden.data()));
  if (sample.size() < before + behind.size() || !sample.starts_with(golden.substr(0, before)))
    return 0;
  const std::size_t most = sample.size() - behind.size();
  std::size_t digitsEnd = before;
  while (digitsEnd < most && DigitValue(sample[digitsEnd]) < base) ++digitsEnd;
  if (digitsEnd == before || sample.compare(digitsEnd, behind.size(), behind) != 0) return 0;
  return digitsEnd + behind.size();
}

}  // namespace

RowReader::RowReader(const std::string& path)
    : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)),
      buffer_(file_ >= 0 ? kBlockSize : 0),
      next_(buffer_.data()),
      end_(next_) {}

RowReader::~RowReader() {
  if (file_ >= 0) close(file_);
}

/// Gets more bytes behind those that are not taken yet. Returns false when there are none.
bool RowReader::Fill() {
  if (file_ < 0) return false;
  const auto left = static_cast<std::size_t>(end_ - next_);
  if (left != 0) std::memmove(buffer_.data(), next_, left);
  ssize_t got = 0;
  do {
    got = read(file_, buffer_.data() + left, buffer_.size() - left);
  } while (got < 0 && errno == EINTR);
  next_ = buffer_.data();
  end_ = next_ + left + std::max<ssize_t>(got, 0);
  return got > 0;
}

bool RowReader::Next(std::string_view& row, std::size_t limit) {
  for (;;) {
    const std::size_t length = std::min(static_cast<std::size_t>(end_ - next_), limit);
    const void* lineEnd = length == 0 ? nullptr : std::memchr(next_, '\n', length);
    std::size_t taken = length;
    if (lineEnd != nullptr) {
      taken = static_cast<std::size_t>(static_cast<const char*>(lineEnd) - next_) + 1;
    } else if (length < limit && Fill()) {
      continue;
    }
    if (taken == 0) return false;
    row = {next_, taken};
    next_ += taken;
    return true;
  }
}

bool RowReader::NextFilled(std::string_view& row) {
  std::string_view candidate;
  while (Next(candidate)) {
    if (!std::all_of(candidate.begin(), candidate.end(), IsSpace)) {
      row = candidate;
      return true;
    }
  }
  return false;
}

std::string RowReader::NextLine() {
  std::string_view piece;
  if (!Next(piece)) return {};
  std::string line(piece);
  while (piece.back() != '\n' && Next(piece)) {
  }
  return line;
}

std::string_view WithoutLineEnd(std::string_view row) {
  while (!row.empty() && (row.back() == '\n' || row.back() == '\r')) row.remove_suffix(1);
  return row;
}

bool ReadNumber(std::string_view text, int32_t& number) {
  return ParseNumber(text.data(), text.data() + text.size(), 10, number) != nullptr;
}

int32_t ToNumber(std::string_view text) {
  int32_t number = 0;
  ReadNumber(text, number);
  return number;
}

std::size_t SplitRow(std::string_view row, std::array<char, 2> separators,
                     std::span<std::string_view> fields) {
  const auto separates = [&](char c) { return c == separators[0] || c == separators[1]; };
  const char* p = row.data();
  const char* const end = p + row.size();
  std::size_t count = 0;
  while (count < fields.size()) {
    while (p < end && separates(*p)) ++p;
    const char* const first = p;
    while (p < end && !separates(*p) && *p != '\0') ++p;
    if (p == first) break;
    fields[count++] = {first, static_cast<std::size_t>(p - first)};
  }
  std::fill(fields.begin() + static_cast<std::ptrdiff_t>(count), fields.end(), std::string_view{});
  return count;
}

std::size_t ReadNumbers(std::string_view row, std::span<int32_t* const> numbers) {
  const char* p = row.data();
  const char* const end = p + row.size();
  std::size_t count = 0;
  while (count < numbers.size()) {
    while (p < end && *p == ',') ++p;
    if (p == end || *p == '\0') break;
    const char* const behind = ParseNumber(p, end, 10, *numbers[count]);
    if (behind == nullptr) *numbers[count] = 0;
    if (behind != nullptr) p = behind;
    while (p < end && *p != ',' && *p != '\0') ++p;
    ++count;
  }
  return count;
}

SameRow SameButSecondField(std::string_view golden, std::string_view sampleAhead) {
  const auto separates = [](char c) { return c == ',' || c == ' '; };
  if (golden.back() != '\n' || separates(golden[0])) return {};
  const char* field = golden.data();
  while (*field > ' ' && *field != ',') ++field;
  while (separates(*field)) ++field;
  const char* const fieldEnd = SkipDigits(field, 10);
  if (fieldEnd == field || !separates(*fieldEnd)) return {};
  return {LengthOfSame(golden, sampleAhead, field, fieldEnd, 10),
          golden.substr(static_cast<std::size_t>(fieldEnd - golden.data()))};
}

std::size_t ReadItems(std::string_view row, const RowFormat& format, RowItems& items) {
  const char* p = row.data();
  const char* const end = p + row.size();
  for (std::size_t i = 0; i < format.itemCount; ++i) {
    const char* const behind = ParseNumber(p, end, BaseOf(format, i), items[i]);
    if (behind == nullptr) return i;
    p = std::min(behind + 1, end);  // the character behind an item goes with it
  }
  return format.itemCount - (std::all_of(p, end, IsSpace) ? 0 : 1);
}

ItemPair::ItemPair(std::string_view goldenRow, std::string_view sampleRow, const RowFormat& format)
    : goldenCount(ReadItems(goldenRow, format, golden)),
      sampleCount(ReadItems(sampleRow, format, sample)),
      readable(std::min(goldenCount, sampleCount)),
      whole(readable == format.itemCount) {
  if (whole) return;
  if (goldenCount == readable) golden[readable] = -1;
  if (sampleCount == readable) sample[readable] = -1;
}

SameRow SameItems(std::string_view golden, std::string_view sampleAhead, const RowFormat& format) {
  if (golden.back() != '\n') return {};
  const char* const begin = golden.data();
  const char* const counter = SkipItems(begin, format, 0, format.counterItem);
  if (counter == nullptr) return {};
  const char* const counterEnd = SkipDigits(counter, BaseOf(format, format.counterItem));
  if (counterEnd == counter || *counterEnd != ',') return {};
  const std::size_t length =
      LengthOfSame(golden, sampleAhead, counter, counterEnd, BaseOf(format, format.counterItem));
  if (length == 0) return {};
  const std::size_t behindCounter = format.counterItem + 1;
  const std::size_t plainFrom = std::max(behindCounter, format.lastHexadecimal + 1);
  const char* const p = SkipItems(counterEnd + 1, format, behindCounter, plainFrom);
  if (p == nullptr) return {};
  const auto left = static_cast<std::size_t>(begin + golden.size() - p);
  const bool whole = plainFrom == format.itemCount
                         ? left == 0
                         : IsPlainDecimal(p, left - 1, format.itemCount - plainFrom);
  if (!whole || (begin[0] == '0' && begin[1] != ',')) return {};
  return {length, golden.substr(0, golden.find(','))};
}
