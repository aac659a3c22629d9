// The small text files that store settings: the value is the first line.
#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Directory that the drivers dump to, with its closing "/". Lost after a reboot.
inline constexpr char kDumpDirectory[] = "/tmp/cross_module/";

/// Lines of the first 4096 bytes of a file, without their line ends; at least one. Nothing if the
/// file cannot be read or is not a regular file.
std::optional<std::vector<std::string>> FileLines(const std::string& path);

/// First line of a file, as above.
std::optional<std::string> FirstLine(const std::string& path);

/// Opens a file for writing and truncates it. Creates the dump directory if it is missing, but no
/// other one. Anything that exists and is not a regular file is left alone: a pipe could block
/// forever.
std::ofstream OpenEmpty(const std::string& path);

/// True if a shell takes the text as exactly this one word. Content files of the catalogue have
/// brackets in their names, so brackets are allowed.
bool IsShellWord(std::string_view text);

/// The text with every `mark` replaced by `by`.
std::string Replaced(std::string text, std::string_view mark, std::string_view by);
