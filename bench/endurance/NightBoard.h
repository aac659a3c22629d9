// The simulated board of an endurance run: outside of any test, for programs that run for hours.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "BoardFixture.h"
#include "Watch.h"

namespace endurance {

class NightBoard : public test::BoardFixture {
 public:
  /// Chooses the sandbox. False, with a message, where none can be had.
  bool Prepare();

  /// Switches the board on and starts the harness there, with waits that pass a hundred times
  /// faster. No report of an earlier run is left.
  test::Pty& StartHarness(const std::vector<std::string>& arguments = {});

  /// Looks at the harness that was started last. It has to have printed something.
  Sample LookAtHarness();

  /// Paths of all files in the board's /tmp but reports.
  std::set<std::string> TemporaryFiles() const;

  /// Waits for the end of all that the board ran. Returns what is wrong: a status that is not
  /// `status`, or processes that live on. Empty when nothing is.
  std::string End(test::Pty& pty, int status) const;

  using BoardFixture::Board;
  using BoardFixture::Cvnsim;
  using BoardFixture::OnBoard;
  using BoardFixture::ReportText;

 private:
  void TestBody() override {}

  test::Pty* pty_ = nullptr;
  pid_t harness_ = 0;
};

}  // namespace endurance
