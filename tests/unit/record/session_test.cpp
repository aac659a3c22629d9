// The recorder, the tool and the replay as programs, with a stub HAL.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>

#include "Emulated.h"

namespace {

namespace fs = std::filesystem;

struct Result {
  int status;
  std::string output;
};

Result Shell(const std::string& command) {
  Result result;
  FILE* const pipe = popen(("(" + command + ") 2>&1").c_str(), "r");
  char text[4096];
  for (size_t got = 0; (got = fread(text, 1, sizeof text, pipe)) != 0;)
    result.output.append(text, got);
  const int status = pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

// The emulator is a program of this machine and must not load the library.
std::pair<std::string, std::string> Preload(const std::string& library) {
  if (test::IsEmulated()) return {"QEMU_SET_ENV", "LD_PRELOAD=" + library};
  return {"LD_PRELOAD", library};
}

/// The beginning of a shell command that runs the session with this library preloaded.
std::string SessionWith(const std::string& library) {
  const auto [variable, value] = Preload(library);
  return variable + "=" + value + " " CVN_HAL_SESSION " ";
}

std::string Name(const std::string& name) {
  return testing::TempDir() + name;
}

std::string Recording(const std::string& name, const std::string& session,
                      const std::string& variables = "") {
  const Result result =
      Shell(variables + " CVN_RECORD=" + Name(name) + " " + SessionWith(CVN_RECORDER) + session);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output, "");
  return Name(name);
}

Result Trace(const std::string& words) {
  return Shell(CVN_TRACE " " + words);
}

Result Replay(const std::string& recording, const std::string& session,
              const std::string& variables = "") {
  return Shell(variables + " CVN_REPLAY=" + recording + " " + SessionWith(CVN_REPLAY_HAL) +
               session);
}

std::string OneStream(const std::string& recording) {
  for (const auto& entry : fs::directory_iterator(recording)) {
    if (entry.path().filename() != "metadata") return entry.path();
  }
  ADD_FAILURE() << recording << " has no stream";
  return {};
}

size_t Lines(const std::string& text) {
  return static_cast<size_t>(std::ranges::count(text, '\n'));
}

TEST(Recorder, WritesCallsThatAllReadersOfTheFormatShow) {
  const std::string recording = Recording("r", "");
  const Result print = Trace("print " + recording);
  EXPECT_EQ(print.status, 0) << print.output;
  EXPECT_EQ(Lines(print.output), 30U + 12U);
  EXPECT_EQ(print.output.substr(0, print.output.find("K2V_RHAL_VPQ_SetP")),
            "# test 0 begins: Session, five calls\n"
            "K2V_RHAL_VSC_SetWinBlank(0, 1, 0) = 0\n"
            "K2V_RHAL_VSC_SetInputRegion(0, {x=1, y=2, w=3, h=1}) = 0\n"
            "K2V_RHAL_VPQ_SetHue(2) = 0\n");
  const Result others = Shell("babeltrace2 " + recording);
  EXPECT_EQ(others.status, 0) << others.output;
  EXPECT_EQ(Lines(others.output), 60U + 12U);
  EXPECT_NE(others.output.find("K2V_RHAL_VSC_SetInputRegion_entry"), std::string::npos);
  EXPECT_NE(others.output.find("region = { x = 1, y = 2, w = 3, h = 6 }"), std::string::npos);
}

// A call without arguments needs only an event's header, for which a full packet has no room.
TEST(Recorder, WritesAllCallsAcrossPackets) {
  const int calls = 20'000;
  const Result print = Trace("print " + Recording("r", "thread " + std::to_string(calls)) +
                             " | grep -c '^K2V_RHAL_VSC_DM_Open() = 0$'");
  EXPECT_EQ(print.output, std::to_string(calls) + "\n");
}

TEST(Recorder, RejectsUnusableDirectories) {
  const std::string recording = Recording("r", "");
  const std::pair<std::string, std::string> rows[] = {
      {recording, "not empty; use a new directory for a recording"},
      {Name("none/r"), "No such file or directory"},
      {CVN_HAL_SESSION, "Not a directory"},
  };
  for (const auto& [directory, reason] : rows) {
    const Result result = Shell("CVN_RECORD=" + directory + " " + SessionWith(CVN_RECORDER));
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "cvnrecord: " + directory + ": " + reason + "\n");
  }
}

