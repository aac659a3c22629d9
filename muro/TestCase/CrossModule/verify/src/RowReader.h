// Reads dumps and golden files row by row and parses rows. Used by every stage's verifier, the
// frame counter and the synchronisation analysis.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// One file, read from start to end through a block buffer. Rows are views into that buffer.
class RowReader {
 public:
  /// Maximum length of a row, its line end included. A longer line is returned in pieces.
  static constexpr std::size_t kRowLimit = 1023;

  /// Opens the file. If it cannot be opened or is not a regular file, it has no rows.
  explicit RowReader(const std::string& path);
  ~RowReader();
  RowReader(const RowReader&) = delete;
  RowReader& operator=(const RowReader&) = delete;

  bool IsOpen() const { return file_ >= 0; }

  /// Returns the next row with its line end, at most `limit` (up to `kRowLimit`) characters of it,
  /// in `row`. The row is valid until the next call. Returns false, with `row` unchanged, at the
  /// end of the file.
  bool Next(std::string_view& row, std::size_t limit = kRowLimit);

  /// The buffered text from the next row on, often many rows. Valid until the next call; `Skip`
  /// consumes that many characters of it.
  std::string_view Ahead() const { return {next_, static_cast<std::size_t>(end_ - next_)}; }
  void Skip(std::size_t length) { next_ += length; }

  /// As `Next`, but skips rows that contain only white space.
  bool NextFilled(std::string_view& row);

  /// Reads all lines to the end of the file. Returns how many of them are not just white space.
  int64_t CountFilledLines();

  /// Reads the next line completely, however long it is. Returns at most `kRowLimit` characters of
  /// it, including the line end; empty at the end of the file.
  std::string NextLine();

 private:
  bool Fill();

  const std::string path_;
  int file_;
  std::vector<char> buffer_;
  const char* next_;
  const char* end_;
};

/// The row without its line end.
std::string_view WithoutLineEnd(std::string_view row);

/// True for the first piece of a line that is longer than `limit`.
inline bool IsPiece(std::string_view row, std::size_t limit = RowReader::kRowLimit) {
  return row.size() >= limit && row.back() != '\n';
}

/// The number at the beginning of a text, as `atoi` reads it: 0 if there is none.
int32_t ToNumber(std::string_view text);

/// Reads the number at the beginning of a text into `number`. Returns false, with `number`
/// unchanged, if there is none.
bool ReadNumber(std::string_view text, int32_t& number);

/// Splits a row as `strtok` does: consecutive separators of the two in `separators` count as one, a
/// NUL ends the row. The last field keeps the line end. Missing fields are empty, extra ones are
/// ignored. Returns the number of fields set.
std::size_t SplitRow(std::string_view row, std::array<char, 2> separators,
                     std::span<std::string_view> fields);

/// The number of fields separated by commas and blanks, as `SplitRow` counts them; 0 if the row
/// contains a NUL.
std::size_t CountFields(std::string_view row);

/// Parses numbers as `strtok` and `atoi` do: consecutive commas count as one, a NUL ends the row,
/// text that is not a number is 0. Returns how many there are; the numbers after them are
/// unchanged.
std::size_t ReadNumbers(std::string_view row, std::span<int32_t* const> numbers);

/// True for a text of exactly `count` fields of plain digits, with commas and blanks before each
/// and a newline after the last: most rows have this form, and need not be split to detect it.
inline bool IsPlain(std::string_view text, std::size_t count) {
  const char* p = text.data();  // ends with a newline, so nothing after it is read
  for (std::size_t i = 0; i < count; ++i) {
    while (*p == ',' || *p == ' ') ++p;
    const char* const first = p;
    while (*p >= '0' && *p <= '9') ++p;
    if (p == first) return false;
  }
  return *p == '\n';
}

/// A row of the sample that was found to equal golden's.
struct SameRow {
  std::size_t length = 0;   // of the sample's row with its line end; 0: it is not the same
  std::string_view text;    // a part of golden's row, see below
  std::size_t counter = 0;  // position of the 90 kHz counter in both rows
};

/// Checks whether the sample continues with the same row except for the digits of the second field,
/// in which stages keep the 90 kHz counter. The text is golden's after that field. May miss rows
/// that are the same: then they must be parsed.
SameRow SameButSecondField(std::string_view golden, std::string_view sampleAhead);

/// The number format of the items of a row.
struct RowFormat {
  std::size_t itemCount;      // at most `kMaxItems`
  std::uint32_t hexadecimal;  // bit n: item n is hexadecimal
  std::size_t counterItem;    // the 90 kHz counter: differs in every run, is never compared
};

inline constexpr std::size_t kMaxItems = 27;
using RowItems = std::array<int32_t, kMaxItems>;

/// Reads the items of a row as `fscanf` does with "%d%*c" or "%x%*c" each. Returns the number of
/// items read; fewer than the format's if one cannot be read, if the row ends early, or (one less)
/// if anything follows the last item. The remaining `items` are unchanged.
std::size_t ReadItems(std::string_view row, const RowFormat& format, RowItems& items);

/// The items of a golden row and of its sample row.
struct ItemPair {
  ItemPair(std::string_view goldenRow, std::string_view sampleRow, const RowFormat& format);

  RowItems golden;
  RowItems sample;
  std::size_t goldenCount;  // items read, see `ReadItems`
  std::size_t sampleCount;
  std::size_t readable;  // items that both rows have; the next one is -1 in the row without it
  bool whole;            // all items are readable
};

/// Finds rows of numbers that need not be parsed because they are the same.
class SameItems {
 public:
  explicit SameItems(const RowFormat& format);

  /// Checks whether golden's row is a complete row of the format, and the sample continues with the
  /// same row except for the digits of the counter item. The text is that of item 0, the frame
  /// number. May miss rows that are the same: then they must be parsed.
  SameRow Find(std::string_view golden, std::string_view sampleAhead);

 private:
  const RowFormat format_;
  const std::size_t checkedItems_;  // those up to the counter and the last hexadecimal one
  std::string knownRest_;  // items after them that were found to be whole: most pictures have the
                           // size and metadata of the previous one
};
