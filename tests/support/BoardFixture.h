// A test on the simulated board: a new board in a directory of its own, the harness at a terminal,
// and the files in which the board records what happened.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Pty.h"

namespace test {

/// How the board is switched on.
struct BoardOptions {
  std::vector<std::string> launcher{};   // further options of board-run: "--os", "sorvex", …
  std::vector<std::string> arguments{};  // the harness's own
  std::string scenario{};                // text of the scenario file; empty: none
  double timeScale = 1;                  // waits pass so many times faster
  PtyOptions terminal{};
};

/// Skips the test where no sandbox can be had.
class BoardFixture : public testing::Test {
 protected:
  BoardFixture();
  ~BoardFixture() override;
  void SetUp() override;

  /// Switches the board on and starts the harness there. Ends what was running.
  Pty& Start(const BoardOptions& options = {});
  /// As `Start`, for any program; `options.arguments` is not used.
  Pty& StartProgram(const std::vector<std::string>& argv, const BoardOptions& options = {});
  /// The command line that starts `argv` on the board.
  std::vector<std::string> CommandLine(const std::vector<std::string>& argv,
                                       const BoardOptions& options = {}) const;

  /// How the board is kept apart from this machine: "bwrap" or "chroot".
  const std::string& Sandbox() const { return sandbox_; }
  /// The board's directory.
  const std::filesystem::path& Board() const { return board_; }
  /// `path` on the board, such as "/tmp/x", as a path here.
  std::filesystem::path OnBoard(const std::string& path) const;
  /// Name of the one report; fails if there is not exactly one.
  std::filesystem::path ReportPath() const;
  /// Text of the one report.
  std::string ReportText() const;
  /// The report's totals, such as "3/2/1" for total, pass and fail.
  std::string Totals() const;
  /// HAL calls since the board was switched on, one a line.
  std::vector<std::string> Trace() const;
  /// Calls of the board's tools since it was switched on, one a line.
  std::vector<std::string> LogCommands() const;
  /// Runs cvnsim on this board with `command`, words as for a shell, and returns what it printed.
  std::string Cvnsim(const std::string& command) const;

 private:
  std::filesystem::path directory_;
  std::filesystem::path board_;
  std::string sandbox_;
  std::unique_ptr<Pty> pty_;
};

/// What a command did.
struct ShellResult {
  int status;          // exit status, or 128 + the signal that ended it
  std::string output;  // errors included
};

/// Runs `command` with the shell.
ShellResult RunShell(const std::string& command);

/// The whole of a file; fails the test when it cannot be read.
std::string FileText(const std::filesystem::path& path);

/// `text` as one word for a shell.
std::string Quoted(const std::string& text);

}  // namespace test
