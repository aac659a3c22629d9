// The position of pictures on the panel, and its picture without a source.
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "BoardFixture.h"
#include "PanelFixture.h"
#include "Screen.h"
#include "k2v/gal.h"
#include "k2v/vbe.h"
#include "k2v/vfe_vby1rx.h"
#include "k2v/vpq.h"

namespace {

using PanelView = PanelFixture;

constexpr K2V_VBE_PANEL_INFO_T kPanelInfo = {55, 0, 3, 0, 3, {}, 3840, 2160, 3840, 2160, 1, {}};

TEST_F(PanelView, IsBlackUntilAWindowHasAPicture) {
  EXPECT_EQ(Seen(480, 270), kBlack);
  Connect();
  EXPECT_EQ(Bar(0), kWhite);
  EXPECT_EQ(Bar(7), kBlack);
  Do("unplug 0");
  EXPECT_EQ(Bar(0), kBlack);
  Do("plug 0 1280x720p50");
  EXPECT_EQ(Bar(5), kRed);
  Do("signal 0 off");
  EXPECT_EQ(Bar(5), kBlack);
  Do("signal 0 on");
  Do("mute 0 on");
  EXPECT_EQ(Bar(5), kBlack);
  Do("mute 0 off");
  EXPECT_EQ(Bar(5), kRed);
}

TEST_F(PanelView, WindowsAreAtTheirPositions) {
  Connect();
  K2V_RHAL_VSC_SetInputRegion(0, {1200, 0, 240, 1080});  // the red bar
  K2V_RHAL_VSC_SetOutputRegion(0, {80, 40, 1920, 1080});
  K2V_RHAL_VSC_Open(1);
  K2V_RHAL_VSC_Connect(1, {5, 0, 0});
  K2V_RHAL_VSC_SetOutputRegion(1, {1600, 800, 960, 540});
  K2V_RHAL_VBE_DISP_Initialize(kPanelInfo);
  K2V_RHAL_VBE_DISP_SetBackgroundColor(0, 255, 0);
  const struct {
    int x, y;
    Rgb color;
  } kPlaces[] = {
      {19, 150, kGreen}, {20, 150, kRed},    {300, 9, kGreen},        {300, 10, kRed},
      {499, 100, kRed},  {500, 100, kGreen}, {300, 279, kRed},        {300, 280, kGreen},
      {399, 200, kRed},  {400, 200, kWhite}, {639, 334, kBlack},      {640, 334, kGreen},
      {420, 199, kRed},  {639, 335, kGreen}, {430 + 8, 220, kYellow},
  };
  for (const auto& place : kPlaces)
    EXPECT_EQ(Seen(place.x, place.y), place.color) << place.x << ',' << place.y;
}

TEST_F(PanelView, FaultsAreVisibleUntilTheyAreCleared) {
  Connect();
  K2V_RHAL_VSC_SetOutputRegion(0, {400, 400, 1920, 1080});
  K2V_RHAL_VBE_DISP_Initialize(kPanelInfo);
  constexpr int kMirroredBar = 960 - 110;
  const struct {
    const char* fault;
    void (*set)();
    int x, y;
    Rgb well, ill;
  } kFaults[] = {
      {"channels", [] {}, 310, 200, kGreen, kBlue},
      {"range", [] {}, 110, 200, kWhite, {235, 235, 235}},
      {"range", [] {}, 20, 20, kBlack, {16, 16, 16}},
      {"lines", [] {}, 110, 216, kWhite, kBlack},
      {"window", [] {}, 101, 200, kWhite, kBlack},
      {"settings", [] { K2V_RHAL_VPQ_SetBrightness(0); }, 110, 200, {127, 127, 127}, kWhite},
      {"mirror",
       [] { K2V_RHAL_VBE_DISP_SetVideoMirror(1, 0); },
       kMirroredBar,
       200,
       {127, 127, 127},
       kBlack},
      {"blank",
       [] { K2V_RHAL_VSC_SetWinBlank(0, 1, K2V_VIDEO_DDI_WIN_COLOR_BLUE); },
       kMirroredBar,
       200,
       kBlue,
       {255, 0, 96}},
  };
  for (const auto& [fault, set, x, y, well, ill] : kFaults) {
    set();
    EXPECT_TRUE(IsNear(Seen(x, y), well)) << fault;
    Do(std::string("panel-fault ") + fault);
    EXPECT_TRUE(IsNear(Seen(x, y), ill)) << fault;
    Do("panel-fault none");
    EXPECT_TRUE(IsNear(Seen(x, y), well)) << fault;
  }
}

TEST_F(PanelView, FirmwareShowsAPortWithNeutralSettings) {
  Connect();
  K2V_RHAL_VSC_SetInputRegion(0, {1200, 0, 240, 1080});
  K2V_RHAL_VSC_SetWinFreeze(0, 1);
  K2V_RHAL_VPQ_SetBrightness(0);
  Do("plug 1 1280x720p60");
  Do("picture 1 white");
  Do("show 1");
  EXPECT_TRUE(IsNear(Seen(900, 270), {127, 127, 127}));
  Do("neutral");
  EXPECT_EQ(Seen(900, 270), kWhite);
  EXPECT_EQ(K2V_RHAL_VSC_Open(0), K2V_RHAL_ERR_ALREADY);
  Do("show none");
  EXPECT_EQ(Seen(900, 270), kBlack);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_Initialize(), 0);
  EXPECT_EQ(K2V_RHAL_VSC_Open(0), K2V_RHAL_ERR_ORDER);
}

