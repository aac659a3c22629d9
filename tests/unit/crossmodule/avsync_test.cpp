// A/V synchronisation: which samples belong together, the difference, the limits of the verdict.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "AvSync.h"
#include "DumpGenerator.h"
#include "Scripted.h"

namespace {

constexpr char kFlash[] = "1e82234e";
constexpr uint32_t kSecond = 90000;

/// Audio rows of 1920 ticks, starting at `start`, silent except for beeps at the given rows.
AV_Sync_Info Sound(std::size_t rows, const std::vector<std::size_t>& beeps, uint32_t start = 0) {
  AV_Sync_Info audio{MODULE_AUDIO, {}};
  for (std::size_t i = 0; i < rows; ++i)
    audio.fields.emplace_back(static_cast<int32_t>(i), 0, "1000000",
                              start + static_cast<uint32_t>(i) * 1920, 0U);
  for (const std::size_t beep : beeps) audio.fields[beep].firstText = "1000001";
  return audio;
}

TEST(AvSync, FindsTheFirstBeepNearATime) {
  const auto first = [](const AV_Sync_Info& audio, uint32_t time) {
    return AVsync_Find_Audio_Frame_By_Time(time, 45000, &audio);
  };
  const uint32_t at200 = 200 * 1920;
  EXPECT_EQ(first(Sound(400, {200, 201}), at200), 200U);
  EXPECT_EQ(first(Sound(400, {200}), at200 + 45000), 200U);
  EXPECT_EQ(first(Sound(400, {200}), at200 + 45001), 0U);
  EXPECT_EQ(first(Sound(400, {200}), at200 - 44999), 200U);
  EXPECT_EQ(first(Sound(400, {200}), at200 - 45000), 0U);
  EXPECT_EQ(first(Sound(400, {}), at200), 0U);
  EXPECT_EQ(first(Sound(400, {99}), 100 * 1920), 0U) << "the first 100 rows are ignored";
  EXPECT_EQ(first(Sound(400, {100}), 100 * 1920), 100U);
  EXPECT_EQ(first(Sound(100, {99}), 99 * 1920), 0U);
  EXPECT_EQ(first(Sound(101, {100}, 0xffff0000U), 10), 0U);
  EXPECT_EQ(first(Sound(0, {}), 0), 0U);
  // Times near zero: the search range extends below it.
  AV_Sync_Info early = Sound(101, {100});
  early.fields[100].firstValue = 30000;
  EXPECT_EQ(first(early, 100), 100U);
}

struct Clip {
  AV_Sync_Info vo{MODULE_VO, {}};
  AV_Sync_Info scaler{MODULE_SCALER, {}};
  AV_Sync_Info audio = Sound(400, {200});

  explicit Clip(int soundBehindTicks) {
    const uint32_t clock = 3 * kSecond;
    for (int32_t frame = 0; frame < 20; ++frame) {
      vo.fields.emplace_back(frame, clock, "0", "0", 200U * 1920);
      scaler.fields.emplace_back(frame, clock, "0", "0", 0U);
    }
    for (AV_Sync_Field& sample : audio.fields) {
      sample.time90k = clock + 900 + static_cast<uint32_t>(soundBehindTicks);
      sample.secondValue = 900;
    }
  }

