// Where the board lives: a file that several processes map, or memory shared with forked children.
#pragma once

#include <string>

#include "core/Board.h"

namespace sim {

/// Switches the board of this process on: maps the file named by CVNSIM_STATE (created if missing)
/// or anonymous shared memory. The first process loads the scenario; later ones find the board as
/// it is. Throws std::runtime_error with a one-line text if the file is unusable or a scenario line
/// is invalid.
void PowerOn();

/// Maps the board that another process switched on, in place of one that was mapped before. Throws
/// std::runtime_error if `path` is not a state file of such a board.
void Attach(const std::string& path);

/// Locks the board for the duration of one HAL call or command. Events that are due run first.
/// A process that is killed while it holds the lock does not lock the others out.
class BoardLock {
 public:
  BoardLock();
  ~BoardLock();
  BoardLock(const BoardLock&) = delete;
  BoardLock& operator=(const BoardLock&) = delete;

  Board& operator*() const { return board_; }
  Board* operator->() const { return &board_; }

 private:
  Board& board_;
};

/// The state file; empty if the board has none.
std::string StatePath();

/// Directory of the state file; empty if the board has none.
std::string StateDirectory();

/// Resets the locked board to its power-on state: empty, then the scenario it started with.
void ResetBoard(Board& board);

}  // namespace sim
