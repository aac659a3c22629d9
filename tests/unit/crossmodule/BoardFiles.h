// A cross-module home of the test's own, with generated golden files and kept dumps of a test case.
#pragma once

#include <string>
#include <vector>

#include "Defect.h"

namespace crossmodule {

/// Moves the home to a new temporary directory and removes it at the end.
class Home {
 public:
  Home();
  ~Home();
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  const std::string& Path() const { return path_; }

  /// Writes a file below the home, with its directories.
  void Write(const std::string& name, const std::string& text) const;

  /// Writes golden files and kept dumps of a test case, and makes the stages' dumps those kept.
  void Play(int testCase, const std::vector<player::Defect>& defects);

 private:
  std::string path_;
  std::vector<std::string> dumps_;
};

// Files that identify the board's operating system.
inline constexpr char kAndroid[] = "/vendor/manifest.xml";
inline constexpr char kSorvex[] = "/home/core.1st";
inline constexpr char kPelxos[] = "/vendor/corvana/pelxos";

/// Pretends that of the files that identify the board's operating system this one exists. Empty:
/// none.
void PretendBoardFile(const std::string& path);

/// Pretends that of the board's other files (the disks, the stick, markers) these alone are there.
void PretendFiles(const std::vector<std::string>& paths);

/// Pretends that the board's Ethernet gets its address at the n-th look from now on. 0: never.
void PretendAddressAtLook(int number);

/// Runs a command in a real shell, quietly. Returns its exit status.
int RunForReal(const std::string& command);

/// Whether a command only moves files of the report's directories, which tests have as on a board.
bool MovesAReport(const std::string& command);

/// Removes what a test left in the drivers' directory, "/tmp/cross_module/".
void RemoveVolatileFiles();

/// The text without its colour sequences.
std::string WithoutColours(const std::string& text);

}  // namespace crossmodule
