// Each rule at its limits, and the syntax of rules files.
#include <gtest/gtest.h>

#include <fstream>

#include "Captures.h"
#include "Filter.h"
#include "Judgement.h"
#include "Looks.h"

namespace {

using eyes::Answer;
using eyes::Pixels;
using eyes::PlainPicture;
using eyes::Region;
using enum Answer;

constexpr int kWidth = 320, kHeight = 192;
constexpr Region kWindow = {64, 48, 128, 96};

// A rig that shows colours unchanged, so that measured values are levels.
constexpr eyes::KnownRig kExactRig = {{}, {0, 0, 0, 0, 0.5}};

Pixels Gray(int level) {
  return PlainPicture(kWidth, kHeight, {1.0 * level, 1.0 * level, 1.0 * level});
}

Pixels WithBlock(Pixels picture, const Region& block, int level) {
  for (int y = block.y; y < block.y + block.h; ++y) {
    for (int x = block.x; x < block.x + block.w; ++x) {
      for (eyes::Plane& plane : picture.planes)
        plane[picture.At(x, y)] = static_cast<uint8_t>(level);
    }
  }
  FillLuma(picture);
  return picture;
}

/// Columns that are alternately darker and brighter than the middle.
Pixels Stripes(int amplitude) {
  Pixels picture = Gray(128);
  for (int x = 0; x < kWidth; x += 2)
    picture = WithBlock(std::move(picture), {x, 0, 1, kHeight}, 128 + amplitude);
  return picture;
}

eyes::Verdict Judged(const std::string& rule, std::vector<Pixels> pictures,
                     std::optional<Pixels> before = {}, bool trustsBlack = true) {
  eyes::RulesFile rules;
  rules.width = kWidth;
  rules.height = kHeight;
  rules.trustsBlack = trustsBlack;
  return Judge({"*", "*", rule, eyes::ParseConditions(rule, kWidth, kHeight)}, rules,
               {std::move(pictures), std::move(before), kWidth, kHeight}, kExactRig);
}

TEST(RulesAtTheirBoundary, PictureIsBlackPlainOrBars) {
  const Pixels bars = eyes::BarsPicture(kWidth, kHeight, {0, 0, kWidth, kHeight});
  const Pixels inRegion = eyes::BarsPicture(kWidth, kHeight, {32, 16, 256, 160});
  Pixels oneSwapped = bars, otherMatrix = bars;
  std::swap(oneSwapped.planes[0], oneSwapped.planes[2]);
  for (uint8_t& red : otherMatrix.planes[0]) red = red == 255 ? 233 : 0;
  FillLuma(oneSwapped);
  FillLuma(otherMatrix);
  const struct {
    const char* rule;
    Pixels picture;
    Answer answer;
  } kCases[] = {
      {"black", Gray(10), kYes},
      {"black", Gray(11), kNo},
      {"plain gray", Gray(138), kYes},
      {"plain gray", Gray(139), kNo},
      {"plain 0000ff", PlainPicture(kWidth, kHeight, {0, 10, 245}), kYes},
      {"plain blue", PlainPicture(kWidth, kHeight, {0, 11, 255}), kNo},
      // A single line, and a spot outside the judged region.
      {"plain gray", WithBlock(Gray(128), {40, 99, 200, 1}, 152), kYes},
      {"plain gray", WithBlock(Gray(128), {40, 99, 200, 1}, 153), kNo},
      {"plain gray region 40,40,100,100", WithBlock(Gray(128), {200, 100, 64, 64}, 0), kYes},
      {"bars", bars, kYes},
      {"bars", oneSwapped, kNo},
      {"bars", otherMatrix, kNo},
      {"bars region 32,16,256,160", inRegion, kYes},
      {"bars region 34,16,256,160", inRegion, kNo},
  };
  for (const auto& [rule, picture, answer] : kCases) {
    const eyes::Verdict verdict = Judged(rule, {picture});
    EXPECT_EQ(verdict.answer, answer) << rule << ": " << verdict.reason;
  }
}

TEST(RulesAtTheirBoundary, PictureIsFrozenMovingOrDifferentFromBefore) {
  const auto changed = [](int levels) {
    return WithBlock(Gray(100), {80, 80, 8, 8}, 100 + levels);
  };
  // A box that moves in front of still edges.
  const auto boxAt = [](int x) {
    return WithBlock(eyes::BarsPicture(kWidth, kHeight, {0, 0, kWidth, kHeight}), {x, 50, 40, 40},
                     128);
  };
  const struct {
    const char* rule;
    std::vector<Pixels> pictures;
    std::optional<Pixels> before;
    Answer answer;
  } kCases[] = {
      {"frozen", {Gray(100), changed(5)}, {}, kYes},
      {"frozen", {Gray(100), changed(6)}, {}, kNo},
      {"moving", {Gray(100), changed(12), Gray(100)}, {}, kYes},
      {"moving", {Gray(100), changed(11)}, {}, kNo},
      {"moving", {Gray(100)}, {}, kCannotTell},
      {"frozen region 160,0,160,192", {Gray(100), changed(90)}, {}, kYes},
      {"brighter than before", {Gray(104)}, Gray(100), kYes},
      {"brighter", {Gray(103)}, Gray(100), kNo},
      {"darker than before", {Gray(96)}, Gray(100), kYes},
      {"darker", {Gray(97)}, Gray(100), kNo},
      {"darker", {Gray(104)}, Gray(100), kNo},
      {"sharper than before", {Stripes(53)}, Stripes(50), kYes},
      {"sharper", {Stripes(52)}, Stripes(50), kNo},
      {"softer", {Stripes(47)}, Stripes(50), kYes},
      {"softer", {Stripes(48)}, Stripes(50), kNo},
      {"changed", {changed(12)}, Gray(100), kYes},
      {"changed", {changed(11)}, Gray(100), kNo},
      {"reference before", {Gray(110)}, Gray(100), kYes},
      {"reference before", {Gray(111)}, Gray(100), kNo},
      {"reference before", {boxAt(101)}, boxAt(100), kYes},
      {"reference before", {boxAt(102)}, boxAt(100), kNo},
      {"brighter", {Gray(200)}, {}, kCannotTell},
      {"reference before", {Gray(200)}, {}, kCannotTell},
      // A failed condition decides, even if another one cannot be judged.
      {"brighter and black", {Gray(200)}, {}, kNo},
      {"plain 646464 and brighter", {Gray(100)}, Gray(90), kYes},
      {"plain 646464 and brighter", {Gray(100)}, Gray(100), kNo},
  };
  for (const auto& [rule, pictures, before, answer] : kCases) {
    const eyes::Verdict verdict = Judged(rule, pictures, before);
    EXPECT_EQ(verdict.answer, answer) << rule << ": " << verdict.reason;
  }
}

TEST(RulesAtTheirBoundary, WindowShowsItsPictureAndNothingAroundIt) {
  constexpr char kRule[] = "window 64,48,128,96";
  const auto with = [](Region window, int ground) { return WithBlock(Gray(ground), window, 200); };
  const struct {
    Pixels picture;
    Answer answer;
  } kCases[] = {
      {with(kWindow, 0), kYes},
      {with(kWindow, 128), kYes},
      {with({65, 48, 127, 96}, 0), kYes},
      {with({66, 48, 126, 96}, 0), kNo},
      {with({64, 48, 130, 96}, 0), kNo},
      {with({64, 46, 128, 96}, 0), kNo},
      {with({66, 48, 128, 96}, 0), kNo},
      {WithBlock(with(kWindow, 0), {8, 8, 8, 8}, 16), kYes},
      {WithBlock(with(kWindow, 0), {8, 8, 8, 8}, 17), kNo},
      {WithBlock(with(kWindow, 0), {150, 40, 60, 120}, 0), kNo},
      {Gray(200), kNo},
  };
  for (const auto& [picture, answer] : kCases) {
    const eyes::Verdict verdict = Judged(kRule, {picture});
    EXPECT_EQ(verdict.answer, answer) << &picture - &kCases[0].picture << ": " << verdict.reason;
  }
}

TEST(Rig, MissingSignalAndTornCapturesGiveNoVerdict) {
  const auto boxAt = [](int x, int y = 60) { return WithBlock(Gray(40), {x, y, 48, 64}, 220); };
  // The upper half of one picture and the lower half of the next one.
  Pixels torn = boxAt(160);
  const Pixels first = boxAt(100);
  for (size_t plane = 0; plane < torn.planes.size(); ++plane)
    std::copy_n(first.planes[plane].begin(), kWidth * 90, torn.planes[plane].begin());
  FillLuma(torn);
  const struct {
    const char* rule;
    std::vector<Pixels> pictures;
    std::optional<Pixels> before;
    bool trustsBlack;
    Answer answer;
  } kCases[] = {
      {"plain white", {Gray(12)}, {}, false, kCannotTell},
      {"black", {Gray(0)}, {}, false, kCannotTell},
      {"plain white", {Gray(13)}, {}, false, kNo},
      // The rig is trusted to capture correctly.
      {"plain white", {Gray(12)}, {}, true, kNo},
      {"black", {Gray(0)}, Gray(100), false, kYes},
      {"black", {Gray(0)}, Gray(0), false, kCannotTell},
      {"moving", {boxAt(100), torn, boxAt(160)}, {}, false, kCannotTell},
      {"moving", {boxAt(100), boxAt(130), boxAt(160)}, {}, false, kYes},
      {"moving", {boxAt(100), boxAt(160), boxAt(160)}, {}, false, kYes},
      {"moving", {boxAt(0, 128), boxAt(160, 64), boxAt(270, 0)}, {}, false, kYes},
      {"black", {}, {}, true, kCannotTell},
  };
  for (const auto& [rule, pictures, before, trusts, answer] : kCases) {
    const eyes::Verdict verdict = Judged(rule, pictures, before, trusts);
    EXPECT_EQ(verdict.answer, answer) << rule << ": " << verdict.reason;
  }
}

TEST(RulesFile, FirstMatchingRuleWins) {
  const std::string path = testing::TempDir() + "rules";
  std::ofstream(path) << "# comment\n"
                         "from command:camera --fast\n"
                         "size 640x360  # of the judged picture\n"
                         "pictures 2\n"
                         "\n"
                         "VscModule/3?\t*PASS or FAIL*\tblack\n"
                         "VscModule/3?\t*\tplain blue region 0,0,64,64 and frozen\n"
                         "VscModule\t*\tbars\n";
  const eyes::RulesFile rules = eyes::ReadRules(path);
  EXPECT_EQ(rules.from, "command:camera --fast");
  EXPECT_EQ(rules.width, 640);
  EXPECT_EQ(rules.pictures, 2);
  EXPECT_FALSE(rules.trustsBlack);
  EXPECT_EQ(rules.PathOf("a.png"), testing::TempDir() + "a.png");
  const auto ruleOf = [&](const char* test, const char* question) {
    const eyes::Rule* rule = FindRule(rules, test, question);
    return rule == nullptr ? "" : rule->text;
  };
  EXPECT_EQ(ruleOf("VscModule/31", "check PASS or FAIL by 'Y'"), "black");
  EXPECT_EQ(ruleOf("VscModule/31@2", "x"), "plain blue region 0,0,64,64 and frozen");
  EXPECT_EQ(ruleOf("VscModule/3", "x"), "bars");
  EXPECT_EQ(ruleOf("VbeModule/3", "x"), "");
}

TEST(RulesFile, ErrorsNameTheInvalidPart) {
  const struct {
    const char* text;
    const char* message;
  } kCases[] = {
      {"a\tb\n", "malformed rule: expected test, question and conditions, separated by tabs"},
      {"colour blue\n", "unknown setting 'colour', or a rule without its two tabs"},
      {"size 640\n", "invalid value '': expected 64 to 2160"},
      {"pictures 0\n", "invalid value '0': expected 1 to 100"},
      {"trust me\n", "invalid value 'me': expected black"},
      {"a\tb\t\n", "a condition is missing at the end of the rule"},
      {"a\tb\tblack and\n", "a condition is missing at the end of the rule"},
      {"a\tb\tblack black\n", "unexpected 'black': expected 'and' or the end of the rule"},
      {"a\tb\tblakc\n",
       "unknown condition 'blakc': expected reference, black, plain, bars, frozen, moving, window, "
       "brighter, darker, sharper, softer, changed"},
      {"a\tb\tplain mauve\n", "invalid colour 'mauve': expected a name such as blue, or RRGGBB"},
      {"a\tb\treference\n", "the reference's file is missing at the end of the rule"},
      {"a\tb\twindow 900,0,100,100\n",
       "invalid region '900,0,100,100': expected X,Y,W,H of 960x540 with at least 32 pixels in "
       "both "
       "directions"},
      {"a\tb\twindow 0,0,960,509\n", "invalid window '0,0,960,509': it covers the whole picture"},
      {"a\tb\twindow 1,2,3\n",
       "invalid region '1,2,3': expected X,Y,W,H of 960x540 with at least 32 pixels in both "
       "directions"},
      {"a\tb\tblack region 0,0,2147483647,64\n",
       "invalid region '0,0,2147483647,64': expected X,Y,W,H of 960x540 with at least 32 pixels in "
       "both "
       "directions"},
  };
  const std::string path = testing::TempDir() + "rules";
  for (const auto& [text, message] : kCases) {
    std::ofstream(path) << "# first\n" << text;
    try {
      eyes::ReadRules(path);
      ADD_FAILURE() << text;
    } catch (const eyes::UseError& error) {
      EXPECT_EQ(error.what(), path + ":2: " + message);
    }
  }
}

TEST(Texts, AreFormattedAtAnyLength) {
  const std::string endless(5000, 'x');
  EXPECT_EQ(picture::Printed("<%s>%d", endless.c_str(), 7), "<" + endless + ">7");
}

}  // namespace