TEST_F(PanelView, MatchesTheCaptureOfTheBoard) {
  Connect("3840x2160p60 hdr");
  K2V_RHAL_VSC_SetInputRegion(0, {192, 108, 3456, 1944});  // overscan of 5 %
  K2V_RHAL_VSC_Open(1);
  K2V_RHAL_VSC_Connect(1, {5, 0, 0});
  K2V_RHAL_VSC_SetOutputRegion(1, {2400, 1200, 1280, 720});
  std::vector<uint8_t> bytes(K2V_CAPTURE_BYTES);
  K2V_VSC_CAPTURE_INFO_T info = {bytes.data(), K2V_CAPTURE_BYTES, 0, 0};
  for (const std::string picture : {"bars", "ramp", "checkerboard", "black", "white"}) {
    Do("picture 0 " + picture);
    ASSERT_EQ(K2V_RHAL_VSC_CaptureVideoFrame(K2V_VIDEO_DDI_DISPLAY_OUTPUT, &info), 0);
    LookAt(1000);
    int others = 0;
    for (int y = 0; y < K2V_CAPTURE_HEIGHT; ++y) {
      for (int x = 0; x < K2V_CAPTURE_WIDTH; ++x) {
        const uint8_t* captured =
            &bytes[3 * (static_cast<size_t>(y) * K2V_CAPTURE_WIDTH + static_cast<size_t>(x))];
        others += !IsNear(InView(x, y), {captured[0], captured[1], captured[2]});
      }
    }
    // Only at the edges between colours.
    EXPECT_LT(others, (picture == "checkerboard" ? 31 * 540 + 17 * 960 : 7 * 540) + 7 * 180)
        << picture;
  }
}

TEST_F(PanelView, BlanksAndFreezes) {
  K2V_RHAL_VSC_SetWinBlank(0, 1, K2V_VIDEO_DDI_WIN_COLOR_GRAY);
  EXPECT_EQ(Seen(480, 270), kGrey) << "a main window without a position covers the whole panel";
  Connect();
  K2V_RHAL_VSC_SetWinBlank(0, 1, K2V_VIDEO_DDI_WIN_COLOR_BLUE);
  EXPECT_EQ(Bar(0), kBlue);
  K2V_RHAL_VSC_SetWinBlank(0, 0, K2V_VIDEO_DDI_WIN_COLOR_BLUE);
  K2V_RHAL_VSC_SetWinFreeze(0, 1);
  Do("unplug 0");
  EXPECT_EQ(Bar(0), kWhite);
  Do("plug 0 1280x720p50");
  Do("picture 0 black");
  EXPECT_EQ(Bar(0), kWhite);
  K2V_RHAL_VSC_SetWinFreeze(0, 0);
  EXPECT_EQ(Bar(0), kBlack);
}

