// Files written by others (dumps, golden data, settings, answers), opened so that none of them can
// block the program.
#pragma once

#include <cstddef>
#include <string>

/// Opens a regular file, or a link to one, for reading. Anything else is refused: nobody may ever
/// write to a pipe, and a device may never end. Returns the descriptor; -1, with errno set, on
/// failure.
int OpenInputFile(const std::string& path);

/// True if `OpenInputFile` would open the file.
bool IsInputFile(const std::string& path);

/// Reads a file into `text`, at most its first `limit` bytes. Returns an error that begins with the
/// path; empty on success.
std::string ReadInputFile(const std::string& path, std::size_t limit, std::string& text);
