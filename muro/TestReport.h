// The report file of a run: fixed-width lines, the totals footer rewritten after every test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Test runs of this process so far. Never reset.
struct TestCounters {
  int32_t total = 0;
  int32_t pass = 0;
  int32_t fail = 0;
};

inline TestCounters testCounters;

namespace report {

inline constexpr std::size_t kLineWidth = 136;
/// Six lines with their newlines: what the next test line overwrites.
inline constexpr long kFooterBytes = 6 * (kLineWidth + 1);

/// One test run, as its line shows it.
struct TestLine {
  const char* menu;  // name of the menu that holds the test
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

/// Writes the test's line over the footer of the report file and a new footer behind it. A file
/// that cannot be opened or written is reported on the console; the result is false then, and also
/// where a report of `StartOwn` is not as this process left it.
bool AppendTestLine(const TestLine& line);

/// As `printReport`, with a file that no other run has or gets: one of this second when there is
/// none yet, otherwise of the next second that is free. From then on nothing is written into it
/// when anybody else did. The result is false when there is no such file.
bool StartOwn();

}  // namespace report

/// Creates the report file with its header and a footer of zero totals. Called once, before the
/// first menu. A file that cannot be written is reported on the console; the result is false then.
bool printReport();