// A file size limit simulates a full disk.
TEST(Recorder, StopsWithOneMessageIfTheDiskIsFull) {
  const Result result =
      Shell("cd " + testing::TempDir() + "; trap '' XFSZ; ulimit -f 400; CVN_RECORD=r " +
            SessionWith(CVN_RECORDER) + "endless 1 | head -c 400000 | wc -c");
  const size_t line = result.output.find("; the recording ends here\n");
  EXPECT_NE(line, std::string::npos) << result.output;
  EXPECT_EQ(result.output.find("; the recording ends here\n", line + 1), std::string::npos);
  EXPECT_NE(result.output.find("400000"), std::string::npos) << result.output;
  EXPECT_GT(Lines(Trace("print " + Name("r")).output), 1000U);
}

TEST(Recorder, LosesNothingIfTheProcessIsKilled) {
  std::mt19937 random(19);
  for (int round = 0; round < 50; ++round) {
    const std::string recording = Name("r" + std::to_string(round));
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t child = fork();
    if (child == 0) {
      setenv("CVN_RECORD", recording.c_str(), 1);
      const auto [variable, value] = Preload(CVN_RECORDER);
      setenv(variable.c_str(), value.c_str(), 1);
      execl(CVN_HAL_SESSION, CVN_HAL_SESSION, "endless", std::to_string(pipe[1]).c_str(), nullptr);
      _exit(127);
    }
    close(pipe[1]);
    const auto last = static_cast<unsigned>(1 + random() % 3000);
    uint32_t number = 0, begun = 0;
    for (unsigned i = 0; i <= last; ++i) {
      ASSERT_EQ(read(pipe[0], &number, sizeof number), static_cast<ssize_t>(sizeof number));
    }
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    begun = number;
    while (read(pipe[0], &number, sizeof number) == sizeof number) begun = number;
    close(pipe[0]);
    const Result print = Trace("print " + recording);
    EXPECT_EQ(print.status, 0) << print.output;
    // The call that was announced last may not have started.
    const size_t calls = Lines(print.output);
    EXPECT_GE(calls, begun) << "round " << round;
    EXPECT_LE(calls, begun + 1) << "round " << round;
    fs::remove_all(recording);
  }
}

TEST(Recording, IsReadUpToTheTruncation) {
  const std::string recording = Recording("r", "");
  const std::string stream = OneStream(recording);
  std::ifstream file(stream, std::ios::binary);
  const std::string whole((std::istreambuf_iterator<char>(file)), {});
  const std::string all = Trace("print " + recording).output;
  size_t last = 0;
  for (size_t size = 1; size < whole.size(); size += size < 200 ? 1 : 37) {
    std::ofstream(stream, std::ios::binary | std::ios::trunc) << whole.substr(0, size);
    const Result print = Trace("print " + recording + " 2>/dev/null");
    EXPECT_GE(Lines(print.output) + 1, last) << size;
    last = Lines(print.output);
    const size_t good = print.output.find(" did not return");
    const size_t shown =
        good == std::string::npos ? print.output.size() : print.output.rfind('\n', good);
    EXPECT_EQ(print.output.substr(0, shown == std::string::npos ? 0 : shown),
              all.substr(0, shown == std::string::npos ? 0 : shown))
        << size;
    const Result said = Trace("print " + recording + " 2>&1 >/dev/null");
    EXPECT_NE(said.output.find("cut at"), std::string::npos) << size << ": " << said.output;
    EXPECT_EQ(said.status, 1) << size;
  }
  EXPECT_GE(last, 41U) << "all but the last mark precede the last bytes";
}

TEST(Recording, OtherFilesAreRejected) {
  fs::create_directory(Name("d"));
  EXPECT_EQ(Trace("print " + Name("none")).status, 2);
  EXPECT_EQ(Trace("print " + Name("d")).status, 2);
  std::ofstream(Name("d") + "/metadata") << "rubbish";
  const Result print = Trace("stats " + Name("d"));
  EXPECT_EQ(print.status, 2);
  EXPECT_EQ(print.output,
            "cvntrace: no recording: " + Name("d") + "/metadata is not a recording\n");
  const Result replay = Replay(Name("d"), "");
  EXPECT_EQ(replay.status, 2);
  const std::string recording = Recording("r", "");
  std::ofstream(OneStream(recording), std::ios::app) << std::string(100, 'x');
  EXPECT_NE(Trace("print " + recording).output.find(": no packet at byte"), std::string::npos);
}

