#include "Expected.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string_view>

namespace test {
namespace {

namespace fs = std::filesystem;

bool Approves() {
  const char* approve = std::getenv("CVN_APPROVE");
  return approve != nullptr && std::string_view(approve) == "1";
}

/// Reports where two texts differ: printing whole files would hide the difference.
testing::AssertionResult FirstDifference(const std::string& name, const std::string& expected,
                                         const std::string& text) {
  std::istringstream expectedLines(expected);
  std::istringstream lines(text);
  std::string expectedLine;
  std::string line;
  int number = 0;
  bool expectedMore = true;
  bool more = true;
  do {
    expectedMore = static_cast<bool>(std::getline(expectedLines, expectedLine));
    more = static_cast<bool>(std::getline(lines, line));
    ++number;
  } while (expectedMore && more && line == expectedLine);
  return testing::AssertionFailure()
         << name << ":" << number << " is "
         << (expectedMore ? testing::PrintToString(expectedLine) : "the end") << ", the text has "
         << (more ? testing::PrintToString(line) : "ended") << "; the whole text:\n"
         << text;
}

}  // namespace

testing::AssertionResult IsAsExpected(const std::string& name, const std::string& text) {
  const fs::path path = fs::path(CVN_EXPECTED_DIRECTORY) / name;
  if (Approves()) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    return file ? testing::AssertionSuccess()
                : testing::AssertionFailure() << "cannot write " << path;
  }
  std::ifstream file(path, std::ios::binary);
  if (!file)
    return testing::AssertionFailure() << "no " << path << "; ./test.sh --approve makes it";
  const std::string expected(std::istreambuf_iterator<char>(file), {});
  return text == expected ? testing::AssertionSuccess() : FirstDifference(name, expected, text);
}

std::string Masked(const std::string& text, const std::string& regex, const std::string& mask) {
  return std::regex_replace(text, std::regex(regex), mask);
}

}  // namespace test
