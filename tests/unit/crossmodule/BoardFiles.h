// A separate cross-module home with generated golden files and kept dumps of a test case.
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

  /// Writes a file in the home and creates its directories.
  void Write(const std::string& name, const std::string& text) const;

  /// Writes golden files and kept dumps of a test case, and uses the kept dumps as the stages'
  /// dumps.
  void Play(int testCase, const std::vector<player::Defect>& defects);

 private:
  std::string path_;
  std::vector<std::string> dumps_;
};

// Files that identify the board's operating system.
inline constexpr char kAndroid[] = "/vendor/manifest.xml";
inline constexpr char kSorvex[] = "/home/core.1st";
inline constexpr char kPelxos[] = "/vendor/corvana/pelxos";

/// Pretends that only this one of the files that identify the board's operating system exists.
/// Empty for none.
void PretendBoardFile(const std::string& path);

/// Pretends that only these of the board's other files (disks, stick, markers) exist.
void PretendFiles(const std::vector<std::string>& paths);

/// Pretends that the board's Ethernet has an address from the n-th query on. 0 for never.
void PretendAddressAtLook(int number);

/// Runs a command in a real shell and discards its output. Returns its exit status.
int RunForReal(const std::string& command);

/// Whether a command only moves files of the report directories, which tests have as on a board.
bool MovesAReport(const std::string& command);

/// Removes the files that a test left in the drivers' directory, "/tmp/cross_module/".
void RemoveVolatileFiles();

/// The text without its colour sequences.
std::string WithoutColours(const std::string& text);

}  // namespace crossmodule
