// A test on the simulated board: a new board in a separate directory, the harness on a terminal,
// and the files in which the board records what happened.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Pty.h"

namespace test {

/// How the board is started.
struct BoardOptions {
  std::vector<std::string> launcher{};   // further options of board-run: "--os", "sorvex", …
  std::vector<std::string> arguments{};  // for the harness
  std::string scenario{};                // text of the scenario file; empty for none
  double timeScale = 1;                  // speed factor for waiting times
  PtyOptions terminal{};
};

/// Skips the test if no sandbox is available.
class BoardFixture : public testing::Test {
 protected:
  BoardFixture();
  ~BoardFixture() override;
  void SetUp() override;

  /// Switches the board on and starts the harness there. Ends the previous program.
  Pty& Start(const BoardOptions& options = {});
  /// Like `Start`, for any program; `options.arguments` is not used.
  Pty& StartProgram(const std::vector<std::string>& argv, const BoardOptions& options = {});
  /// The command line that starts `argv` on the board.
  std::vector<std::string> CommandLine(const std::vector<std::string>& argv,
                                       const BoardOptions& options = {}) const;

  /// How the board is isolated from this machine: "bwrap" or "chroot".
  const std::string& Sandbox() const { return sandbox_; }
  /// The board's directory.
  const std::filesystem::path& Board() const { return board_; }
  /// The host path of `path` on the board, such as "/tmp/x".
  std::filesystem::path OnBoard(const std::string& path) const;
  /// Name of the one report; fails if there is not exactly one.
  std::filesystem::path ReportPath() const;
  /// Text of the one report.
  std::string ReportText() const;
  /// The report's totals, such as "3/2/1" for total, pass and fail.
  std::string Totals() const;
  /// HAL calls since the board was switched on, one per line.
  std::vector<std::string> Trace() const;
  /// Calls of the board's tools since it was switched on, one per line.
  std::vector<std::string> LogCommands() const;
  /// Runs cvnsim on this board with `command`, quoted as for a shell, and returns its output.
  std::string Cvnsim(const std::string& command) const;

 private:
  std::filesystem::path directory_;
  std::filesystem::path board_;
  std::string sandbox_;
  std::unique_ptr<Pty> pty_;
};

/// Result of a command.
struct ShellResult {
  int status;          // exit status, or 128 + the signal that ended it
  std::string output;  // including standard error
};

/// Runs `command` with the shell.
ShellResult RunShell(const std::string& command);

/// The content of a file; fails the test if it cannot be read.
std::string FileText(const std::filesystem::path& path);

/// `text` quoted as one word for a shell.
std::string Quoted(const std::string& text);

}  // namespace test
