// Reads dumps and golden files row by row, and takes rows apart. Every stage's verifier, the frame
// counter and the synchronisation analysis read through this.
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
  /// Most characters of a row, its line end included. A longer line comes in pieces.
  static constexpr std::size_t kRowLimit = 1023;

  /// Opens the file. One that cannot be opened, or is no regular file, has no rows.
  explicit RowReader(const std::string& path);
  ~RowReader();
  RowReader(const RowReader&) = delete;
  RowReader& operator=(const RowReader&) = delete;

  bool IsOpen() const { return file_ >= 0; }

  /// Takes the next row with its line end, at most `limit` (up to `kRowLimit`) characters of it.
  /// The row is valid until the next call. Returns false, `row` untouched, at the end of the file.
  bool Next(std::string_view& row, std::size_t limit = kRowLimit);

  /// What is read ahead of the next row, often many rows. Valid until the next call; `Skip` takes
  /// so many characters of it.
  std::string_view Ahead() const { return {next_, static_cast<std::size_t>(end_ - next_)}; }
  void Skip(std::size_t length) { next_ += length; }

  /// As `Next`, but passes by rows of nothing but white space.
  bool NextFilled(std::string_view& row);

  /// Takes all lines to the end of the file. Returns how many are more than white space.
  int64_t CountFilledLines();

  /// Takes the next line whole, however long it is. Returns at most `kRowLimit` characters of it,
  /// the line end among them; empty at the end of the file.
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

/// The number that a text begins with, as `atoi` reads it: 0 when there is none.
int32_t ToNumber(std::string_view text);

/// The number that a text begins with, in `number`. Returns false, `number` untouched, when there
/// is none.
bool ReadNumber(std::string_view text, int32_t& number);

/// Splits a row as `strtok` does: any of the two `separators` in a row count as one, a NUL ends the
/// row. The last field keeps the line end. Fields that the row does not have are empty, surplus
/// ones are left out. Returns the number of fields set.
std::size_t SplitRow(std::string_view row, std::array<char, 2> separators,
                     std::span<std::string_view> fields);

/// The number of fields between commas and blanks, as `SplitRow` counts them; 0 when there is a NUL
/// in the row.
std::size_t CountFields(std::string_view row);

/// Takes numbers apart as `strtok` and `atoi` do: any commas in a row count as one, a NUL ends the
/// row, text that is no number is 0. Returns how many there are; numbers behind them are untouched.
std::size_t ReadNumbers(std::string_view row, std::span<int32_t* const> numbers);

/// True for a text of exactly `count` fields of plain digits, with commas and blanks before each
/// and a newline after the last: what most rows are, told without splitting them.
inline bool IsPlain(std::string_view text, std::size_t count) {
  const char* p = text.data();  // ends with a newline, so nothing after it is looked at
  for (std::size_t i = 0; i < count; ++i) {
    while (*p == ',' || *p == ' ') ++p;
    const char* const first = p;
    while (*p >= '0' && *p <= '9') ++p;
    if (p == first) return false;
  }
  return *p == '\n';
}

/// A row of the sample that is found to be the same as golden's.
struct SameRow {
  std::size_t length = 0;   // of the sample's row with its line end; 0: it is another one
  std::string_view text;    // a part of golden's row, see below
  std::size_t counter = 0;  // where the 90k counter begins, in both rows
};

/// Looks whether the sample goes on with the same row but for the digits of the second field, which
/// is where stages keep the 90k counter. The text is golden's behind that field. May miss rows that
/// are the same: then they must be read.
SameRow SameButSecondField(std::string_view golden, std::string_view sampleAhead);

/// How the items of a row of numbers are written.
struct RowFormat {
  std::size_t itemCount;      // at most `kMaxItems`
  std::uint32_t hexadecimal;  // bit n: item n is hexadecimal
  std::size_t counterItem;    // the 90k counter: differs in every run, is never compared
};

inline constexpr std::size_t kMaxItems = 27;
using RowItems = std::array<int32_t, kMaxItems>;

/// Reads the items of a row as `fscanf` does with "%d%*c" or "%x%*c" each. Returns the number of
/// items read; less than the format's when one cannot be read, when the row ends early, or (one
/// less) when anything follows the last item. `items` behind them are untouched.
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

/// Finds rows of numbers that need not be read because they are the same.
class SameItems {
 public:
  explicit SameItems(const RowFormat& format);

  /// Looks whether golden's row is a whole one of the format, and the sample goes on with the same
  /// row but for the digits of the counter item. The text is that of item 0, the frame number. May
  /// miss rows that are the same: then they must be read.
  SameRow Find(std::string_view golden, std::string_view sampleAhead);

 private:
  const RowFormat format_;
  const std::size_t checkedItems_;  // those up to the counter and the last hexadecimal one
  std::string knownRest_;           // items behind them that were found to be whole: most pictures
                                    // have the size and metadata of the one before
};
