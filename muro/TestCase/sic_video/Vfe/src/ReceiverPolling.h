// Shared by the manual tests of all receivers: they bring a receiver up, poll its timing ten times
// a second and connect, blank or reconnect the main scaler window as the signal comes and goes. A
// receiver is a record of its calls and texts, a test is a record of its question.
#pragma once

#include <cstdint>

#include "k2v/vfe_hdmi.h"
#include "k2v/vsc.h"

/// One step of the bring-up; steps that need no port ignore it.
struct ReceiverStep {
  int (*call)(uint8_t port);
  const char* failure;         // printed if the call fails …
  void (*undo)(uint8_t port);  // … before this is called
};

/// The state of the main window. Kept from run to run, like the window itself.
struct DetectionState {
  uint8_t state = 0;
  K2V_VSC_INPUT_TYPE inputType = 0;
};

/// A receiver's calls and texts. Timings of all receivers are reported as HDMI timings.
struct Receiver {
  const char* testName;     // at the beginning of questions and poll counts
  const char* portList;     // printed before a port number is read
  const char* changeList;   // the same when the port is changed
  const char* timingTitle;  // line printed before the fields of a timing
  bool has3dTiming;         // the timing record ends with the two 3D fields
  ReceiverStep initialize;
  ReceiverStep open;
  ReceiverStep connect;
  void (*prepare)();  // called between open and connect
  int (*getTiming)(uint8_t port, K2V_HDMI_TIMING_T& timing);
  void (*changePort)(uint8_t from, uint8_t to);
  void (*tearDown)(uint8_t port);
  DetectionState& detection;
};

constexpr int kNoAnswer = -1;

/// The differences between the polling tests.
struct PollingTest {
  const char* question;                      // asked at every 101st poll; answer 1 ends the test
  int closeAnswer = kNoAnswer;               // leaves receiver and scaler as they are
  bool changesPort = false;                  // answer 0 changes the port
  bool repeatsTiming = false;                // answer 0 prints the timing
  void (*showPort)(uint8_t port) = nullptr;  // called once for every picture
};

/// Texts of a test that detects on demand.
struct DetectOnceTest {
  const char* title;     // line printed before every detection
  const char* question;  // answer 1 detects again
  bool printsAnswer;
};

/// Runs a polling test. `function` is the test's name for its trace lines. Returns 0, or 1 if the
/// receiver could not be brought up.
int RunPolling(const Receiver& receiver, const PollingTest& test, const char* function);

/// Brings the receiver up and detects as often as the operator wants. Returns the same as
/// `RunPolling`.
int RunDetectOnce(const Receiver& receiver, const DetectOnceTest& test, const char* function);

/// Prints the port list and reads a port number, which is not checked.
int AskPort(const char* portList);

/// Prints the fields of a timing, one per line; the two 3D fields only if `with3d`.
void PrintTimingFields(const K2V_HDMI_TIMING_T& timing, bool with3d);
