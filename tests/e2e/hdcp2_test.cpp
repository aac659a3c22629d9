// HDCP 2 bring-ups on the simulated board.
#include <gtest/gtest.h>

#include <string>

#include "BoardFixture.h"

namespace {

using test::Pty;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr int kFirstPortTest = 3;
constexpr int kTests = 9;

class Hdcp2Test : public test::BoardFixture {};

TEST_F(Hdcp2Test, AllNineTestsPassInARow) {
  Pty& pty = Start();
  ASSERT_TRUE(Type(pty, {{kChoice, "0"}, {kChoice, "0"}}));
  for (int i = 0; i < kTests; ++i) {
    ASSERT_TRUE(pty.Answer(kChoice, std::to_string(i)));
    if (i < kFirstPortTest) continue;
    ASSERT_TRUE(pty.Answer("Input port:", "0"));
  }
  ASSERT_TRUE(pty.Answer(kChoice, "q"));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Totals(), "9/9/0") << pty.Transcript();
}

}  // namespace
