// The whole state of the simulated board in one plain struct. It lives in shared memory, because
// all processes share the hardware and its drivers. So it contains no pointers, and a board of zero
// bytes is a new one: nothing plugged in, nothing initialised.
#pragma once

#include <cstdint>
#include <type_traits>

#include "hdcp2/Hdcp2State.h"
#include "k2v/vbe.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vfe_vby1rx.h"
#include "k2v/vsc.h"
#include "vpq/VpqState.h"

namespace sim {

constexpr unsigned kPortCount = K2V_HDMI_PORT_COUNT;
constexpr unsigned kWindowCount = 2;
constexpr K2V_VIDEO_RECT_T kPanel = {0, 0, 3840, 2160};
constexpr uint32_t kForEver = UINT32_MAX;

/// Simulated time: CLOCK_MONOTONIC since the power-on, `timeScale` times as fast.
struct Clock {
  int64_t powerOnNs;
  double timeScale;
};

/// A programmed failure; unused if `function` is empty.
struct Failure {
  char function[64];
  int32_t code;
  uint32_t callsBefore;  // calls that are still served normally
  uint32_t times;        // calls that fail after those, or kForEver
};

struct FailureTable {
  Failure entries[64];
};

/// A call that misbehaves; unused if `function` is empty.
struct Misbehaviour {
  char function[64];
  uint32_t way;          // index into the ways of Misbehaviours.cpp
  uint32_t callsBefore;  // calls that are still served normally
};

struct MisbehaviourTable {
  Misbehaviour entries[16];
};

/// A command that runs later; unused if `command` is empty.
struct Event {
  char command[192];
  uint32_t pollsLeft;  // polls of `port` until it is due; 0: `dueMs` applies
  uint32_t port;
  int64_t dueMs;  // simulated time
};

struct EventTable {
  Event entries[64];
};

/// How long receivers take to lock, if that was set.
struct LockTimes {
  bool areSet;
  uint32_t ms;
  uint32_t polls;
};

/// A receiver that has not locked to its source yet.
struct SignalLock {
  bool lost;
  bool muted;          // the source set AV mute before it changed its timing
  uint32_t pollsLeft;  // polls that will still find no timing
  int64_t dueMs;       // simulated time until which there is no timing
};

/// What the port drives on its hot-plug line.
enum class HotPlug : uint8_t {
  kIdle,  // low since the receiver was opened; connecting the port raises it
  kRaised,
  kHeldLow,  // until it is raised explicitly
};

/// Kind of an HDMI source; it determines info-frames, colour depth and content protection.
enum class SourceKind : uint8_t { kSdrVideo, kHdrVideo, kPc, kHlgVideo, kDeepVideo, kDvi };

/// How a source packs the pictures of both eyes into its timing.
enum class Stereo : uint8_t {
  kNone,
  kFramePacking,
  kSideBySide,
  kTopAndBottom,
  kFieldAlternative,
  kLineAlternative,
  kSideBySideFull,
  // Without any info-frame:
  kLineInterleave,
  kColumnInterleave,
  kCheckerboard,
  kFrameSequential,
};

/// What a source sends.
enum class TestPicture : uint8_t {
  kBars,  // eight bars of 100 % colour
  kRamp,
  kSmpte,
  kCheckerboard,
  kBox,  // moves, with a running frame number
  kBlack,
  kWhite,
  kFile,  // a still image
};

struct SentPicture {
  TestPicture picture;
  uint32_t copy;  // number of the still image among those that the board keeps
};

struct HdmiPort {
  bool cable;      // a source is plugged in
  bool sending;    // … and sends a picture
  bool muted;      // … with AV mute set
  bool connected;  // by the HAL's Connect
  SourceKind kind;
  Stereo stereo;
  HotPlug hotPlug;
  bool edidWritten;
  bool edidDefect;  // corrupts one byte of what is written
  bool hdcpDefect;
  uint8_t edid[K2V_HDMI_EDID_BYTES];
  uint8_t hdcp[K2V_HDMI_HDCP_BYTES];
  K2V_HDMI_TIMING_T timing;  // of the source
  SentPicture sent;
  SignalLock lock;
};

struct HdmiReceiver {
  bool initialized;
  bool open;
  HdmiPort ports[kPortCount];
};

struct Vby1Receiver {
  bool initialized;
  bool open;
  bool connected;
  uint8_t selected;                                  // input
  K2V_HDMI_TIMING_T sources[K2V_VBY1RX_PORT_COUNT];  // width 0: nothing plugged in
  SentPicture sent[K2V_VBY1RX_PORT_COUNT];           // by the sources
  SignalLock lock;                                   // to the selected source
};

/// What a source delivers; width 0: no picture.
struct Picture {
  uint16_t width;
  uint16_t height;
  uint32_t colorStandard;
  uint32_t eotf;  // K2V_HDMI_EOTF_*
  SentPicture sent;
  bool muted;  // the source set AV mute
  Stereo stereo;
  uint16_t rateCentiHz;
  int64_t heldMs;       // simulated time at which it was frozen; 0: not frozen
  uint32_t heldScreen;  // number of the player's frozen picture; 0: none
};

constexpr uint32_t kMaxWrittenPixels = 720 * 576;

struct Window {
  bool open;
  bool connected;
  bool blank;
  bool frozen;
  bool bufferFrozen;
  bool preview;
  uint32_t blankColor;
  K2V_VSC_INPUT_SRC_T source;
  K2V_VIDEO_RECT_T input;
  K2V_VIDEO_RECT_T output;
  Picture held;              // shown while frozen
  Picture bufferHeld;        // in the frame buffer while that is frozen
  Picture motionHeld;        // shown while the motion compensation is frozen
  K2V_VIDEO_RECT_T written;  // where `pixels` replaces the picture; empty: nowhere
  K2V_VIDEO_PIXEL_T pixels[kMaxWrittenPixels];
};

struct Scaler {
  bool initialized;
  bool rgb444;
  bool metadataOpen;
  bool metadataConnected;
  Window windows[kWindowCount];
};

struct Color {
  uint8_t red;
  uint8_t green;
  uint8_t blue;
};

constexpr unsigned kTransmitterCount = 2;

/// Defects of the panel, independent of the HAL.
enum class PanelFault : uint8_t { kBlank, kMirror, kWindow, kSettings, kChannels, kRange, kLines };

/// Panel, timing controller and HDMI transmitter.
struct Display {
  bool initialized;
  bool tconInitialized;
  bool tconClock;
  bool output;
  bool dark;  // switched off since it was last lit; the boot loader lights it
  bool muted;
  bool freeRun;
  bool mirrorHorizontal;
  bool mirrorVertical;
  bool shift;
  bool orbit;
  bool spreadSpectrum;
  bool background;  // instead of the picture
  uint8_t frameRateHz;
  uint16_t spreadPercent;
  uint16_t spreadPeriod;
  Color borderColor;
  Color backgroundColor;
  K2V_VBE_PANEL_INFO_T panel;
  K2V_VBE_PANEL_ATTRIBUTE_T attribute;
  bool transmitterUnplugged[kTransmitterCount];
  uint8_t faults;  // one bit per PanelFault

