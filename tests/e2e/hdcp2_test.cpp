// HDCP 2 bring-ups on the simulated board.
#include <gtest/gtest.h>

#include <string>

#include "BoardFixture.h"

namespace {

using test::Pty;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr int kFirstPortTest = 3;
constexpr int kTests = 9;

class Hdcp2Test : public test::BoardFixture {
 protected:
  /// Runs all nine tests on port 0 and quits.
  static testing::AssertionResult RunAll(Pty& pty) {
    if (auto there = Type(pty, {{kChoice, "0"}, {kChoice, "0"}}); !there) return there;
    for (int i = 0; i < kTests; ++i) {
      if (auto started = pty.Answer(kChoice, std::to_string(i)); !started) return started;
      if (i < kFirstPortTest) continue;
      if (auto named = pty.Answer("Input port:", "0"); !named) return named;
    }
    return pty.Answer(kChoice, "q");
  }
};

TEST_F(Hdcp2Test, AllNineTestsPassInARow) {
  Pty& pty = Start();
  ASSERT_TRUE(RunAll(pty));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Totals(), "9/9/0") << pty.Transcript();
}

TEST_F(Hdcp2Test, ALateReceiverFailsFromTheLocalityCheckOn) {
  Pty& pty = Start({.scenario = "plug 0 3840x2160p60 hdr\nhdcp2 0 late-l\n"});
  ASSERT_TRUE(RunAll(pty));
  EXPECT_EQ(pty.Wait(), 0);
  // Locality check, session key, streams and the whole authentication.
  EXPECT_EQ(Totals(), "9/5/4") << pty.Transcript();
  EXPECT_NE(pty.Transcript().find("HDCP2 authentication failed : L' came too late\n"),
            std::string::npos);
}

}  // namespace
