#include "RowReader.h"

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

#include "InputFile.h"

namespace {

// Large enough to make system calls cheap, small enough to stay in the cache.
constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

static_assert(sizeof(off_t) == 8, "dumps of long runs pass 2 GiB");

bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Value of every character as a digit; 16 and more if it is not a digit.
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

/// Value of a character as a digit; `kBase` or more if it is not a digit.
template <unsigned kBase>
unsigned DigitOf(char c) {
  return kBase == 10 ? static_cast<uint8_t>(c - '0') : DigitValue(c);
}

/// The value of any number of digits: too many saturate at the largest number, as in C.
template <unsigned kBase>
uint64_t ValueOf(const char* p, const char* end, bool negative) {
  const uint64_t largest =
      static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + (negative ? 1 : 0);
  uint64_t value = 0;
  for (; p < end; ++p) {
    if (value > (largest - DigitOf<kBase>(*p)) / kBase) return largest;
    value = value * kBase + DigitOf<kBase>(*p);
  }
  return value;
}

/// Reads the digits at `p`. Returns their end; null, with `number` unchanged, if there are none. As
/// in C, the lower 32 bits of the value are kept.
template <unsigned kBase>
inline const char* ParseDigits(const char* p, const char* end, bool negative, int32_t& number) {
  constexpr std::ptrdiff_t kSafeDigits = 15;
  const char* const first = p;
  uint64_t value = 0;
  for (; p < end && DigitOf<kBase>(*p) < kBase; ++p) value = value * kBase + DigitOf<kBase>(*p);
  if (p == first) return nullptr;
  if (p - first > kSafeDigits) value = ValueOf<kBase>(first, p, negative);
  number = static_cast<int32_t>(static_cast<uint32_t>(negative ? 0 - value : value));
  return p;
}

/// As `ParseDigits`, but accepts white space, a sign and "0x" for base 16 before the digits.
template <unsigned kBase>
const char* ParseDecorated(const char* p, const char* end, int32_t& number) {
  while (p < end && IsSpace(*p)) ++p;
  const bool negative = p < end && *p == '-';
  if (p < end && (*p == '-' || *p == '+')) ++p;
  const bool prefixed =
      kBase == 16 && end - p > 2 && p[0] == '0' && (p[1] | 0x20) == 'x' && DigitValue(p[2]) < 16;
  return ParseDigits<kBase>(prefixed ? p + 2 : p, end, negative, number);
}

/// Reads the number at the beginning of a text. Returns the position after it; null, with `number`
/// unchanged, if there is none.
template <unsigned kBase>
inline const char* ParseNumber(const char* p, const char* end, int32_t& number) {
  const bool plain = p < end && DigitOf<kBase>(*p) < kBase && (kBase == 10 || *p != '0');
  return plain ? ParseDigits<kBase>(p, end, false, number) : ParseDecorated<kBase>(p, end, number);
}

unsigned BaseOf(const RowFormat& format, std::size_t item) {
  return (format.hexadecimal >> item & 1U) != 0 ? 16 : 10;
}

/// The end of the plain digits at `p`, which is `p` if there are none. Needs a non-digit after
/// them.
const char* SkipDigits(const char* p, unsigned base) {
  while (DigitValue(*p) < base) ++p;
  return p;
}

/// The end of the decimal digits at `p`, at most `end`. Counters have about nine digits, so eight
/// are checked at a time.
const char* SkipDecimals(const char* p, const char* end) {
  constexpr uint64_t kHighHalves = 0xF0F0F0F0F0F0F0F0;
  for (uint64_t word = 0; end - p >= 8; p += 8) {
    std::memcpy(&word, p, 8);
    const bool allDigits = (word & kHighHalves) == 0x3030303030303030 &&
                           ((word + 0x0606060606060606) & kHighHalves) == 0x3030303030303030;
    if (!allDigits) break;
  }
  while (p < end && DigitOf<10>(*p) < 10) ++p;
  return p;
}

/// Skips the items from `first` to before `last`, each plain digits and its separator. `p` is at
/// item `first`. Null if an item has any other form.
const char* SkipItems(const char* p, const RowFormat& format, std::size_t first, std::size_t last) {
  for (std::size_t i = first; i < last; ++i) {
    const char* const item = p;
    p = SkipDigits(p, BaseOf(format, i));
    if (p == item || *p != (i + 1 < format.itemCount ? ',' : '\n')) return nullptr;
    ++p;
  }
  return p;
}

/// Reads item `i` at `p`. Returns the start of the next one: the character after an item belongs to
/// it. Null if there is no number.
const char* ReadItem(const char* p, const char* end, const RowFormat& format, std::size_t i,
                     RowItems& items) {
  const char* const behind = BaseOf(format, i) == 16 ? ParseNumber<16>(p, end, items[i])
                                                     : ParseNumber<10>(p, end, items[i]);
  return behind == nullptr ? nullptr : std::min(behind + 1, end);
}

/// Number of items of a row that ends after the last one, else one less.
std::size_t CountToEnd(const char* p, const char* end, const RowFormat& format) {
  return format.itemCount - (std::all_of(p, end, IsSpace) ? 0 : 1);
}

/// Start of each item of a row, and after those that were read, the start of the next one.
using ItemStarts = std::array<std::size_t, kMaxItems + 1>;

std::size_t ReadItemsAndStarts(std::string_view row, const RowFormat& format, RowItems& items,
                               ItemStarts& starts) {
  const char* const begin = row.data();
  const char* const end = begin + row.size();
  const char* p = begin;
  starts[0] = 0;
  for (std::size_t i = 0; i < format.itemCount; ++i) {
    p = ReadItem(p, end, format, i, items);
    if (p == nullptr) return i;
    starts[i + 1] = static_cast<std::size_t>(p - begin);
  }
  return CountToEnd(p, end, format);
}

/// Length of the common prefix of two texts.
std::size_t CommonLength(std::string_view a, std::string_view b) {
  const std::size_t most = std::min(a.size(), b.size());
  std::size_t i = 0;
  for (uint64_t x = 0, y = 0; i + sizeof x <= most; i += sizeof x) {
    std::memcpy(&x, a.data() + i, sizeof x);
    std::memcpy(&y, b.data() + i, sizeof y);
    if (x != y) break;
  }
  while (i < most && a[i] == b[i]) ++i;
  return i;
}

/// As `ReadItems` for a sample's row. Where its text equals golden's, the values are copied: rows
/// that differ do so in few items.
std::size_t ReadItemsLike(std::string_view goldenRow, const RowItems& golden,
                          std::size_t goldenCount, const ItemStarts& starts, std::string_view row,
                          const RowFormat& format, RowItems& items) {
  // An item at the end of the file may continue in the other row.
  const std::size_t shared = goldenRow.back() == '\n' ? goldenCount : 0;
  const char* p = row.data();
  const char* const end = p + row.size();
  for (std::size_t i = 0; i < format.itemCount; ++i) {
    if (i < shared) {
      const std::size_t start = starts[i];
      const std::size_t same =
          start + CommonLength(goldenRow.substr(start), {p, static_cast<std::size_t>(end - p)});
      for (; i < shared && starts[i + 1] <= same; ++i) items[i] = golden[i];
      p += starts[i] - start;
      if (i == format.itemCount) break;
    }
    p = ReadItem(p, end, format, i, items);
    if (p == nullptr) return i;
  }
  return CountToEnd(p, end, format);
}

constexpr uint64_t kOnes = 0x0101010101010101;
constexpr uint64_t kHighBits = kOnes * 0x80;

/// The high bits of those bytes of the word that equal `c`.
uint64_t BytesEqual(uint64_t word, char c) {
  const uint64_t different = word ^ kOnes * static_cast<uint8_t>(c);
  return ~(((different & ~kHighBits) + ~kHighBits) | different) & kHighBits;
}

/// Length of the sample's row if it equals golden's except for the digits from `field` to
/// `fieldEnd`; 0 if it does not. The character after golden's field is not a digit.
std::size_t LengthOfSame(std::string_view golden, std::string_view sample, const char* field,
                         const char* fieldEnd, unsigned base) {
  const auto before = static_cast<std::size_t>(field - golden.data());
  const std::string_view behind = golden.substr(static_cast<std::size_t>(fieldEnd - golden.data()));
  if (sample.size() < before + behind.size() || !sample.starts_with(golden.substr(0, before)))
    return 0;
  const std::size_t most = sample.size() - behind.size();
  std::size_t digitsEnd = before;
  if (base == 10) {
    const char* const first = sample.data();
    digitsEnd = static_cast<std::size_t>(SkipDecimals(first + before, first + most) - first);
  } else {
    while (digitsEnd < most && DigitValue(sample[digitsEnd]) < base) ++digitsEnd;
  }
  if (digitsEnd == before || sample.compare(digitsEnd, behind.size(), behind) != 0) return 0;
  return digitsEnd + behind.size();
}

}  // namespace

