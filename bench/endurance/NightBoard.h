// The simulated board of an endurance run: independent of tests, for programs that run for hours.
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
  /// Chooses the sandbox. Prints a message and returns false if none is available.
  bool Prepare();

  /// Switches the board on and starts the harness there; waiting times pass a hundred times faster.
  /// Reports of earlier runs are deleted.
  test::Pty& StartHarness(const std::vector<std::string>& arguments = {});

  /// Samples the harness that was started last. It must have printed something.
  Sample LookAtHarness();

  /// Paths of all files in the board's /tmp except reports.
  std::set<std::string> TemporaryFiles() const;

  /// Waits until everything on the board has ended. Returns the problem: a status other than
  /// `status`, or processes that are still running. Empty if there is none.
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
