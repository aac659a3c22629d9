// Where the board lives: a file that several processes map, or memory shared with forked children.
#pragma once

#include <string>

#include "core/Board.h"

namespace sim {

/// Switches the board of this process on: maps the file named by CVNSIM_STATE (made when missing)
/// or anonymous shared memory. Whoever comes first loads the scenario; later ones find the board
/// as it is. Throws std::runtime_error with a one-line text: unusable file, wrong scenario line.
void PowerOn();

/// Maps the board that another process switched on, in place of one that was mapped before. Throws
/// std::runtime_error if `path` is not a state file of such a board.
void Attach(const std::string& path);

/// Holds the board for the time of one HAL call or command. Events that fell due happen first.
/// A process that was killed in between does not keep the others out.
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

/// The state file; empty where the board has none.
std::string StatePath();

/// Directory of the state file; empty where the board has none.
std::string StateDirectory();

/// Puts the locked board back to its power-on state: empty, then the scenario it started with.
void ResetBoard(Board& board);

}  // namespace sim