RowReader::RowReader(const std::string& path)
    : path_(path),
      file_(OpenInputFile(path)),
      buffer_(file_ >= 0 ? kBlockSize : 0),
      next_(buffer_.data()),
      end_(next_) {}

RowReader::~RowReader() {
  if (file_ >= 0) close(file_);
}

/// Reads more bytes after those not yet consumed. Returns false if there are none.
bool RowReader::Fill() {
  if (file_ < 0) return false;
  const auto left = static_cast<std::size_t>(end_ - next_);
  if (left != 0) std::memmove(buffer_.data(), next_, left);
  ssize_t got = 0;
  do {
    got = read(file_, buffer_.data() + left, buffer_.size() - left);
  } while (got < 0 && errno == EINTR);
  if (got < 0) std::printf("%s: %s, read no further\n", path_.c_str(), std::strerror(errno));
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

int64_t RowReader::CountFilledLines() {
  int64_t count = 0;
  bool startsLine = true;
  for (std::string_view piece; Next(piece); startsLine = piece.back() == '\n') {
    if (startsLine && !std::all_of(piece.begin(), piece.end(), IsSpace)) ++count;
  }
  return count;
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
  return ParseNumber<10>(text.data(), text.data() + text.size(), number) != nullptr;
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

// This is called for every row of the largest files, so it checks eight characters at a time.
std::size_t CountFields(std::string_view row) {
  static_assert(std::endian::native == std::endian::little, "the lowest byte comes first");
  constexpr std::size_t kWidth = sizeof(uint64_t);
  uint64_t counts = 0;  // fields that start at each of the eight positions of a word
  uint64_t separatorBefore = 0x80;
  uint64_t nul = 0;
  const auto look = [&](uint64_t word) {
    nul |= (word - kOnes) & ~word & kHighBits;
    const uint64_t separators = BytesEqual(word, ',') | BytesEqual(word, ' ');
    counts += (~separators & kHighBits & (separators << 8 | separatorBefore)) >> 7;
    separatorBefore = separators >> 56;
  };
  const auto load = [](const char* p) {
    uint64_t word = 0;
    std::memcpy(&word, p, kWidth);
    return word;
  };
  const char* const end = row.data() + row.size();
  const char* p = row.data();
  for (; p + kWidth <= end; p += kWidth) look(load(p));
  if (const auto rest = static_cast<std::size_t>(end - p); rest != 0) {
    // The remaining characters, padded with separators.
    uint64_t word = kOnes * ',';
    if (row.size() >= kWidth) {
      word = load(end - kWidth) >> (8 * (kWidth - rest)) | word << (8 * rest);
    } else {
      std::memcpy(&word, p, rest);
    }
    look(word);
  }
  constexpr uint64_t kLowHalves = 0x00FF00FF00FF00FF;
  const uint64_t pairs = (counts & kLowHalves) + (counts >> 8 & kLowHalves);
  const auto count = static_cast<std::size_t>(pairs * 0x0001000100010001 >> 48);
  return nul != 0 ? 0 : count;
}

std::size_t ReadNumbers(std::string_view row, std::span<int32_t* const> numbers) {
  const char* p = row.data();
  const char* const end = p + row.size();
  std::size_t count = 0;
  while (count < numbers.size()) {
    while (p < end && *p == ',') ++p;
    if (p == end || *p == '\0') break;
    const char* const behind = ParseNumber<10>(p, end, *numbers[count]);
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
  const char* const fieldEnd = SkipDecimals(field, golden.data() + golden.size() - 1);
  if (fieldEnd == field || !separates(*fieldEnd)) return {};
  return {LengthOfSame(golden, sampleAhead, field, fieldEnd, 10),
          golden.substr(static_cast<std::size_t>(fieldEnd - golden.data())),
          static_cast<std::size_t>(field - golden.data())};
}

std::size_t ReadItems(std::string_view row, const RowFormat& format, RowItems& items) {
  ItemStarts starts;
  return ReadItemsAndStarts(row, format, items, starts);
}

ItemPair::ItemPair(std::string_view goldenRow, std::string_view sampleRow,
                   const RowFormat& format) {
  ItemStarts starts;
  goldenCount = ReadItemsAndStarts(goldenRow, format, golden, starts);
  sampleCount = ReadItemsLike(goldenRow, golden, goldenCount, starts, sampleRow, format, sample);
  readable = std::min(goldenCount, sampleCount);
  whole = readable == format.itemCount;
  if (whole) return;
  if (goldenCount == readable) golden[readable] = -1;
  if (sampleCount == readable) sample[readable] = -1;
}

SameItems::SameItems(const RowFormat& format)
    : format_(format),
      checkedItems_(std::max(static_cast<std::size_t>(std::bit_width(format.hexadecimal)),
                             format.counterItem + 1)) {}

SameRow SameItems::Find(std::string_view golden, std::string_view sampleAhead) {
  if (golden.back() != '\n') return {};
  const char* const begin = golden.data();
  const char* const frameEnd = SkipDigits(begin, 10);
  if (begin[0] == '0' && frameEnd - begin > 1) return {};  // not the number's canonical form
  const unsigned base = BaseOf(format_, format_.counterItem);
  const char* const counter = SkipItems(begin, format_, 0, format_.counterItem);
  const char* const counterEnd = counter == nullptr ? counter : SkipDigits(counter, base);
  if (counterEnd == counter || *counterEnd != ',') return {};
  const std::size_t length = LengthOfSame(golden, sampleAhead, counter, counterEnd, base);
  if (length == 0) return {};
  const char* const p = SkipItems(counterEnd + 1, format_, format_.counterItem + 1, checkedItems_);
  if (p == nullptr) return {};
  const std::string_view rest = golden.substr(static_cast<std::size_t>(p - begin));
  if (rest != knownRest_) {
    const char* const end = SkipItems(p, format_, checkedItems_, format_.itemCount);
    if (end != begin + golden.size()) return {};
    knownRest_ = rest;
  }
  return {length, golden.substr(0, static_cast<std::size_t>(frameEnd - begin)),
          static_cast<std::size_t>(counter - begin)};
}