TEST(Recording, WithOtherHeadersIsPrintedButNotReplayed) {
  const std::string recording = Recording("r", "");
  const std::string change =
      "sed -i 's/call K2V_RHAL_VSC_DM_Open|val i32/call K2V_RHAL_VSC_DM_Open|val i64/' ";
  ASSERT_EQ(Shell(change + recording + "/metadata").status, 0);
  EXPECT_EQ(Lines(Trace("print " + recording).output), 42U);
  const Result replay = Replay(recording, "");
  EXPECT_EQ(replay.status, 2);
  EXPECT_EQ(replay.output,
            "cvnreplay: recorded with other headers of the HAL; these differ: "
            "K2V_RHAL_VSC_DM_Open\n");
}

struct Planted {
  const char* fault;
  int call;

  // Becomes part of the test's name.
  friend void PrintTo(const Planted& planted, std::ostream* out) {
    *out << planted.fault << ' ' << planted.call;
  }
};

class Differences : public testing::TestWithParam<Planted> {
 protected:
  static std::string FunctionOf(int call) {
    constexpr const char* kFunctions[] = {"K2V_RHAL_VSC_SetWinBlank", "K2V_RHAL_VSC_SetInputRegion",
                                          "K2V_RHAL_VPQ_SetHue", "K2V_RHAL_VPQ_SetPictureCtrl",
                                          "K2V_RHAL_VFE_HDMI_WriteEDID"};
    return kFunctions[call % 5];
  }
};

TEST_P(Differences, AreReportedByDiffAndReplay) {
  const auto& [fault, call] = GetParam();
  const std::string kind = fault;
  const std::string words = kind + ' ' + std::to_string(call);
  const std::string fails = kind == "result" ? "STUB_FAIL=" + std::to_string(call) : "";
  const std::string one = Recording("one", "");
  const std::string two =
      Recording("two", kind == "result" ? "ignore" + words.substr(6) : words, fails);
  const std::string function = kind == "surplus" ? "K2V_RHAL_VSC_DM_Open" : FunctionOf(call);

  const Result diff = Trace("diff --slower 1e9 " + one + ' ' + two);
  EXPECT_EQ(diff.status, 1);
  EXPECT_EQ(Lines(diff.output), 2U) << diff.output;
  EXPECT_NE(diff.output.find(function), std::string::npos) << diff.output;
  const std::pair<std::string, std::string> said[] = {{"argument", ", argument "},
                                                      {"order", ": other order: "},
                                                      {"missing", ": missing: "},
                                                      {"surplus", ": new: "},
                                                      {"result", ": result 0, now -1"}};
  for (const auto& [name, text] : said) {
    EXPECT_EQ(diff.output.find(text) != std::string::npos, name == kind) << diff.output;
  }

  // A replay returns the recorded results. If the recorded session had ignored a failure, the
  // harness now takes another path or reaches another verdict.
  const Result replay = kind == "result" ? Replay(two, "") : Replay(one, words);
  EXPECT_EQ(Lines(replay.output), 1U) << replay.output;
  const bool isLeft = kind == "result" && call % 5 == 0;
  const int named = isLeft ? call + 1 : call;
  EXPECT_NE(replay.output.find(kind == "surplus" ? function : FunctionOf(named)), std::string::npos)
      << replay.output;
  EXPECT_NE(replay.output.find("call " + std::to_string(named) + ": "), std::string::npos)
      << replay.output;
  EXPECT_EQ(
      replay.output.find("(Session, five calls): recorded PASS, now FAIL") != std::string::npos,
      kind == "result" && !isLeft)
      << replay.output;
}

constexpr Planted kPlanted[] = {
    {"argument", 0},  {"argument", 6}, {"argument", 12}, {"argument", 18}, {"argument", 24},
    {"argument", 29}, {"order", 0},    {"order", 6},     {"order", 12},    {"order", 18},
    {"order", 23},    {"order", 28},   {"missing", 0},   {"missing", 6},   {"missing", 12},
    {"missing", 18},  {"missing", 24}, {"missing", 29},  {"surplus", 0},   {"surplus", 6},
    {"surplus", 12},  {"surplus", 18}, {"surplus", 24},  {"surplus", 29},  {"result", 0},
    {"result", 6},    {"result", 12},  {"result", 18},   {"result", 24},   {"result", 29},
};
INSTANTIATE_TEST_SUITE_P(Thirty, Differences, testing::ValuesIn(kPlanted), [](const auto& planted) {
  return planted.param.fault + std::to_string(planted.param.call);
});

