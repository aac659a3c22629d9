#include "Judgement.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "Comparison.h"
#include "Image.h"
#include "Looks.h"

namespace eyes {
namespace {

using picture::Printed;

// Levels of luma, or their ratio; a value between two limits is neither.
constexpr double kMostFrozen = 5, kLeastMoving = 12;
constexpr double kLeastBrighter = 4;
constexpr double kLeastSharper = 1.06;
constexpr double kMostEdge = 1.2, kMostOutside = 16;
constexpr double kBlackPart = 12;

struct Finding {
  Answer answer;
  std::string text;
  std::optional<Pixels> reference;
};

Finding YesIf(bool is, const std::string& text) {
  return {is ? Answer::kYes : Answer::kNo, text, {}};
}

/// Everything that a condition is judged by.
struct Situation {
  const RulesFile& rules;
  const Captures& captures;
  const KnownRig& rig;

  const Pixels& Now() const { return captures.pictures.back(); }
  Region RegionOf(const Condition& condition) const {
    return condition.region.value_or(Region{0, 0, Now().width, Now().height});
  }
};

/// The picture in a file named in the rules, in the judged size. A picture of another size, or from
/// a capture of another size, was not made for this rig.
Pixels FileOf(const Situation& situation, const std::string& name) {
  const std::string path = situation.rules.PathOf(name);
  picture::Picture file;
  try {
    file = picture::FromFile(path);
  } catch (const std::runtime_error& error) {
    throw UseError(error.what());
  }
  const Pixels& now = situation.Now();
  if (file->width != now.width || file->height != now.height) {
    throw UseError(Printed("%s is %dx%d, the judged picture %dx%d", name.c_str(), file->width,
                           file->height, now.width, now.height));
  }
  std::ifstream note(path + ".txt");
  std::string word;
  int width = 0, height = 0;
  char by = 0;
  while (note >> word) {
    if (word != "capture:" || !(note >> width >> by >> height)) continue;
    if (width != situation.captures.width || height != situation.captures.height) {
      throw UseError(Printed("%s was learned from a capture of %dx%d, this one is %dx%d",
                             name.c_str(), width, height, situation.captures.width,
                             situation.captures.height));
    }
    break;
  }
  return ToPixels(*file);
}

Finding AgainstPicture(const Situation& situation, const Condition& condition, Pixels reference,
                       const Pixels* mask = nullptr) {
  const Likeness likeness = Compare(reference, situation.Now(), {condition.region, mask},
                                    situation.rig.rig, situation.rig.bounds);
  std::string text = Printed("colour %.1f of %.0f, structure %.1f of %.0f", likeness.color,
                             kMostColor, likeness.structure, kMostStructure);
  if (likeness.shift > 0) text += Printed(", moved by %.1f pixels too many", likeness.shift);
  if (likeness.patches < kFewestPatches) {
    return {Answer::kCannotTell,
            text + Printed(", only %zu flat areas to compare", likeness.patches),
            std::move(reference)};
  }
  return {likeness.IsAlike() ? Answer::kYes : Answer::kNo, text, std::move(reference)};
}

Finding NoPictureBefore() {
  return {Answer::kCannotTell, "no picture from before the test (--eyes-before)", {}};
}

Finding AgainstReference(const Situation& situation, const Condition& condition) {
  if (condition.file == kBefore && !situation.captures.before) return NoPictureBefore();
  std::optional<Pixels> mask;
  if (!condition.mask.empty()) mask = FileOf(situation, condition.mask);
  return AgainstPicture(
      situation, condition,
      condition.file == kBefore ? *situation.captures.before : FileOf(situation, condition.file),
      mask ? &*mask : nullptr);
}

Finding Motion(const Situation& situation, const Condition& condition) {
  if (situation.captures.pictures.size() < 2)
    return {Answer::kCannotTell, "one picture shows no motion", {}};
  const double change = LargestChange(situation.captures.pictures, situation.RegionOf(condition));
  if (condition.kind == RuleKind::kFrozen)
    return YesIf(change <= kMostFrozen,
                 Printed("change %.1f of at most %.0f", change, kMostFrozen));
  return YesIf(change >= kLeastMoving,
               Printed("change %.1f of at least %.0f", change, kLeastMoving));
}

Finding InWindow(const Situation& situation, const Condition& condition) {
  const WindowFit fit = FitWindow(situation.Now(), *condition.region, situation.rig.rig);
  const std::string text = Printed("edges off by %.1f of %.1f pixels, outside %.1f of %.0f",
                                   fit.edge, kMostEdge, fit.outside, kMostOutside);
  if (!fit.bare.empty())
    return {Answer::kNo, text + ", no picture at the " + fit.bare + " edge", {}};
  return YesIf(fit.edge <= kMostEdge && fit.outside <= kMostOutside, text);
}

/// Compares measurements of the picture before the test with those of the current one.
Finding ThanBefore(const Situation& situation, const Condition& condition) {
  if (!situation.captures.before) return NoPictureBefore();
  const Pixels &before = *situation.captures.before, &now = situation.Now();
  const Region region = situation.RegionOf(condition);
  if (condition.kind == RuleKind::kChanged) {
    const double change = LargestChange(before, now, region);
    return YesIf(change >= kLeastMoving,
                 Printed("change %.1f of at least %.0f", change, kLeastMoving));
  }
  if (condition.kind == RuleKind::kBrighter || condition.kind == RuleKind::kDarker) {
    const double difference = Brightness(now, region) - Brightness(before, region);
    const bool brighter = condition.kind == RuleKind::kBrighter;
    return YesIf((brighter ? difference : -difference) >= kLeastBrighter,
                 Printed("%+.1f levels, at least %+.0f", difference,
                         brighter ? kLeastBrighter : -kLeastBrighter));
  }
  const double ratio = Sharpness(now, region) / std::max(0.01, Sharpness(before, region));
  if (condition.kind == RuleKind::kSharper)
    return YesIf(ratio >= kLeastSharper,
                 Printed("%.2f times, at least %.2f", ratio, kLeastSharper));
  return YesIf(ratio <= 1 / kLeastSharper,
               Printed("%.2f times, at most %.2f", ratio, 1 / kLeastSharper));
}

Finding Find(const Situation& situation, const Condition& condition) {
  const Pixels& now = situation.Now();
  switch (condition.kind) {
    case RuleKind::kReference:
      return AgainstReference(situation, condition);
    case RuleKind::kBlack:
      return AgainstPicture(situation, condition, PlainPicture(now.width, now.height, {}));
    case RuleKind::kPlain:
      return AgainstPicture(situation, condition,
                            PlainPicture(now.width, now.height, condition.color));
    case RuleKind::kBars:
      return AgainstPicture(situation, condition,
                            BarsPicture(now.width, now.height, situation.RegionOf(condition)));
    case RuleKind::kFrozen:
    case RuleKind::kMoving:
      return Motion(situation, condition);
    case RuleKind::kWindow:
      return InWindow(situation, condition);
    default:
      return ThanBefore(situation, condition);
  }
}

/// The reason if the rig has failed rather than the product; otherwise empty.
std::string WhyUnusable(const RulesFile& rules, const Captures& captures) {
  const auto& pictures = captures.pictures;
  if (pictures.empty()) return "no picture";
  for (size_t i = 0; i + 3 <= pictures.size(); ++i) {
    if (IsTorn(std::span(pictures).subspan(i).first<3>())) return "torn picture";
  }
  // If the capture saw something before the test, it works: then black comes from the panel.
  const bool sees = captures.before && BrightestPart(*captures.before) > kBlackPart;
  const double brightest = BrightestPart(pictures.back());
  if (brightest <= kBlackPart && !rules.trustsBlack && !sees) {
    return Printed("black picture, brightest part %.1f of 255: no signal?", brightest);
  }
  return "";
}

}  // namespace

Verdict Judge(const Rule& rule, const RulesFile& rules, const Captures& captures,
              const KnownRig& rig) {
  Verdict verdict{Answer::kYes, WhyUnusable(rules, captures), {}};
  if (!verdict.reason.empty()) {
    verdict.answer = Answer::kCannotTell;
    return verdict;
  }
  const Situation situation = {rules, captures, rig};
  for (size_t i = 0; i < rule.conditions.size(); ++i) {
    Finding finding = Find(situation, rule.conditions[i]);
    verdict.reason.append(i == 0 ? "" : "; ")
        .append(rule.conditions[i].text)
        .append(": ")
        .append(finding.text);
    // A condition that is not met decides, even if another one cannot be judged.
    const bool decides = finding.answer == Answer::kNo ||
                         (finding.answer == Answer::kCannotTell && verdict.answer == Answer::kYes);
    if (finding.reference && (!verdict.reference || (decides && verdict.answer == Answer::kYes)))
      verdict.reference = std::move(finding.reference);
    if (decides) verdict.answer = finding.answer;
  }
  return verdict;
}

Pixels DifferenceOf(const Pixels& reference, const Pixels& capture) {
  constexpr int kTimes = 4;
  Pixels difference = reference;
  for (size_t plane = 0; plane < difference.planes.size(); ++plane) {
    for (size_t i = 0; i < difference.planes[plane].size(); ++i) {
      const int levels = std::abs(reference.planes[plane][i] - capture.planes[plane][i]);
      difference.planes[plane][i] = static_cast<uint8_t>(std::min(255, kTimes * levels));
    }
  }
  return difference;
}

namespace {

constexpr struct {
  const char* name;
  double Rig::*member;
  double RigBounds::*bound;
} kNumbers[] = {{"gain", &Rig::gain, &RigBounds::gain},
                {"gamma", &Rig::gamma, &RigBounds::gamma},
                {"vignette", &Rig::vignette, &RigBounds::vignette},
                {"hue", &Rig::hue, &RigBounds::hue},
                {"right", &Rig::right, &RigBounds::shift},
                {"down", &Rig::down, &RigBounds::shift}};

/// Whether a calibration can measure this value: it refines the bounds of any rig once.
bool IsMeasurable(const Rig& rig, double Rig::*member, double RigBounds::*bound) {
  constexpr double kRounded = 0.001;
  const double most = kAnyRig.*bound + kCalibratedRig.*bound + kRounded;
  return std::abs(rig.*member - Rig{}.*member) <= most;
}

}  // namespace

KnownRig ReadCalibration(const std::string& path) {
  std::ifstream in(path);
  KnownRig known{{}, kCalibratedRig};
  for (const auto& number : kNumbers) {
    std::string name;
    if (!(in >> name >> known.rig.*number.member) || name != number.name ||
        !IsMeasurable(known.rig, number.member, number.bound))
      throw UseError(path + ": not a calibration");
  }
  return known;
}

void WriteCalibration(const std::string& path, const Rig& rig) {
  const std::string next = path + ".part";
  std::ofstream out(next);
  for (const auto& number : kNumbers)
    out << number.name << ' ' << Printed("%.4f", rig.*number.member) << '\n';
  out.close();
  std::error_code error;
  if (out) std::filesystem::rename(next, path, error);
  if (!out || error) throw UseError("cannot write " + path);
}

}  // namespace eyes
