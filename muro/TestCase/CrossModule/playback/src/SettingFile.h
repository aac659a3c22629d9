// The small text files that settings live in: the value is the first line.
#pragma once

#include <sys/stat.h>

#include <fstream>
#include <optional>
#include <string>

/// Where the drivers dump to, with its closing "/". Gone after a reboot.
inline constexpr char kDumpDirectory[] = "/tmp/cross_module/";

/// First line of a file; nothing when the file cannot be opened.
inline std::optional<std::string> FirstLine(const std::string& path) {
  std::ifstream file(path);
  if (!file) return std::nullopt;
  std::string line;
  std::getline(file, line);
  return line;
}

/// Opens a file for writing and empties it. The dump directory is made for it when missing, no
/// other is.
inline std::ofstream OpenEmpty(const std::string& path) {
  if (path.starts_with(kDumpDirectory)) mkdir(kDumpDirectory, 0777);
  return std::ofstream(path, std::ios::trunc);
}
