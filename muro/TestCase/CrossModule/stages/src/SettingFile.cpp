#include "SettingFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <sstream>

#include "InputFile.h"

namespace {

constexpr std::size_t kReadLimit = 4096;

}  // namespace

std::optional<std::vector<std::string>> FileLines(const std::string& path) {
  std::string text;
  if (!ReadInputFile(path, kReadLimit, text).empty()) return std::nullopt;
  std::vector<std::string> lines;
  std::istringstream rest(text);
  for (std::string line; std::getline(rest, line);) {
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back(line);
  }
  if (lines.empty()) lines.emplace_back();
  return lines;
}

std::optional<std::string> FirstLine(const std::string& path) {
  const auto lines = FileLines(path);
  return lines ? std::optional(lines->front()) : std::nullopt;
}

std::ofstream OpenEmpty(const std::string& path) {
  if (path.starts_with(kDumpDirectory)) mkdir(kDumpDirectory, 0777);
  std::ofstream file;
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    file.setstate(std::ios::failbit);
  } else {
    file.open(path, std::ios::trunc);
  }
  return file;
}

bool IsShellWord(std::string_view text) {
  static constexpr std::string_view kSpecial = "\"'`$\\&;|<>()*?{}~#!";
  return !text.empty() && std::ranges::none_of(text, [](unsigned char c) {
    return c <= ' ' || c == 0x7F || kSpecial.find(static_cast<char>(c)) != kSpecial.npos;
  });
}

std::string Replaced(std::string text, std::string_view mark, std::string_view by) {
  for (auto at = text.find(mark); at != text.npos; at = text.find(mark, at + by.size()))
    text.replace(at, mark.size(), by);
  return text;
}
