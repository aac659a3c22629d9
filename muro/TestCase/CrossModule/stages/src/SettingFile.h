// The small text files that settings live in: the value is the first line.
#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Where the drivers dump to, with its closing "/". Gone after a reboot.
inline constexpr char kDumpDirectory[] = "/tmp/cross_module/";

/// Lines of a file without their line ends, of its first 4096 bytes; at least one. Nothing when the
/// file cannot be read or is no regular file.
std::optional<std::vector<std::string>> FileLines(const std::string& path);

/// First line of a file, as above.
std::optional<std::string> FirstLine(const std::string& path);

/// Opens a file for writing and empties it. The dump directory is made for it when missing, no
/// other is. What is there and is no regular file is left alone: a pipe could wait for ever.
std::ofstream OpenEmpty(const std::string& path);

/// Whether a shell would take the text as one word, and as this very one. Content files of the
/// catalogue have brackets in their names, so those may be there.
bool IsShellWord(std::string_view text);

/// The text with `by` in the place of every `mark`.
std::string Replaced(std::string text, std::string_view mark, std::string_view by);