/// Everything that freezes a picture of the main window.
struct Freezer {
  const char* name;
  int (*freeze)(uint32_t on);
};
constexpr Freezer kFreezers[] = {
    {"window", [](uint32_t on) { return K2V_RHAL_VSC_SetWinFreeze(0, on); }},
    {"frame buffer", [](uint32_t on) { return K2V_RHAL_VSC_FreezeVideoFrameBuffer(0, on); }},
    {"motion compensation",
     [](uint32_t on) { return K2V_RHAL_VPQ_MEMC_Freeze(static_cast<int32_t>(on)); }},
};

TEST_F(PanelView, PictureMovesUntilItIsFrozen) {
  const auto picture = [this](int64_t ms) {
    const AVFrame& view = panel_.Look(*sim::BoardLock(), ms);
    return picture::ToPng(view);
  };
  const auto nothing = picture(100'000);
  Connect();
  Do("noise 20");
  Do("vby1 plug 0 1920x1080p60");
  K2V_RHAL_VFE_VBY1RX_Initialize();
  K2V_RHAL_VFE_VBY1RX_Open();
  K2V_RHAL_VFE_VBY1RX_Connect(0);
  for (const std::string port : {"0", "vby1-0"}) {
    Do("picture " + port + " box");
    for (const auto& [name, freeze] : kFreezers) {
      SCOPED_TRACE(port + " " + name);
      EXPECT_NE(picture(100'000), picture(100'001)) << "noise";
      ASSERT_EQ(freeze(1), 0);
      const auto frozen = picture(100'000);
      EXPECT_NE(frozen, nothing);
      EXPECT_EQ(frozen, picture(200'000));
      Do("picture " + port + " black");
      EXPECT_EQ(frozen, picture(200'000));
      ASSERT_EQ(freeze(0), 0);
      EXPECT_NE(frozen, picture(200'000));
      Do("picture " + port + " box");
    }
    Do("unplug 0");  // next is the other receiver
  }
  Do("noise 0");
  const auto atOnce = picture(100'000);
  EXPECT_NE(atOnce, picture(100'017));
  EXPECT_EQ(atOnce, picture(100'001)) << "from the same frame";
}

TEST_F(PanelView, NoiseStopsOnlyInTheFrozenWindow) {
  Connect();
  Do("picture 0 ramp");
  K2V_RHAL_VSC_Open(1);
  K2V_RHAL_VSC_Connect(1, {K2V_VSC_INPUTSRC_VDEC, 0, 0});
  K2V_RHAL_VSC_SetOutputRegion(1, {0, 0, 1920, 2160});
  Do("noise 128");
  K2V_RHAL_VSC_SetWinFreeze(0, 1);
  const auto lines = [this] {
    LookAt(1000);
    std::array<std::vector<Rgb>, 2> both;  // sub window, main window
    for (int x = 0; x < 960; ++x) both[x < 480 ? 0 : 1].push_back(InView(x, 270));
    return both;
  };
  const auto first = lines(), second = lines();
  EXPECT_NE(first[0], second[0]);
  EXPECT_EQ(first[1], second[1]);
}

TEST_F(PanelView, DisplayMirrorsMutesShiftsAndGoesDark) {
  Connect();
  EXPECT_EQ(Bar(0), kWhite) << "the boot loader left the panel on";
  K2V_RHAL_VBE_DISP_Initialize(kPanelInfo);
  Do("picture 0 smpte");
  const Rgb corner = Seen(2, 2), foot = Seen(2, 535);
  K2V_RHAL_VBE_DISP_SetVideoMirror(0, 1);
  EXPECT_EQ(Seen(2, 535), corner);
  EXPECT_EQ(Seen(2, 2), foot);
  Do("picture 0 bars");
  K2V_RHAL_VBE_DISP_SetVideoMirror(1, 0);
  EXPECT_EQ(Bar(0), kBlack);
  EXPECT_EQ(Bar(7), kWhite);
  K2V_RHAL_VBE_DISP_SetVideoMirror(0, 0);
  K2V_RHAL_VBE_DISP_SetBackgroundColor(0, 0, 255);
  K2V_RHAL_VBE_DISP_ScreenShift(1);
  EXPECT_EQ(Seen(3, 100), kBlue);
  EXPECT_EQ(Seen(4, 4), kWhite);
  EXPECT_EQ(Seen(123, 100), kWhite);
  EXPECT_EQ(Seen(124, 100), kYellow);
  K2V_RHAL_VBE_DISP_ScreenShift(0);
  K2V_RHAL_VBE_DISP_SetMute(1);
  EXPECT_EQ(Bar(0), kBlack);
  K2V_RHAL_VBE_DISP_SetPanelBackgroundColor(1, 128, 128, 128);
  EXPECT_EQ(Bar(0), kGrey);
  K2V_RHAL_VBE_DISP_SetPanelBackgroundColor(0, 0, 0, 0);
  K2V_RHAL_VBE_DISP_SetMute(0);
  K2V_RHAL_VBE_DISP_SetDisplayOutput(0);
  EXPECT_EQ(Bar(0), kBlack);
  K2V_RHAL_VBE_DISP_SetDisplayOutput(1);
  EXPECT_EQ(Bar(0), kWhite);
  K2V_RHAL_VBE_DISP_Uninitialize();
  EXPECT_EQ(Bar(0), kBlack);
}

TEST_F(PanelView, OnScreenDisplayCoversThePicture) {
  Connect();
  const auto isCovered = [this](int y) { return !IsNear(Seen(60, y), kWhite); };
  EXPECT_FALSE(isCovered(500));
  K2V_RHAL_GAL_Init();
  EXPECT_TRUE(isCovered(500));
  EXPECT_FALSE(isCovered(30));
  K2V_RHAL_GAL_OSDSPLIT(1);
  EXPECT_TRUE(isCovered(30));
  EXPECT_FALSE(isCovered(270));
  K2V_RHAL_GAL_Finalize();
  EXPECT_FALSE(isCovered(500));
}

/// Opens the 3D formatter.
void Format(uint32_t format) {
  K2V_RHAL_VBE_TRIDFMT_Initialize();
  K2V_RHAL_VBE_TRIDFMT_Open();
  ASSERT_EQ(K2V_RHAL_VBE_TRIDFMT_SelectInputFormat(format), 0);
}

TEST_F(PanelView, FormatterSeparatesTheEyes) {
  constexpr int kBesideEdge = 110;  // white for the left eye, yellow for the right eye
  const struct {
    const char* source;
    uint32_t format;
  } kFormats[] = {
      {"1920x1080p60 sdr side-by-side", VBE_INPUT_TYPE_SIDEBYSIDE},
      {"1920x1080p60 sdr top-and-bottom", VBE_INPUT_TYPE_TOPNBOTTOM},
      {"1920x1080p24 sdr frame-packing", VBE_INPUT_TYPE_FRAMEPAC},
      {"1920x1080i60 sdr field-alternative", VBE_INPUT_TYPE_FIELD_ALTERNATIVE},
      {"1920x1080p24 sdr line-alternative", VBE_INPUT_TYPE_LINE_ALTERNATIVE},
      {"1920x1080p24 sdr side-by-side-full", VBE_INPUT_TYPE_SIDEBYSIDE_FULL},
      {"1920x1080p60 pc line-interleave", VBE_INPUT_TYPE_LINE_INTERLEAVE_HALF},
      {"1920x1080p60 pc column-interleave", VBE_INPUT_TYPE_COLUMN_INTERLEAVE},
      {"1920x1080p60 pc checkerboard", VBE_INPUT_TYPE_CHECKERBOARD},
      {"1279x719p60 pc checkerboard", VBE_INPUT_TYPE_CHECKERBOARD},
      {"1920x1080p60 dvi frame-sequential", VBE_INPUT_TYPE_FRAMESEQ},
  };
  for (const auto& [source, format] : kFormats) {
    SCOPED_TRACE(source);
    Connect(source);
    Format(format);
    // Alternate lines belong to alternate eyes.
    const auto lines = [this] {
      LookAt(1000);
      return std::array{InView(kBesideEdge, 270), InView(kBesideEdge, 271)};
    };
    EXPECT_EQ(lines(), (std::array{kYellow, kWhite}));
    K2V_RHAL_VBE_TRIDFMT_ToggleOutputLRFrame(1);
    EXPECT_EQ(lines(), (std::array{kWhite, kYellow}));
    K2V_RHAL_VBE_TRIDFMT_ToggleInputLRFrame(1);
    EXPECT_EQ(lines(), (std::array{kYellow, kWhite}));
    K2V_RHAL_VBE_TRIDFMT_CtrlDepth(3, 0);  // 3D to 2D
    EXPECT_EQ(lines(), (std::array{kYellow, kYellow}));
    K2V_RHAL_VBE_TRIDFMT_ToggleInputLRFrame(0);
    EXPECT_EQ(lines(), (std::array{kWhite, kWhite}));
    K2V_RHAL_VBE_TRIDFMT_ToggleOutputLRFrame(0);
    K2V_RHAL_VBE_TRIDFMT_CtrlDepth(1, 0);
    Disconnect();
  }
}

TEST_F(PanelView, FrameSequentialEyesAreShownAlternately) {
  Connect("1920x1080p50 pc frame-sequential");
  LookAt(1000);
  EXPECT_EQ(InView(110, 270), kWhite);
  LookAt(1020);
  EXPECT_EQ(InView(110, 270), kYellow);
  // A frozen source has one frame for both eyes.
  Format(VBE_INPUT_TYPE_FRAMESEQ);
  K2V_RHAL_VSC_SetWinFreeze(0, 1);
  EXPECT_EQ(Seen(110, 270), Seen(110, 271));
}

TEST_F(PanelView, DualStreamHasOneStreamPerEye) {
  Connect();
  Do("picture 0 white");
  K2V_RHAL_VSC_Open(1);
  K2V_RHAL_VSC_Connect(1, {5, 0, 0});
  Format(VBE_INPUT_TYPE_DUALSTREAM);
  K2V_RHAL_VBE_TRIDFMT_ToggleOutputLRFrame(1);
  EXPECT_EQ(Seen(660, 270), kWhite);
  EXPECT_EQ(Seen(660, 271), kRed);
}

TEST_F(PanelView, FormatterAcceptsOddTimingsInEveryMode) {
  Connect("3831x2161p30");
  Format(VBE_INPUT_TYPE_3DOFF);
  for (uint32_t format = 0; format <= VBE_INPUT_TYPE_2DTO3D; ++format) {
    ASSERT_EQ(K2V_RHAL_VBE_TRIDFMT_SelectInputFormat(format), 0);
    for (const uint32_t mode : {0U, 1U, 2U, 3U}) {
      K2V_RHAL_VBE_TRIDFMT_CtrlDepth(mode, 10);
      K2V_RHAL_VBE_TRIDFMT_SetConvValue(-10);
      EXPECT_NO_THROW(LookAt(1000)) << format << ' ' << mode;
    }
  }
}

// The edges of the bars show where the picture is stretched: the middle half of the panel contains
// two thirds of the picture.
TEST_F(PanelView, PanoramaStretchesTheSides) {
  Connect();
  K2V_RHAL_VPQ_SetPanoramaType(1);
  const struct {
    int x;
    Rgb left, right;
  } kEdges[] = {{190, kWhite, kYellow},
                {300, kYellow, kCyan},
                {390, kCyan, kGreen},
                {480, kGreen, kMagenta},
                {770, kBlue, kBlack}};
  for (const auto& [x, left, right] : kEdges) {
    EXPECT_TRUE(IsNear(Seen(x - 3, 270), left)) << x;
    EXPECT_TRUE(IsNear(Seen(x + 2, 270), right)) << x;
  }
  Do("panel-fault settings");
  EXPECT_EQ(Bar(1), kYellow);
  Do("panel-fault none");
  K2V_RHAL_VSC_SetOutputRegion(0, {0, 0, 40, 40});
  EXPECT_NO_THROW(LookAt(1000)) << "too small to be stretched in parts";
  Do("neutral");
  K2V_RHAL_VSC_SetOutputRegion(0, {0, 0, 3840, 2160});
  EXPECT_EQ(Bar(0), kWhite);
}

TEST_F(PanelView, PixelsWrittenToTheFrameBufferAreVisible) {
  Connect();
  std::vector<K2V_VIDEO_PIXEL_T> pixels(std::size_t{400} * 200, {512, 940, 512});
  K2V_VIDEO_RECT_T rect = {1440, 400, 400, 200};
  ASSERT_EQ(K2V_RHAL_VSC_WriteVideoFrameBuffer(0, &rect, pixels.data()), 0);
  EXPECT_TRUE(IsNear(Seen(740, 250), kWhite));
  EXPECT_EQ(Seen(715, 250), kRed);
  EXPECT_EQ(Seen(740, 320), kBlue);
}

TEST_F(PanelView, SecondReceiverFeedsTheSameInput) {
  Do("unplug 0");
  Do("vby1 plug 0 3840x2160p60");
  Do("picture vby1-0 white");
  K2V_RHAL_VFE_VBY1RX_Initialize();
  K2V_RHAL_VFE_VBY1RX_Open();
  K2V_RHAL_VFE_VBY1RX_Connect(0);
  K2V_RHAL_VSC_Initialize();
  K2V_RHAL_VSC_Open(0);
  K2V_RHAL_VSC_Connect(0, {K2V_VSC_INPUTSRC_HDMI, 0, 0});
  EXPECT_EQ(Seen(900, 270), kWhite);
}

/// A board with a file system, as required by the player.
class PlayedPicture : public testing::Test {
 protected:
  PlayedPicture() {
    EXPECT_NE(mkdtemp(directory_.data()), nullptr);
    setenv("CVNSIM_STATE", (directory_ + "/state").c_str(), 1);
    sim::PowerOn();
    K2V_RHAL_VSC_Initialize();
    K2V_RHAL_VSC_Open(0);
  }
  ~PlayedPicture() override { std::filesystem::remove_all(directory_); }

  const std::string& Directory() const { return directory_; }

  Rgb Middle() { return PixelOf(*picture::Converted(panel_.Look(), AV_PIX_FMT_RGB24), 480, 270); }

  /// Starts playing and shows one picture.
  void Play(const char* color) {
    screen_.emplace();
    const std::string text = std::string("color=").append(color) + ":s=64x36,format=gbrp";
    screen_->Show(*picture::Converted(*picture::Generate(text), AV_PIX_FMT_YUV420P), 1);
  }

  std::optional<player::Screen> screen_;

 private:
  std::string directory_ = (std::filesystem::temp_directory_path() / "panel-XXXXXX").string();
  panel::Panel panel_;
};

TEST_F(PlayedPicture, IsVisibleDuringPlayback) {
  EXPECT_EQ(Middle(), kBlack);
  screen_.emplace();
  EXPECT_EQ(Middle(), kBlack) << "nothing is decoded yet";
  Play("0x00ff00");
  EXPECT_TRUE(IsNear(Middle(), kGreen, 3));
  screen_.reset();
  EXPECT_EQ(Middle(), kBlack);
  screen_.emplace();
  EXPECT_EQ(Middle(), kBlack) << "nothing of the previous playback";
}

TEST_F(PlayedPicture, StaysWhileItIsFrozen) {
  for (const bool isConnected : {false, true}) {
    if (isConnected) K2V_RHAL_VSC_Connect(0, {K2V_VSC_INPUTSRC_VDEC, 0, 0});
    const Rgb without = Middle();
    for (const auto& [name, freeze] : kFreezers) {
      SCOPED_TRACE(std::string(name) + (isConnected ? ", connected" : ""));
      Play("0x00ff00");
      if (freeze(1) != 0) continue;  // only a connected window has a frame buffer
      Play("0xff0000");
      EXPECT_TRUE(IsNear(Middle(), kGreen, 3));
      ASSERT_EQ(freeze(1), 0);
      screen_.reset();
      EXPECT_TRUE(IsNear(Middle(), kGreen, 3)) << "frozen again, after playback has ended";
      ASSERT_EQ(freeze(0), 0);
      EXPECT_EQ(Middle(), without);
      EXPECT_EQ(std::ranges::distance(std::filesystem::directory_iterator(Directory())), 3)
          << "state, screen and lock";
    }
  }
  // A freeze further downstream keeps the picture that was already frozen.
  Play("0x00ff00");
  K2V_RHAL_VSC_FreezeVideoFrameBuffer(0, 1);
  Play("0xff0000");
  K2V_RHAL_VSC_SetWinFreeze(0, 1);
  K2V_RHAL_VSC_FreezeVideoFrameBuffer(0, 0);
  EXPECT_TRUE(IsNear(Middle(), kGreen, 3));
  K2V_RHAL_VSC_SetWinFreeze(0, 0);
  EXPECT_TRUE(IsNear(Middle(), kRed, 3));
}

TEST(PictureCommand, RejectsInvalidPictures) {
  sim::PowerOn();
  const auto refusal = [](const std::string& command) -> std::string {
    try {
      sim::Apply(*sim::BoardLock(), command);
    } catch (const sim::CommandError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(
      refusal("picture 0 rainbow"),
      "unknown picture 'rainbow': expected bars, ramp, smpte, checkerboard, box, black, white, "
      "or a PNG or JPEG file of at most 32 MiB");
  EXPECT_NE(refusal("picture 0 /proc/self/exe"), "");
  EXPECT_EQ(refusal("picture vby1-3 bars"), "invalid V-by-One input '3': expected 0 to 2");
  EXPECT_EQ(refusal("picture 4 bars"), "invalid port '4': expected 0 to 3");
}

/// The commands as typed by a user, on a board started by another process.
class Camera : public testing::Test {
 protected:
  ~Camera() override { std::filesystem::remove_all(directory_); }

  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "camera-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    directory_ = name;
    Run(SIM_CLIENT " h-init h-hpd h-open h-conn0 s-init s-open s-conn");
  }

  test::ShellResult Run(const std::string& command) const {
    return test::RunShell("cd " + directory_.string() +
                          " && export CVNSIM_STATE=$PWD/state CVNSIM_TRACE=$PWD/trace; " + command);
  }
  Rgb Pixel(const std::string& file, int x, int y) const {
    return PixelOf(*picture::FromFile(directory_ / file), x, y);
  }

  std::filesystem::path directory_;
};

TEST_F(Camera, WritesAPicture) {
  const auto taken = Run(CVNSIM " camera a.png");
  EXPECT_EQ(taken.status, 0) << taken.output;
  EXPECT_EQ(Pixel("a.png", 180, 270), kYellow);
  // A picture of the panel can be used as the picture of a source.
  EXPECT_EQ(Run(CVNSIM " picture 0 a.png && rm a.png && " CVNSIM " camera b.png").status, 0);
  EXPECT_EQ(Pixel("b.png", 660, 270), kRed);
  const auto refused = Run(CVNSIM " camera nowhere/a.png");
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.output, "cvnsim: nowhere/a.png cannot be written: No such file or directory\n");
  for (const char* wrong : {"", "a.png b.png", "--y4m a.png", "--rate 5", "--y4m --rate 0"})
    EXPECT_EQ(Run(std::string(CVNSIM " camera ") + wrong).status, 2) << wrong;
}

TEST_F(Camera, StreamsUntilTheReaderCloses) {
  constexpr size_t kPictureBytes = 6 + std::size_t{960} * 540 * 3;
  const auto limited = Run(CVNSIM " camera --y4m --rate 100 --pictures 5 >s.y4m");
  EXPECT_EQ(limited.status, 0) << limited.output;
  const std::string title = "YUV4MPEG2 W960 H540 F100:1 Ip A1:1 C444 XCOLORRANGE=LIMITED\n";
  EXPECT_TRUE(test::FileText(directory_ / "s.y4m").starts_with(title));
  EXPECT_EQ(std::filesystem::file_size(directory_ / "s.y4m"), title.size() + 5 * kPictureBytes);
  const auto cut = Run("sh -c '" CVNSIM " camera --y4m; echo $? >status' | head -c 3000000 >s.y4m");
  EXPECT_EQ(cut.status, 0);
  EXPECT_EQ(test::FileText(directory_ / "status"), "0\n");
}

}  // namespace
