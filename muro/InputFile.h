// Files that others wrote (dumps, golden data, settings, answers), opened so that none of them can
// keep the program waiting.
#pragma once

#include <cstddef>
#include <string>

/// Opens a regular file, or a link to one, for reading. Anything else is refused: a pipe may never
/// be written to, a device may never end. Returns the descriptor; -1, with errno set, on failure.
int OpenInputFile(const std::string& path);

/// True when `OpenInputFile` would open the file.
bool IsInputFile(const std::string& path);

/// Reads a file's text, at most the first `limit` bytes of it. Returns what is wrong in words that
/// begin with the path; empty when all is well. `text` is then the file's.
std::string ReadInputFile(const std::string& path, std::size_t limit, std::string& text);
