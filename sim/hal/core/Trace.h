// The record of all HAL calls: one line per call, in the order in which the board served them.
#pragma once

#include <string>
#include <vector>

namespace sim {

/// Opens the file named by CVNSIM_TRACE for appending. Without that variable, lines are kept in
/// memory only. Throws std::runtime_error if the file cannot be opened.
void OpenTraceFile();

/// Appends to another process's file from now on, if it exists: a process that inspects a board
/// runs the events that are due, and their messages belong there.
void NoteInTraceOf(const std::string& path);

/// Appends one line (without newline) to the file, with one write(2) so that processes can share
/// it; without a file, keeps it in this process's memory. The caller must hold the board's lock.
void Note(const std::string& line);

/// The newest lines that this process kept in memory, oldest first, at most 8192. The caller must
/// hold the board's lock.
std::vector<std::string> NotedLines();

/// Discards the lines in memory. The caller must hold the board's lock.
void ForgetNotedLines();

}  // namespace sim