TEST(Diff, ReportsCallsOfAThreadThatOnlyOneRecordingHas) {
  const std::string one = Recording("one", "");
  for (const int calls : {3, 1200}) {
    const std::string two =
        Recording("two" + std::to_string(calls), "thread " + std::to_string(calls));
    for (const std::string& both : {one + ' ' + two, two + ' ' + one}) {
      const Result diff = Trace("diff --slower 1e9 " + both);
      EXPECT_EQ(diff.status, 1);
      EXPECT_EQ(Lines(diff.output), calls == 3 ? 4U : 2U) << diff.output;
      EXPECT_EQ(diff.output.find("more than 1000 calls differ") != std::string::npos, calls > 1000)
          << diff.output;
    }
  }
}

TEST(Polls, MayDifferInNumber) {
  const std::string recording = Recording("r", "");
  const std::string polls = "CVN_REPLAY_POLLS=K2V_RHAL_VPQ_SetHue";
  for (const std::string words : {"missing 12", "again 12"}) {
    EXPECT_EQ(Replay(recording, words, polls).output, "");
    EXPECT_EQ(Lines(Replay(recording, words).output), 1U);
  }
  EXPECT_NE(Replay(recording, "missing 13", polls).output, "");
  EXPECT_EQ(Replay(recording, "", "CVN_REPLAY_POLLS=K2V_None").output,
            "cvnreplay: CVN_REPLAY_POLLS: the HAL has no K2V_None\n");
}

TEST(Handlers, AreCalledAtTheRecordedPlaces) {
  const std::string play = SessionWith(CVN_RECORDER) + "handlers";
  const Result recorded = Shell("CVN_RECORD=" + Name("r") + " " + play);
  EXPECT_TRUE(recorded.output.starts_with("0 50 100 150 ")) << recorded.output;
  EXPECT_EQ(Replay(Name("r"), "handlers").output, recorded.output);
}

TEST(Times, AreReplayedOnRequest) {
  using Clock = std::chrono::steady_clock;
  const std::string recording = Recording("r", "", "STUB_MS=700");
  const auto begin = Clock::now();
  EXPECT_EQ(Replay(recording, "", "CVN_REPLAY_TIMES=recorded").output, "");
  EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(700));
  EXPECT_EQ(Replay(recording, "", "CVN_REPLAY_TIMES=slow").output,
            "cvnreplay: invalid CVN_REPLAY_TIMES 'slow': expected recorded or fast\n");
}

TEST(Tool, PrintsStatsCoverageJsonAndDrives) {
  const std::string recording = Recording("r", "");
  const Result stats = Trace("stats " + recording);
  EXPECT_NE(stats.output.find("K2V_RHAL_VPQ_SetHue"), std::string::npos);
  EXPECT_EQ(Lines(stats.output), 6U + 8U) << stats.output;
  const Result coverage = Trace("coverage " + recording);
  EXPECT_NE(coverage.output.find("called: 5 of "), std::string::npos);
  EXPECT_NE(coverage.output.find("  K2V_RHAL_VPQ_SetHue: 6 calls\n    result: 0\n"
                                 "    value: 2 7 12 17 22 27\n"),
            std::string::npos)
      << coverage.output;
  EXPECT_NE(coverage.output.find("\n  K2V_RHAL_VSC_DM_Open\n"), std::string::npos);
  EXPECT_EQ(Shell(CVN_TRACE " json " + recording + " | jq '.traceEvents | length'").output, "42\n");
  const std::string drive = "drive --slower 1e9 --library " CVN_STUB_HAL " " + recording;
  EXPECT_EQ(Trace(drive).output, "no differences\n");
  const Result changed = Shell("STUB_FAIL=7 " CVN_TRACE " " + drive);
  EXPECT_EQ(changed.status, 1);
  EXPECT_NE(changed.output.find("call 7: K2V_RHAL_VPQ_SetHue(7) = 0: result 0, now -1"),
            std::string::npos)
      << changed.output;
}

}  // namespace