  bool Has(PanelFault fault) const { return (faults >> static_cast<unsigned>(fault) & 1) != 0; }
};

struct Formatter3d {
  bool initialized;
  bool open;
  bool leftFirstOut;
  bool rightFirstIn;
  bool autoConvergence;
  uint8_t format;
  uint8_t mode;
  uint8_t depth;
  int8_t convergence;
};

/// A graphics layer: this chip's, or the one on the link.
struct Graphics {
  bool initialized;
  bool on;  // two planes; the panel
};

/// A defect of a stage's dump, as the words of its command; unused if they are empty.
struct DumpDefect {
  char words[96];
};

/// The 90 kHz counter of the dumps' rows, unless it runs freely.
struct DumpCounter {
  bool isSet;
  int64_t start90k;
  double driftPpm;
};

/// The media side and the world around the board; all zero means that all is well.
struct Media {
  DumpDefect defects[32];
  DumpCounter counter;
  bool stickOut;
  bool networkDown;
  bool tftpDown;
  bool diskFull;
};

/// The clock that is trimmed to the transmitter's, and its registers. It follows CLOCK_MONOTONIC
/// since the power-on, because programs measure it with their own clock, which is not scaled.
struct BroadcastClock {
  int64_t baseNs;    // when the step last changed …
  double baseTicks;  // … and the counter at that time, in ticks of 90 kHz
  int32_t step;      // of the speed
  uint32_t speedRegister;
  uint32_t latchedCount;
  uint32_t address;  // of the register to be read next
};

constexpr int kNominalDegrees = 45;
constexpr uint32_t kNominalPeriodMs = 2000;

/// Temperature sensor; all zero is the power-on state.
struct Thermal {
  int32_t degreesOverNominal;
  uint32_t settings;  // how often the temperature was set
  uint32_t periodMs;  // 0: kNominalPeriodMs; kForEver: reports changes only
};

struct Device {
  int32_t notReady;    // code
  int32_t notHealthy;  // code
  BroadcastClock broadcast;
  Thermal thermal;
};

/// An open session of the link; unused if `id` is 0.
struct LinkSession {
  uint32_t id;
  uint32_t classId;
  int32_t process;
};

constexpr unsigned kLinkSessionCount = 32;

struct Link {
  uint32_t lastSession;  // id
  uint32_t lastBuffer;   // handle
  bool silent;           // the slave never answers
  bool wrong;            // the slave's data have one wrong bit
  bool full;             // ring buffers accept no data
  LinkSession sessions[kLinkSessionCount];
};

struct Board {
  Clock clock;
  uint32_t imageCopies;  // number of still images given to sources so far
  FailureTable failures;
  MisbehaviourTable misbehaviours;
  EventTable events;
  LockTimes lockTimes;
  HdmiReceiver hdmi;
  Vby1Receiver vby1;
  Scaler scaler;
  Display display;
  Formatter3d formatter;
  Graphics graphics;
  Graphics linkedGraphics;
  Vpq vpq;
  Hdcp2 hdcp2;
  Media media;
  Device device;
  Link link;
};
static_assert(std::is_trivially_copyable_v<Board> && std::is_trivial_v<Board>);

}  // namespace sim
