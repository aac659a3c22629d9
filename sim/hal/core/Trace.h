// The record of all HAL calls: one line a call, in the order in which the board served them.
#pragma once

#include <string>
#include <vector>

namespace sim {

/// Opens the file named by CVNSIM_TRACE for appending. Without that variable lines are kept in
/// memory only. Throws std::runtime_error when the file cannot be opened.
void OpenTraceFile();

/// Appends to another process's file from now on, where there is one: who looks at a board lets the
/// events happen that are due, and what becomes of them belongs there.
void NoteInTraceOf(const std::string& path);

/// Notes one line (without newline) in the file, with one write(2) so that processes can share it;
/// without a file in this process's memory. The caller holds the board.
void Note(const std::string& line);

/// The newest lines that this process noted in memory, oldest first, at most 8192. The caller holds
/// the board.
std::vector<std::string> NotedLines();

/// Forgets the lines in memory. The caller holds the board.
void ForgetNotedLines();

}  // namespace sim
