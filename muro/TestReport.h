// The report file of a run: fixed-width lines, the totals footer rewritten after every test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Counts of the tests that this process has run so far. Never reset.
struct TestCounters {
  int32_t total = 0;
  int32_t pass = 0;
  int32_t fail = 0;
};

inline TestCounters testCounters;

namespace report {

inline constexpr std::size_t kLineWidth = 136;
/// Six lines with their newlines, which the next test line overwrites.
inline constexpr long kFooterBytes = 6 * (kLineWidth + 1);

/// One test run as shown in its line.
struct TestLine {
  const char* menu;  // name of the menu that contains the test
  int32_t id;
  const char* name;
  const char* description;
  int result;  // 0 pass, 1 fail, anything else undefined
};

/// `kLineWidth` characters `fill` with `text` written over the middle.
std::string Centred(const char* text, char fill);

/// The test's line without a newline, at most 384 characters.
std::string FormatTestLine(const TestLine& line);

/// The totals line of the footer, without a newline.
std::string FormatTotals(const TestCounters& counters);

/// The six footer lines with their newlines; `separator` fills the first one.
std::string FormatFooter(const TestCounters& counters, char separator);

/// Overwrites the footer of the report file with the test's line and appends a new footer. A file
/// that cannot be opened or written is reported on the console. Returns false in that case, and
/// also if a report of `StartOwn` is not as this process left it.
bool AppendTestLine(const TestLine& line);

/// As `printReport`, with a file that no other run uses: the file of the current second if it does
/// not exist yet, otherwise that of the next free second. From then on the file is not written if
/// anybody else has written to it. Returns false if no such file can be created.
bool StartOwn();

}  // namespace report

/// Creates the report file with its header and a footer of zero totals. Called once, before the
/// first menu. A file that cannot be written is reported on the console; returns false in that
/// case.
bool printReport();
