// Wrong pictures fail, and correct ones pass even through a bad capture. `bench_eyes` tests many
// more.
#include <gtest/gtest.h>

#include "Captures.h"
#include "Comparison.h"

namespace {

using captures::BadCapture;
using captures::Captured;
using captures::Shown;

/// A capture and its rig, measured with the calibration picture.
struct Measured {
  BadCapture capture;
  eyes::Rig rig;
};

std::vector<Measured> Rigs(size_t count) {
  std::mt19937 random(2026);
  const eyes::Pixels shown = Shown(captures::Scenes().front().filters);
  std::vector<Measured> rigs;
  while (rigs.size() < count) {
    const BadCapture capture = captures::Draw(random);
    const auto rig = Calibrate(shown, Captured(shown, capture));
    EXPECT_TRUE(rig) << capture.Text();
    rigs.push_back({capture, rig.value_or(eyes::Rig{})});
  }
  return rigs;
}

std::string Figures(const eyes::Likeness& likeness, const BadCapture& capture) {
  return picture::Printed("colour %.1f structure %.1f shift %.1f, ", likeness.color,
                          likeness.structure, likeness.shift) +
         capture.Text();
}

TEST(Confusion, NoDefectPasses) {
  const std::vector<Measured> rigs = Rigs(3);
  size_t number = 0;
  for (const captures::Defect& defect : captures::Defects(27)) {
    const auto& [capture, rig] = rigs[number++ % rigs.size()];
    const eyes::Likeness likeness = Compare(
        Shown(defect.shown), Captured(Shown(defect.seen), capture), {}, rig, eyes::kCalibratedRig);
    EXPECT_FALSE(likeness.IsAlike())
        << defect.kind << ", " << defect.shown << ": " << Figures(likeness, capture);
  }
}

TEST(Confusion, GoodPicturesPassThroughABadCapture) {
  // The worst values of all properties together.
  const BadCapture worst[] = {{0.95, 1.05, 0.1, 2, 1, -1, 3, true, 70},
                              {1.05, 0.95, 0.1, -2, -1, 1, 3, true, 70}};
  const eyes::Pixels first = Shown(captures::Scenes().front().filters);
  std::vector<Measured> rigs;
  for (const BadCapture& capture : worst) {
    const auto rig = Calibrate(first, Captured(first, capture));
    ASSERT_TRUE(rig) << capture.Text();
    rigs.push_back({capture, *rig});
  }
  size_t number = 0;
  for (const captures::Scene& scene : captures::Scenes()) {
    const auto& [capture, rig] = rigs[number++ % rigs.size()];
    const eyes::Pixels shown = Shown(scene.filters);
    const eyes::Pixels seen = Captured(shown, capture);
    for (const bool isMeasured : {true, false}) {
      const eyes::Likeness likeness =
          Compare(shown, seen, {}, isMeasured ? rig : eyes::Rig{},
                  isMeasured ? eyes::kCalibratedRig : eyes::kUnknownRig);
      EXPECT_TRUE(likeness.IsAlike())
          << scene.name << (isMeasured ? ", measured: " : ": ") << Figures(likeness, capture);
    }
  }
}

TEST(Confusion, CalibrationMeasuresTheRigAndRejectsOtherPictures) {
  const eyes::Pixels shown = Shown(captures::Scenes().front().filters);
  const auto rig = Calibrate(shown, Captured(shown, {0.85, 1.2, 0.2, 5, 2, -1, 0, false, 0}));
  ASSERT_TRUE(rig);
  EXPECT_NEAR(rig->gain, 0.85, 0.02);
  EXPECT_NEAR(rig->gamma, 1.2, 0.03);
  EXPECT_NEAR(rig->vignette, 0.2, 0.06);
  EXPECT_NEAR(rig->hue, 5, 1);
  EXPECT_NEAR(rig->right, 2, 0.2);
  EXPECT_NEAR(rig->down, -1, 0.2);
  EXPECT_FALSE(Calibrate(shown, Shown("{bars}")));
  EXPECT_FALSE(Calibrate(shown, Shown("color=black:s=960x540")));
}

}  // namespace
