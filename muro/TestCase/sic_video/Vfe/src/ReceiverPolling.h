// What the tests by hand of all receivers have in common: they bring a receiver up, poll its timing
// ten times a second and connect, blank or reconnect the main scaler window as the signal comes and
// goes. A receiver is a record of its calls and texts, a test a record of its question.
#pragma once

#include <cstdint>

#include "k2v/vfe_hdmi.h"
#include "k2v/vsc.h"

/// One step of the bring-up; steps that need no port ignore it.
struct ReceiverStep {
  int (*call)(uint8_t port);
  const char* failure;         // printed when the call fails …
  void (*undo)(uint8_t port);  // … before this is called
};

/// How far the main window is. Kept from run to run, as the window is.
struct DetectionState {
  uint8_t state = 0;
  K2V_VSC_INPUT_TYPE inputType = 0;
};

/// A receiver's calls and texts. Timings of all receivers are told as HDMI timings.
struct Receiver {
  const char* testName;     // with which questions and poll counts begin
  const char* portList;     // printed before a port is read
  const char* changeList;   // the same where the port is changed
  const char* timingTitle;  // line before the fields of a timing
  bool has3dTiming;         // the timing record ends with the two 3D fields
  ReceiverStep initialize;
  ReceiverStep open;
  ReceiverStep connect;
  void (*prepare)();  // between open and connect
  int (*getTiming)(uint8_t port, K2V_HDMI_TIMING_T& timing);
  void (*changePort)(uint8_t from, uint8_t to);
  void (*tearDown)(uint8_t port);
  DetectionState& detection;
};

constexpr int kNoAnswer = -1;

/// What tells a polling test from the others.
struct PollingTest {
  const char* question;                      // asked at every 101st poll; answer 1 ends the test
  int closeAnswer = kNoAnswer;               // leaves receiver and scaler as they are
  bool changesPort = false;                  // answer 0 changes the port
  bool repeatsTiming = false;                // answer 0 prints the timing
  void (*showPort)(uint8_t port) = nullptr;  // called once for every picture
};

/// What a test that detects on demand prints and asks.
struct DetectOnceTest {
  const char* title;     // line before every detection
  const char* question;  // answer 1 detects once more
  bool printsAnswer;
};

/// Runs a polling test. `function` is the test's name for its trace lines. Returns 0, or 1 when the
/// receiver could not be brought up.
int RunPolling(const Receiver& receiver, const PollingTest& test, const char* function);

/// Brings the receiver up and detects as often as the operator wants. Returns as `RunPolling`.
int RunDetectOnce(const Receiver& receiver, const DetectOnceTest& test, const char* function);

/// Prints the port list and reads a port, any number.
int AskPort(const char* portList);

/// Prints the fields of a timing, one a line; the two 3D fields only where `with3d`.
void PrintTimingFields(const K2V_HDMI_TIMING_T& timing, bool with3d);
