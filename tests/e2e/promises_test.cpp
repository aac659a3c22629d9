// What unattended runs promise: they end, they leave the board as it is, and every test has one
// result wherever results are read.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "UnattendedFixture.h"

namespace {

using test::Contains;
using test::FileText;
using test::UnattendedTest;

using PromisesTest = UnattendedTest;

TEST_F(PromisesTest, TestsThatChangeTheBoardForGoodRunOnlyWhenNamed) {
  // Golden data that an overwrite or a restore would touch.
  const std::string golden = "/data/cross_module/golden_data/playback/x.txt";
  Put(golden, "mine\n");
  Run({"--run", "CM*", "--no-operator", "--timeout", "10"});
  for (const char* id : {"CMplaybackModule/0", "CMplaybackModule/9", "CMplaybackModule/10",
                         "CMplaybackModule/6", "CMAutoTest/0", "CMAutoTest/4"}) {
    EXPECT_TRUE(Contains(Screen(), std::string("SKIPPED ") + id + " ")) << id << Screen();
  }
  EXPECT_TRUE(Contains(Screen(), "name it exactly or add --disruptive")) << Screen();
  EXPECT_EQ(FileText(OnBoard(golden)), "mine\n");
  Run({"--run", "CMplaybackModule/10", "--no-operator"});
  EXPECT_FALSE(Contains(Screen(), "SKIPPED")) << Screen();
  Run({"--run", "CMplaybackModule/1?", "--no-operator", "--disruptive"});
  EXPECT_FALSE(Contains(Screen(), "SKIPPED CMplaybackModule/10")) << Screen();
}

TEST_F(PromisesTest, RunsEndWhereNothingRunsAndTellSkippedRoundsOnce) {
  EXPECT_EQ(Run({"--run", "CMplaybackModule/7", "CMplaybackModule/13", "--until-fail"}), 77);
  EXPECT_TRUE(Contains(Screen(), "2 listed = 0 run + 2 skipped")) << Screen();

  EXPECT_EQ(Run({"--run", "UTVpqModule/20?", "--repeat", "1000000", "--stop-on-fail", "--tap",
                 "/tmp/o.tap", "--json", "/tmp/o.json", "--junit", "/tmp/o.xml"},
                "misbehave K2V_RHAL_VPQ_SetGammaLUT abort --at 12\n"),
            1);
  EXPECT_TRUE(Contains(Screen(), "errors; 99999")) << Screen();
  const std::string rounds = Query(".[-1].skipped_rounds", "/tmp/o.json");
  EXPECT_TRUE(Contains(FileText(OnBoard("/tmp/o.tap")), "\n# " + rounds + " rounds skipped\n1.."));
  EXPECT_EQ(
      Judge("xmllint --xpath \"string(//property[@name='skipped_rounds']/@value)\"", "/tmp/o.xml"),
      rounds + "\n");
  EXPECT_LT(std::stoi(Query("length", "/tmp/o.json")), 500);
}

}  // namespace
