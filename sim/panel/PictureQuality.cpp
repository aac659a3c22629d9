#include "PictureQuality.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "Filter.h"
#include "vpq/Vpq.h"

namespace panel {
namespace {

using picture::Printed;
using sim::Vpq;
using enum sim::VpqValue;

constexpr double kNeutralGain = 512;  // of the chip's gains and offsets

// Full range, so that the arithmetic of the controls needs no headroom.
constexpr char kToYuv[] = "scale=out_range=full:out_color_matrix=bt709,format=yuv444p";
constexpr char kToRgb[] = "scale=in_range=full:in_color_matrix=bt709,format=gbrp";

int Of(const Vpq& vpq, sim::VpqValue key) {
  return sim::ValueOf(vpq, key);
}

/// -1 to 1 for a control of 0 to 100.
double AroundMiddle(int value) {
  return (value - 50) / 50.0;
}

/// Chains filters; empty ones are skipped.
std::string Chain(std::initializer_list<std::string> parts) {
  std::string chain;
  for (const std::string& part : parts) {
    if (!part.empty()) chain.append(chain.empty() ? "" : ",").append(part);
  }
  return chain;
}

// The filters below are empty if their argument means no change.

std::string Brighter(double share) {
  return share == 0 ? "" : Printed("eq=brightness=%.4f", share);
}

std::string Contrast(double gain) {
  return gain == 1 ? "" : Printed("eq=contrast=%.4f", gain);
}

std::string Saturation(double gain) {
  return gain == 1 ? "" : Printed("hue=s=%.4f", gain);
}

std::string Hue(double degrees) {
  return degrees == 0 ? "" : Printed("hue=h=%.3f", degrees);
}

/// Negative amounts soften.
std::string Sharper(double amount, int size = 5) {
  return amount == 0 ? "" : Printed("unsharp=%d:%d:%.3f", size, size, amount);
}

std::string Softer(double sigma) {
  return sigma == 0 ? "" : Printed("gblur=sigma=%.3f", sigma);
}

std::string Gains(double red, double green, double blue) {
  if (red == 1 && green == 1 && blue == 1) return "";
  return Printed(
      "lutrgb=r='clip(val*%.4f,0,255)':g='clip(val*%.4f,0,255)':b='clip(val*%.4f,0,255)'", red,
      green, blue);
}

std::string Gain(double gain) {
  return Gains(gain, gain, gain);
}

/// In levels of 0 to 255.
std::string Offsets(double red, double green, double blue) {
  if (red == 0 && green == 0 && blue == 0) return "";
  return Printed(
      "lutrgb=r='clip(val+(%.3f),0,255)':g='clip(val+(%.3f),0,255)':b='clip(val+(%.3f),0,255)'",
      red, green, blue);
}

std::string Gamma(double exponent) {
  if (exponent == 1) return "";
  return Printed("lutrgb=r='gammaval(%.4f)':g='gammaval(%.4f)':b='gammaval(%.4f)'", exponent,
                 exponent, exponent);
}

std::string All(const char* curve) {
  return Printed("lutrgb=r='clip(%s,0,255)':g='clip(%s,0,255)':b='clip(%s,0,255)'", curve, curve,
                 curve);
}

constexpr size_t kLevels = 17;  // sampled from a table
constexpr size_t kSteps = kLevels - 1;
using Levels = std::array<double, kLevels>;

/// The levels of a table, 0 to 1; none for a table of zeros, which was never written.
template <typename Element, size_t count>
std::optional<Levels> LevelsOf(const Element (&table)[count], size_t used, double full) {
  if (used < 2 || std::all_of(table, table + used, [](Element e) { return e == 0; })) return {};
  Levels levels;
  for (size_t i = 0; i < kLevels; ++i) {
    const size_t before = i * (used - 1) / kSteps, after = std::min(before + 1, used - 1);
    const double share = static_cast<double>(i * (used - 1) % kSteps) / kSteps;
    levels[i] = std::min(std::lerp(table[before], table[after], share) / full, 1.0);
  }
  return levels;
}

/// The points of a table for the `curves` filter; empty if the table has no levels.
template <typename Element, size_t count>
std::string Points(const Element (&table)[count], size_t used, double full) {
  const auto levels = LevelsOf(table, used, full);
  std::string points;
  for (size_t i = 0; levels && i < kLevels; ++i) {
    points +=
        Printed("%s%.4f/%.4f", i == 0 ? "" : " ", static_cast<double>(i) / kSteps, (*levels)[i]);
  }
  return points;
}

template <typename Element, size_t count>
std::string Curve(const Element (&table)[count], double full, size_t used = count) {
  const std::string points = Points(table, std::min(used, count), full);
  return points.empty() ? "" : "curves=all='" + points + "'";
}

std::string Curves(const K2V_VPQ_GAMMA_LUT_T& lut) {
  const std::string red = Points(lut.nRed, 256, 1023), green = Points(lut.nGreen, 256, 1023),
                    blue = Points(lut.nBlue, 256, 1023);
  if (red.empty() || green.empty() || blue.empty()) return "";
  return "curves=r='" + red + "':g='" + green + "':b='" + blue + "'";
}

/// Rows of output red, green and blue, in units of 1/4096. A matrix of zeros was never written.
std::string Matrix(const int16_t (&units)[9]) {
  if (std::all_of(units, units + 9, [](int16_t unit) { return unit == 0; })) return "";
  static constexpr const char* kCells[] = {"rr", "rg", "rb", "gr", "gg", "gb", "br", "bg", "bb"};
  std::string text = "colorchannelmixer=";
  for (size_t i = 0; i < std::size(kCells); ++i) {
    const double cell = std::clamp(units[i] / 4096.0, -2.0, 2.0);  // the range of the filter
    text += Printed("%s%s=%.4f", i == 0 ? "" : ":", kCells[i], cell);
  }
  return text;
}

// Colour tables: a picture with all colours passes through the filters once and is then the look-up
// table for the picture to be changed.

/// Packed pixels, because libavfilter 8 swaps the colours of planar ones here.
std::string ByTable(const std::string& table) {
  return "format=rgb24[plain];[plain]" + table + "haldclut,format=gbrp";
}

std::string Cube(const Vpq& vpq, K2V_VPQ_HDR_3D_LUT_T sim::VpqRecords::*table,
                 const Subject& subject) {
  const K2V_VPQ_HDR_3D_LUT_T& cube = vpq.records.*table;
  const auto isZero = [](const auto& part) {
    return std::ranges::all_of(part, [](uint16_t level) { return level == 0; });
  };
  if (isZero(cube.nRed) && isZero(cube.nGreen) && isZero(cube.nBlue)) return "";
  return ByTable(subject.add(CubeInput{table}));
}

/// Whether the levels lie on a straight line from the first to the last one.
bool AreOnLine(const Levels& levels) {
  for (size_t i = 0; i < kLevels; ++i) {
    const double share = static_cast<double>(i) / kSteps;
    if (std::abs(levels[i] - std::lerp(levels.front(), levels.back(), share)) > 0.002) return false;
  }
  return true;
}

/// Whether the levels change nothing.
bool AreStraight(const Levels& levels) {
  return AreOnLine(levels) && levels.front() < 0.002 && levels.back() > 0.998;
}

/// The gain of saturation as an expression for `geq`: the levels are the output saturations for
/// inputs of 0 to 1, and register 0 has the input. The filter parses its text once for each thread
/// that it could have, so a short text makes the panel faster.
std::string SaturationGain(const Levels& levels) {
  std::string curve = Printed("%.3f", levels.front());
  if (AreOnLine(levels)) {
    curve += Printed("+ld(0)*(%.3f)", levels.back() - levels.front());
  } else {
    for (size_t i = 0; i < kSteps; ++i)
      curve += Printed("+clip(ld(0)*%zu-%zu,0,1)*(%.3f)", kSteps, i, levels[i + 1] - levels[i]);
  }
  return "(" + curve + ")/max(ld(0),0.004)";
}

/// Changes the saturation of colours; `gain` applies to colour differences. Register 1 has the
/// eighth of the hue circle.
std::string BySaturation(const std::string& gain, const Subject& subject) {
  const auto difference = [&gain](const char* plane) {
    return Printed(
               "'st(0,min(1,hypot(cb(X,Y)-128,cr(X,Y)-128)/127.5));"
               "st(1,floor(mod(atan2(cr(X,Y)-128,cb(X,Y)-128)*4/PI+8,8)));"
               "clip(128+(%s(X,Y)-128)*",
               plane) +
           "(" + gain + "),0,255)'";
  };
  return ByTable(subject.add(
      GeneratedInput{std::string("haldclutsrc=level=4,format=gbrp,").append(kToYuv) +
                     ",geq=interpolation=nearest:lum='lum(X,Y)':cb=" + difference("cb") +
                     ":cr=" + difference("cr") + "," + kToRgb}));
}

std::string SaturationTable(const Vpq& vpq, const Subject& subject) {
  const auto levels = LevelsOf(vpq.records.VPQ_SetSaturationLUT.nLut, 33, 1023);
  if (!levels || AreStraight(*levels)) return "";
  return BySaturation(SaturationGain(*levels), subject);
}

/// One table of saturations per eighth of the hue circle; the first begins at blue, the third at
/// red.
std::string GamutTable(const Vpq& vpq, const Subject& subject) {
  std::string gain = "1";
  for (unsigned section = 0; section < sim::kGamutSections; ++section) {
    const auto levels = LevelsOf(vpq.gamutSections[section], sim::kGamutPoints, 4095);
    if (!levels || AreStraight(*levels)) continue;
    gain =
        Printed("if(eq(%u,ld(1)),%s,%s)", section, SaturationGain(*levels).c_str(), gain.c_str());
  }
  return gain == "1" ? "" : BySaturation(gain, subject);
}

/// Moves the colours of BT.709 towards those of a wider gamut: they look paler.
std::string Paler(double share) {
  if (share == 0) return "";
  const double own = 1 - 2 * share;
  return Printed("colorchannelmixer=%.3f:%.3f:%.3f:0:%.3f:%.3f:%.3f:0:%.3f:%.3f:%.3f", own, share,
                 share, share, own, share, share, share, own);
}

/// The first six regions are the primary and secondary colours; 128 means no change.
std::string Regions(const CHIP_COLOR_CONTROL_T& control) {
  static constexpr const char* kColors[] = {"r", "g", "b", "c", "m", "y"};
  std::string chain;
  for (size_t i = 0; i < std::size(kColors); ++i) {
    const CHIP_COLOR_CONTROL_ENTRY_T& region = control.stRegion[i];
    const bool isUnset = region.nHueGain == 0 && region.nSaturationGain == 0 &&
                         region.nBrightnessGain == 0 && region.nMasterGain == 0;
    const auto share = [](int gain) { return (gain - 128) / 128.0; };
    const double hue = share(region.nHueGain), saturation = share(region.nSaturationGain),
                 brightness = share(region.nBrightnessGain);
    if (isUnset || (hue == 0 && saturation == 0 && brightness == 0)) continue;
    chain = Chain({chain, Printed("huesaturation=colors=%s:strength=10:hue=%.2f:saturation=%.3f:"
                                  "intensity=%.3f",
                                  kColors[i], hue * 60, saturation, brightness)});
  }
  return chain;
}

/// Relative to the level at power-on, which shows the source's levels unchanged.
std::string Backlight(int level) {
  constexpr double kAtPowerOn = 80, kLeast = 0.2;
  return Gain(kLeast + (1 - kLeast) * level / kAtPowerOn);
}

std::string UserTemperature(const Vpq& vpq) {
  const auto gain = [&](sim::VpqValue key) { return Of(vpq, key) / kNeutralGain; };
  const auto offset = [&](sim::VpqValue key) { return (Of(vpq, key) - kNeutralGain) / 4; };
  return Chain({Gains(gain(kVPQ_SetColorTempRedGain), gain(kVPQ_SetColorTempGreenGain),
                      gain(kVPQ_SetColorTempBlueGain)),
                Offsets(offset(kVPQ_SetColorTempRedOffset), offset(kVPQ_SetColorTempGreenOffset),
                        offset(kVPQ_SetColorTempBlueOffset))});
}

/// Cool levels reduce red, warm ones blue. The factory offsets of the level apply in addition.
std::string TemperatureLevel(const Vpq& vpq) {
  constexpr int kNeutral = 2;
  constexpr double kStep = 0.07;
  const int level = Of(vpq, kVPQ_SetColorTempLevel), warmth = level - kNeutral;
  const auto& factory = vpq.temperatureOffsets[std::clamp(level, 0, 9)];
  const auto gain = [&](unsigned channel, int steps) {
    return (1 - kStep * std::max(0, steps)) * (kNeutralGain + factory[channel]) / kNeutralGain;
  };
  return Gains(gain(0, -warmth), gain(1, 0), gain(2, warmth));
}

/// A record of zeros was never written.
std::string WhiteGains(double red, double green, double blue) {
  if (red == 0 && green == 0 && blue == 0) return "";
  return Gains(red / kNeutralGain, green / kNeutralGain, blue / kNeutralGain);
}

std::string ColorGain(const Vpq& vpq) {
  const auto& gain = vpq.colorGain;
  if (!gain.areSet) return "";
  return Gains(gain.numbers[0] / kNeutralGain, gain.numbers[1] / kNeutralGain,
               gain.numbers[2] / kNeutralGain);
}

/// 0 as signalled by the source, 1 limited, 2 full (black is no longer black), 3 extended.
std::string DataRange(int range) {
  if (range == 2) return All("16+val*219/255");
  return range == 3 ? All("(val-16)*255/219") : "";
}

std::string OneColor(int filter) {
  return filter == 0 ? "" : Gains(filter == 1, filter == 2, filter == 3);
}

std::string PictureMode(int mode) {
  return Chain({Contrast(1 + 0.03 * mode), Saturation(1 + 0.05 * mode)});
}

/// Changes from picture to picture, unless the picture is frozen.
std::string Noise(const Vpq& vpq, bool isFrozen) {
  if (vpq.noiseLevel == 0) return "";
  return Printed("noise=alls=%d%s", vpq.noiseLevel * 100 / 255, isFrozen ? "" : ":allf=t");
}

/// Darkens everything outside the demonstration's window, which is in panel pixels.
std::string Highlight(const Vpq& vpq) {
  const K2V_VPQ_HIGHLIGHT_WINDOW_T& window = vpq.records.VPQ_SetHigh_Light_Window_forDemo;
  const int scale = sim::kPanel.w / K2V_CAPTURE_WIDTH;
  const int x = window.x / scale, y = window.y / scale;
  const int w = std::min(window.w / scale, K2V_CAPTURE_WIDTH - x),
            h = std::min(window.h / scale, K2V_CAPTURE_HEIGHT - y);
  if (window.bEnable == 0 || w <= 0 || h <= 0) return "";
  const std::string darker = Gain(1 - window.nDarken / 255.0);
  return Printed("split[lit][all];[lit]crop=%d:%d:%d:%d[lit];[all]%s[all];", w, h, x, y,
                 darker.empty() ? "null" : darker.c_str()) +
         Printed("[all][lit]overlay=%d:%d:format=gbrp", x, y);
}

#define RECORD(name) vpq.records.name
#define ROW(names, stage, samples, ...)                                                    \
  {                                                                                        \
    names, Stage::stage, Samples::samples,                                                 \
        []([[maybe_unused]] const Vpq& vpq,                                                \
           [[maybe_unused]] const Subject& subject) -> std::string { return __VA_ARGS__; } \
  }

constexpr Setting kSettings[] = {
    // Noise of the source, and what reduces it.
    ROW("(noise of the source)", kPicture, kYuv, Noise(vpq, subject.isFrozen)),
    ROW("VPQ_SetNR", kPicture, kYuv, Softer(0.4 * Of(vpq, kVPQ_SetNR))),
    ROW("VPQ_SetNoiseReduction", kPicture, kYuv,
        Softer(0.3 *
               (RECORD(VPQ_SetNoiseReduction).nSpatial + RECORD(VPQ_SetNoiseReduction).nTemporal))),
    ROW("VPQ_SetDeBlocking VPQ_SetMpegNoiseReduction", kPicture, kYuv,
        Softer(0.3 * Of(vpq, kVPQ_SetDeBlocking))),
    ROW("VPQ_SetDeRinging", kPicture, kYuv, Softer(0.25 * Of(vpq, kVPQ_SetDeRinging))),
    ROW("VPQ_SET_DeContour", kPicture, kYuv, Softer(0.35 * Of(vpq, kVPQ_SET_DeContour))),
    // Sharpness.
    ROW("VPQ_SetSharpnessExtend", kPicture, kYuv,
        Sharper(1.5 * AroundMiddle(Of(vpq, kVPQ_SetSharpnessExtend)))),
    ROW("VPQ_SetSharpness", kPicture, kYuv,
        Sharper((RECORD(VPQ_SetSharpness).nHorizontal + RECORD(VPQ_SetSharpness).nVertical +
                 RECORD(VPQ_SetSharpness).nDetail) /
                200.0)),
    ROW("VPQ_SetSRLevel", kPicture, kYuv, Sharper(0.5 * Of(vpq, kVPQ_SetSRLevel), 3)),
    ROW("VPQ_SetSuperResolution", kPicture, kYuv,
        Sharper(RECORD(VPQ_SetSuperResolution)
                    .bEnable*(0.3 * RECORD(VPQ_SetSuperResolution).nLevel +
                              RECORD(VPQ_SetSuperResolution).nStrength / 255.0),
                3)),
    ROW("VPQ_SetEdgeEnhance", kPicture, kYuv,
        Sharper(RECORD(VPQ_SetEdgeEnhance).bEnable * 0.4 * (1 + RECORD(VPQ_SetEdgeEnhance).nLevel),
                7)),
    ROW("VPQ_SetLocalConstrastParam", kPicture, kYuv,
        Sharper(RECORD(VPQ_SetLocalConstrastParam)
                        .bEnable* RECORD(VPQ_SetLocalConstrastParam)
                        .nStrength /
                    255.0,
                13)),
    ROW("VPQEX_SetClarityRealityCreation", kPicture, kYuv,
        Sharper(0.5 * Of(vpq, kVPQEX_SetClarityRealityCreation))),
    ROW("VPQEX_SetClarityResolution", kPicture, kYuv,
        Sharper(AroundMiddle(Of(vpq, kVPQEX_SetClarityResolution)), 3)),
    ROW("VPQEX_SetMastered4K", kPicture, kYuv, Sharper(0.6 * Of(vpq, kVPQEX_SetMastered4K), 3)),
    // Brightness, contrast and colour.
    ROW("VPQ_SetPicMode", kPicture, kYuv, PictureMode(Of(vpq, kVPQ_SetPicMode))),
    ROW("VPQ_SetDolbyHdrPicMode", kPicture, kYuv, PictureMode(Of(vpq, kVPQ_SetDolbyHdrPicMode))),
    ROW("VPQ_SetDolbyPictureMode", kPicture, kYuv, PictureMode(Of(vpq, kVPQ_SetDolbyPictureMode))),
    ROW("VPQ_SetContrast VPQ_SetPictureCtrl", kPicture, kYuv,
        Contrast(1 + AroundMiddle(Of(vpq, kVPQ_SetContrast)))),
    ROW("VPQ_SetDolbyContrast", kPicture, kYuv,
        Contrast(1 + AroundMiddle(Of(vpq, kVPQ_SetDolbyContrast)))),
    ROW("VPQ_SetFreshContrast", kPicture, kYuv,
        Contrast(1 + 0.1 * RECORD(VPQ_SetFreshContrast).nLevel)),
    ROW("VPQEX_SetDCCMode", kPicture, kYuv, Contrast(1 + 0.06 * Of(vpq, kVPQEX_SetDCCMode))),
    ROW("VPQ_SetSDR2HDR", kPicture, kYuv, Contrast(1 + 0.3 * Of(vpq, kVPQ_SetSDR2HDR))),
    ROW("VPQ_SetBrightness VPQ_SetPictureCtrl", kPicture, kYuv,
        Brighter(0.5 * AroundMiddle(Of(vpq, kVPQ_SetBrightness)))),
    ROW("VPQ_SetDolbyBrightness", kPicture, kYuv,
        Brighter(0.5 * AroundMiddle(Of(vpq, kVPQ_SetDolbyBrightness)))),
    ROW("VPQ_SetBlackLevel", kPicture, kYuv,
        Brighter(RECORD(VPQ_SetBlackLevel).eLevel == 1 ? 0.08 : 0)),
    ROW("VPQEX_SetBlackAdjust", kPicture, kYuv, Brighter(-0.03 * Of(vpq, kVPQEX_SetBlackAdjust))),
    ROW("VPQ_SetSaturation VPQ_SetPictureCtrl", kPicture, kYuv,
        Saturation(1 + AroundMiddle(Of(vpq, kVPQ_SetSaturation)))),
    ROW("VPQ_SetDolbyColor", kPicture, kYuv,
        Saturation(1 + AroundMiddle(Of(vpq, kVPQ_SetDolbyColor)))),
    ROW("VPQ_SetColorGainExtend", kPicture, kYuv,
        Saturation(1 + Of(vpq, kVPQ_SetColorGainExtend) / 100.0)),
    ROW("VPQEX_SetLiveColour", kPicture, kYuv, Saturation(1 + 0.1 * Of(vpq, kVPQEX_SetLiveColour))),
    ROW("VPQ_SetFreshColor", kPicture, kYuv,
        Saturation(1 + 0.15 * RECORD(VPQ_SetFreshColor).nLevel +
                   RECORD(VPQ_SetFreshColor).nSaturation / 255.0)),
    ROW("VPQ_SetHue VPQ_SetPictureCtrl", kPicture, kYuv,
        Hue(60 * AroundMiddle(Of(vpq, kVPQ_SetHue)))),
    ROW("VPQ_SetColorSpace_HSI", kPicture, kYuv,
        Chain({Hue(RECORD(VPQ_SetColorSpace_HSI).nHue),
               Saturation(1 + RECORD(VPQ_SetColorSpace_HSI).nSaturation / 50.0),
               Brighter(RECORD(VPQ_SetColorSpace_HSI).nIntensity / 100.0)})),
    ROW("VPQ_SetSaturationLUT", kPicture, kRgb, SaturationTable(vpq, subject)),
    ROW("VPQ_SetFleshTone", kPicture, kRgb,
        Gains(1, 1 - 0.02 * Of(vpq, kVPQ_SetFleshTone), 1 - 0.05 * Of(vpq, kVPQ_SetFleshTone))),
    ROW("VPQ_InitColorForAdvanced", kPicture, kRgb, Regions(RECORD(VPQ_InitColorForAdvanced))),
    ROW("VPQ_InitColorForExpert", kPicture, kRgb, Regions(RECORD(VPQ_InitColorForExpert))),
    ROW("VPQ_SetPreferredColor", kPicture, kRgb, Regions(RECORD(VPQ_SetPreferredColor))),
    ROW("VPQ_SetColorManagement", kPicture, kRgb, Regions(RECORD(VPQ_SetColorManagement))),
    // Ranges, gamuts and curves of the source.
    ROW("VPQEX_SetHDMIDataRange", kPicture, kRgb, DataRange(Of(vpq, kVPQEX_SetHDMIDataRange))),
    ROW("VPQEX_SetGamutColorSpace", kPicture, kRgb,
        Paler(0.03 * Of(vpq, kVPQEX_SetGamutColorSpace))),
    ROW("VPQ_SetGamut", kPicture, kRgb, Paler(0.03 * RECORD(VPQ_SetGamut).eGamut)),
    ROW("VPQ_SetGamutLUT", kPicture, kRgb, GamutTable(vpq, subject)),
    ROW("VPQ_SetColorGamut", kPicture, kRgb, Matrix(RECORD(VPQ_SetColorGamut).nMatrix)),
    ROW("VPQ_SetHDRGamutMatrix", kPicture, kRgb, Matrix(RECORD(VPQ_SetHDRGamutMatrix).nMatrix)),
    ROW("VPQ_Set3DColorCorrection", kPicture, kRgb,
        RECORD(VPQ_Set3DColorCorrection).bEnable == 0
            ? ""
            : Offsets(2 * RECORD(VPQ_Set3DColorCorrection).nRed,
                      2 * RECORD(VPQ_Set3DColorCorrection).nGreen,
                      2 * RECORD(VPQ_Set3DColorCorrection).nBlue)),
    ROW("VPQ_SetHdr10Enable", kPicture, kRgb, Gamma(1 - 0.15 * Of(vpq, kVPQ_SetHdr10Enable))),
    ROW("VPQ_SetDOLBYHDREnable", kPicture, kRgb, Gamma(1 - 0.1 * Of(vpq, kVPQ_SetDOLBYHDREnable))),
    ROW("VPQEX_SetHDRForceMode", kPicture, kRgb, Gamma(1 - 0.12 * Of(vpq, kVPQEX_SetHDRForceMode))),
    ROW("VPQ_SetBRIGHTNESS_LUT_EOTF", kPicture, kRgb,
        Curve(RECORD(VPQ_SetBRIGHTNESS_LUT_EOTF).nLut, 65535)),
    ROW("VPQ_SetHDREotf", kPicture, kRgb, Curve(RECORD(VPQ_SetHDREotf).nLut, 65535)),
    ROW("VPQ_SetHDROetf", kPicture, kRgb, Curve(RECORD(VPQ_SetHDROetf).nLut, 65535)),
    ROW("VPQEX_SetCurve4HDR", kPicture, kRgb, Curve(RECORD(VPQEX_SetCurve4HDR).nLut, 65535)),
    ROW("VPQ_SetHDR3DLUT", kPicture, kRgb, Cube(vpq, &sim::VpqRecords::VPQ_SetHDR3DLUT, subject)),
    ROW("VPQ_HDR_SetLUT", kPicture, kRgb, Cube(vpq, &sim::VpqRecords::VPQ_HDR_SetLUT, subject)),
    ROW("VPQ_SetFreshContrastLUT", kPicture, kRgb,
        Curve(RECORD(VPQ_SetFreshContrastLUT).nLut, 1023)),
    ROW("VPQEX_SetLCTable", kPicture, kRgb, Curve(RECORD(VPQEX_SetLCTable).nCurve, 4095)),
    ROW("VPQEX_SetOutputGammaSCurve", kPicture, kRgb,
        Of(vpq, kVPQEX_SetOutputGammaSCurve) == 0 ? ""
                                                  : "curves=all='0/0 0.25/0.15 0.75/0.85 1/1'"),
    ROW("VPQEX_SetSGamma", kPicture, kRgb, Gamma(1 + 0.1 * Of(vpq, kVPQEX_SetSGamma))),
    ROW("VPQ_SetInversion", kPicture, kRgb, Of(vpq, kVPQ_SetInversion) == 0 ? "" : "negate"),
    ROW("VPQ_SetColorFilter", kPicture, kRgb, OneColor(Of(vpq, kVPQ_SetColorFilter))),
    // The panel: gamma, white balance, backlight.
    ROW("VPQ_DeGammaLUT", kPanel, kRgb, Curves(RECORD(VPQ_DeGammaLUT))),
    ROW("VPQ_SetGammaLUT", kPanel, kRgb, Curves(RECORD(VPQ_SetGammaLUT))),
    ROW("VPQEX_SetGammaCurve", kPanel, kRgb,
        Curve(RECORD(VPQEX_SetGammaCurve).nCurve, 4095, RECORD(VPQEX_SetGammaCurve).nTableSize)),
    ROW("VPQ_SetMagicGamma_QN771", kPanel, kRgb,
        Curve(RECORD(VPQ_SetMagicGamma_QN771).nCurve, 4095,
              RECORD(VPQ_SetMagicGamma_QN771).nTableSize)),
    ROW("VPQ_SetGamma", kPanel, kRgb, Gamma(1 + 0.1 * (Of(vpq, kVPQ_SetGamma) - 4))),
    ROW("VPQ_SetGammaLevel", kPanel, kRgb, Gamma(1 + 0.15 * Of(vpq, kVPQ_SetGammaLevel))),
    ROW("VPQ_InvGammaEn", kPanel, kRgb, Of(vpq, kVPQ_InvGammaEn) == 0 ? "" : Gamma(1 / 2.2)),
    ROW("VPQ_SetColorTempLevel VPQEX_SetMagicColorTempOffset", kPanel, kRgb, TemperatureLevel(vpq)),
    ROW("VPQ_SetColorTempRedGain … VPQ_SetColorTempBlueOffset VPQ_SetColorTemp "
        "VPQ_SetColorTemperature VPQ_SetColorTempExtend",
        kPanel, kRgb, UserTemperature(vpq)),
    ROW("VPQEX_notifyPlatformColorTemp", kPanel, kRgb,
        WhiteGains(RECORD(VPQEX_notifyPlatformColorTemp).nRedGain,
                   RECORD(VPQEX_notifyPlatformColorTemp).nGreenGain,
                   RECORD(VPQEX_notifyPlatformColorTemp).nBlueGain)),
    ROW("VPQ_SetColorGain", kPanel, kRgb, ColorGain(vpq)),
    ROW("VPQ_SetClearWhiteGainCtrl", kPanel, kRgb,
        WhiteGains(RECORD(VPQ_SetClearWhiteGainCtrl).nRedGain,
                   RECORD(VPQ_SetClearWhiteGainCtrl).nGreenGain,
                   RECORD(VPQ_SetClearWhiteGainCtrl).nBlueGain)),
    ROW("VPQ_SetClearWhite", kPanel, kRgb,
        Gains(1 - 0.05 * RECORD(VPQ_SetClearWhite).nLevel,
              1 - 0.02 * RECORD(VPQ_SetClearWhite).nLevel, 1)),
    ROW("VPQ_SetBackLight VPQ_SetPanelBL", kPanel, kRgb, Backlight(Of(vpq, kVPQ_SetBackLight))),
    ROW("VPQ_SetDreampanelBackLight", kPanel, kRgb,
        Backlight(Of(vpq, kVPQ_SetDreampanelBackLight))),
    ROW("VPQ_SetDolbyBackLight", kPanel, kRgb, Backlight(Of(vpq, kVPQ_SetDolbyBackLight))),
    ROW("VPQEX_GDBC_Set_UI_DCR_BackLight", kPanel, kRgb,
        Backlight(Of(vpq, kVPQEX_GDBC_Set_UI_DCR_BackLight))),
    ROW("VPQ_SetHigh_Light_Window_forDemo", kPanel, kRgb, Highlight(vpq)),
    ROW("VPQ_MEMC_SetDemoBar", kPanel, kRgb,
        !vpq.motionDemo.areSet || vpq.motionDemo.numbers[0] == 0
            ? ""
            : Printed("drawbox=x=%d:y=0:w=4:h=ih:color=white:t=fill",
                      vpq.motionDemo.numbers[1] * K2V_CAPTURE_WIDTH / sim::kPanel.w)),
};

#undef ROW
#undef RECORD

sim::Color Grey10Bit(int level) {
  const auto grey = static_cast<uint8_t>(level * 255 / 1023);
  return {grey, grey, grey};
}

}  // namespace

std::span<const Setting> Settings() {
  return kSettings;
}

std::string QualityFilters(const sim::Vpq& vpq, Stage stage, const Subject& subject) {
  if (stage == Stage::kPicture && Of(vpq, kVPQEX_SetPQBypassLv) != 0) return "";
  std::string chain;
  Samples samples = Samples::kRgb;
  const auto change = [&](Samples wanted) {
    if (wanted != samples) chain = Chain({chain, wanted == Samples::kYuv ? kToYuv : kToRgb});
    samples = wanted;
  };
  for (const Setting& setting : kSettings) {
    const std::string filters = setting.stage == stage ? setting.filters(vpq, subject) : "";
    if (filters.empty()) continue;
    change(setting.samples);
    chain = Chain({chain, filters});
  }
  change(Samples::kRgb);
  return chain;
}

Demo DemoOf(const sim::Vpq& vpq) {
  const K2V_VPQ_DEMO_T& demo = vpq.records.VPQ_SetDemo;
  if (demo.bEnable != 0) return {true, demo.eSide == 1};
  return {Of(vpq, kVPQ_SetSplitDemo) != 0 || Of(vpq, kVPQ_HDR_SetDemoMode) != 0, false};
}

std::optional<sim::Color> PatternColor(const sim::Vpq& vpq) {
  if (Of(vpq, kVPQ_SetBlackPatternOutput) != 0) return sim::Color{0, 0, 0};
  if (Of(vpq, kVPQ_SetWhitePatternOutput) != 0) return sim::Color{255, 255, 255};
  const auto& white = vpq.whitePattern;
  if (white.areSet && white.numbers[0] != 0) return Grey10Bit(white.numbers[1]);
  const auto& ire = vpq.irePattern;
  if (!ire.areSet || ire.numbers[0] == 0) return std::nullopt;
  return sim::Color{Grey10Bit(ire.numbers[1]).red, Grey10Bit(ire.numbers[2]).red,
                    Grey10Bit(ire.numbers[3]).red};
}

}  // namespace panel