  std::string Analyse(bool passes) const {
    std::ostringstream out;
    out << std::left << std::hex;
    EXPECT_EQ(Print_AVsync_Anayze_Result(&vo, &scaler, &audio, out), passes) << out.str();
    return out.str();
  }
};

std::string Report(const std::string& events, const std::string& failure = "") {
  return "\033[1;33m[CrossModule][Print_AVsync_Anayze_Result] \033[0;37mList the AV Sync Result:\n"
         "\033[1;35m[AV Sync Result]\033[m\n"
         "beep  Frame           TimeDiff   Result            Posision\n" +
         events +
         " *AV sync tolerance:(+20ms) ~ (-30ms)\n"
         "(TimeDiff = videoTime - audioTime,    +:audio ahead  -:audio delay)\n" +
         (failure.empty() ? "" : "\033[0;32;31mFAIL: " + failure + "\033[m\n");
}

std::string Event(const std::string& difference, const std::string& verdict, int scaler = 12) {
  const std::string colour = verdict == "PASS" ? "\033[1;32m" : "\033[0;32;31m";
  char positions[100];
  std::snprintf(positions, sizeof positions,
                "\033[m       [VO]         12       [Scaler]%7d       [Audio]     200\n", scaler);
  return "\033[0;35m   1\033[m| frame      12  " + difference + colour + verdict +
         std::string(18 - verdict.size(), ' ') + positions;
}

TEST(AvSync, JudgesDifferencesAtTheLimits) {
  const struct {
    int ticks;
    const char* difference;
    const char* verdict;
  } kCases[] = {
      {0, " 0ms        ", "PASS"},
      {89, " 0ms        ", "PASS"},
      {-89, " 0ms        ", "PASS"},
      {90, "+1ms        ", "PASS"},
      {-90, " -1ms       ", "PASS"},
      {20 * 90 + 89, "+20ms       ", "PASS"},
      {21 * 90, "+21ms       ", "FAIL(+1ms)   "},
      {-30 * 90 - 89, " -30ms      ", "PASS"},
      {-31 * 90, " -31ms      ", "FAIL: (-1ms)  "},
      {500 * 90, "+500ms      ", "FAIL(+480ms)   "},
  };
  for (const auto& test : kCases) {
    Clip clip(test.ticks);
    clip.vo.fields[12].secondText = kFlash;
    const bool passes = std::string(test.verdict) == "PASS";
    EXPECT_EQ(clip.Analyse(passes), Report(Event(test.difference, test.verdict),
                                           passes ? "" : "1 of 1 flashes outside the tolerance"));
  }
}

TEST(AvSync, AddsTheOffsetOfTheContent) {
  Clip clip(25 * 90);
  clip.vo.fields[12].secondText = kFlash;
  Set_AVsync_Offset(-10);
  EXPECT_EQ(clip.Analyse(true), Report(Event("+15ms       ", "PASS")));
  Set_AVsync_Offset(0);
}

TEST(AvSync, UsesThePanelFlashUpToTenFramesEarlier) {
  const struct {
    std::vector<std::size_t> flashes;
    int chosen;
  } kCases[] = {{{2}, 2}, {{1}, 12}, {{4, 11}, 4}, {{11}, 11}, {{13}, 12}};
  for (const char* panelFlash : {"1b184f64", "c5b6c53"}) {
    for (const auto& test : kCases) {
      Clip clip(0);
      clip.vo.fields[12].secondText = kFlash;
      for (const std::size_t flash : test.flashes) clip.scaler.fields[flash].firstText = panelFlash;
      EXPECT_EQ(clip.Analyse(true), Report(Event(" 0ms        ", "PASS", test.chosen)));
    }
  }
}

TEST(AvSync, FailsIfThereIsNothingToJudge) {
  const std::string skipped = "\033[0;35m   1\033[m| frame      12  skipped: no ";
  const std::string allSkipped = "no flash to judge, all were skipped";
  EXPECT_EQ(Clip(0).Analyse(false), Report("", "no flash to judge"));

  Clip noPanel(0);
  noPanel.vo.fields[12].secondText = kFlash;
  noPanel.scaler.fields.resize(12, noPanel.scaler.fields[0]);
  EXPECT_EQ(noPanel.Analyse(false), Report(skipped + "Scaler sample of this frame\n", allSkipped));

  Clip noSound(0);
  noSound.vo.fields[12].secondText = kFlash;
  noSound.audio.fields.clear();
  EXPECT_EQ(noSound.Analyse(false), Report(skipped + "Audio sample\n", allSkipped));

  Clip oneSkipped(0);
  oneSkipped.vo.fields[2].secondText = oneSkipped.vo.fields[12].secondText = kFlash;
  oneSkipped.scaler.fields.erase(oneSkipped.scaler.fields.begin() + 12);
  EXPECT_NE(oneSkipped.Analyse(false).find("FAIL: 1 of 2 flashes skipped"), std::string::npos);
}

// Sample 0 stands for a missing beep; its difference is that of any silent clip: 0 ms.
TEST(AvSync, FailsIfAFlashHasNoBeep) {
  const auto clipOf = [](const std::vector<uint32_t>& flashes, const AV_Sync_Info& sound) {
    Clip clip(0);
    const AV_Sync_Field last = clip.audio.fields.back();
    clip.audio = sound;
    for (AV_Sync_Field& sample : clip.audio.fields) {
      sample.time90k = last.time90k;
      sample.secondValue = last.secondValue;
    }
    for (std::size_t i = 0; i < flashes.size(); ++i) {
      clip.vo.fields[10 + i].secondText = kFlash;
      clip.vo.fields[10 + i].firstValue = flashes[i];
    }
    return clip;
  };
  const uint32_t at120 = 120 * 1920;
  const uint32_t at200 = 200 * 1920;
  const struct {
    const char* what;
    Clip clip;
    const char* failure;
  } kCases[] = {
      {"silence", clipOf({at200}, Sound(400, {})), "no beep at any flash"},
      {"one beep of two", clipOf({at120, at200}, Sound(400, {120})),
       "no beep at flash 2 (frame 11)"},
      {"the sound ends before the flash", clipOf({at120, at200}, Sound(150, {120})),
       "no beep at flash 2 (frame 11)"},
      {"too little sound", clipOf({at120}, Sound(100, {50})), "no beep at any flash"},
      {"a flash before the search begins", clipOf({0, at200}, Sound(400, {200})), ""},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.what);
    std::ostringstream out;
    const AvSyncVerdict verdict =
        AnalyseAvSync(test.clip.vo, test.clip.scaler, test.clip.audio, out);
    EXPECT_EQ(verdict.reason, test.failure) << out.str();
    EXPECT_EQ(verdict.passed, verdict.reason.empty());
  }
}

std::string WriteDump(player::Stage stage, int64_t audioOffsetMs) {
  const player::Clip clip = {.frameRateMilliHz = 25000, .flashesAndBeeps = true};
  std::string path = testing::TempDir() + std::string(player::FormatOf(stage).fileName);
  std::ofstream file(path);
  player::WriteDump(file, clip, {.clock90k = 7777777, .audioOffsetMs = audioOffsetMs}, stage);
  return path;
}

TEST(AvSync, JudgesDumpedClips) {
  const struct {
    int64_t offsetMs;
    bool passes;
    const char* shown;
  } kCases[] = {{0, true, "  0ms"},
                {20, true, " +20ms"},
                {21, false, "FAIL(+1ms)"},
                {-30, true, " -30ms"},
                {-31, false, "FAIL: (-1ms)"}};
  const std::string vo = WriteDump(player::Stage::kVo, 0);
  const std::string scaler = WriteDump(player::Stage::kScaler, 0);
  for (const auto& test : kCases) {
    const std::string audio = WriteDump(player::Stage::kAudio, test.offsetMs);
    const auto run = scripted::Play("", [&] {
      const AV_Sync_Info samples[] = {Fetch_AVsync_Info_VO(vo), Fetch_AVsync_Info_Scaler(scaler),
                                      Fetch_AVsync_Info_Audio(audio)};
      return Print_AVsync_Anayze_Result(&samples[0], &samples[1], &samples[2], std::cout) ? 1 : 0;
    });
    EXPECT_EQ(run.result, test.passes ? 1 : 0) << run.output;
    EXPECT_NE(run.output.find(test.shown), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("  10\033[m| frame     550"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("  11\033[m|"), std::string::npos) << run.output;
    std::remove(audio.c_str());
  }
  std::remove(vo.c_str());
  std::remove(scaler.c_str());
}

TEST(AvSync, ReadsSamplesUpToTheFirstMalformedRow) {
  const std::string path = testing::TempDir() + "avsync_rows_";
  const auto fetch = [&](const std::string& rows,
                         AV_Sync_Info (*read)(const std::string&, std::ostream&)) {
    std::ofstream(path) << "title\n" << rows;
    AV_Sync_Info info{MODULE_AUDIO, {}};
    scripted::Play("", [&] { return info = read(path, std::cout), 0; });
    std::string text;
    for (const AV_Sync_Field& field : info.fields) {
      text += std::to_string(field.frameNumber) + " " + std::to_string(field.time90k) + " '" +
              field.firstText + "' '" + field.secondText + "' " + std::to_string(field.firstValue) +
              " " + std::to_string(field.secondValue) + "\n";
    }
    std::remove(path.c_str());
    return text;
  };
  EXPECT_EQ(
      fetch("0,5,48000,2,7,26999,1\n1,6,48000,2,-8,27000,2\n2,7,48000,2,9\n3,1,1,1,1,90000,1\n",
            Fetch_AVsync_Info_Audio),
      "1 6 '-8' '' 27000 2\n");
  EXPECT_EQ(fetch("4,0,ff,1,1,0,0,0,1A,0,AB,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,1E82234e\n5,0,junk\n",
                  Fetch_AVsync_Info_VO),
            "4 255 'ab' '1e82234e' 26 0\n");
  EXPECT_EQ(fetch("6,fffffff0,1,1,c,0,0,0,0,0,0,0,0,0,0,0,0,0,0c5b6c53,0,60000,2\n",
                  Fetch_AVsync_Info_Scaler),
            "6 4294967280 'c5b6c53' 'c' 0 0\n");
  const auto missing = scripted::Play("", [] {
    return static_cast<int>(Fetch_AVsync_Info_VO("/nowhere/dump_vo.txt").fields.size());
  });
  EXPECT_EQ(missing.result, 0);
  EXPECT_NE(missing.output.find("ERROR: can not open /nowhere/dump_vo.txt\n"), std::string::npos);
}

}  // namespace
