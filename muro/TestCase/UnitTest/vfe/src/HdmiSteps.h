// The frame of the HDMI receiver unit tests and their common steps.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>

#include "k2v/vfe_hdmi.h"

namespace hdmi_steps {

/// Prints the title of a test: the call under test, or the test's own name.
void PrintTitle(const char* underTest);

/// Prints the result line of a test that ends early. Returns false.
bool Fail(const char* reason);

/// Returns whether a HAL call succeeded; if not, prints the result line with the call's name.
bool Succeeded(const char* call, int result);

/// Runs a test: its title, its steps (true if all succeeded) and then `passed` and uninitialise.
/// Returns 0 or 1.
template <typename Steps>
int Run(const char* underTest, Steps steps, const char* passed = "Result : Passed") {
  PrintTitle(underTest);
  if (!steps()) return 1;
  std::puts(passed);
  K2V_RHAL_VFE_HDMI_Uninitialize();
  return 0;
}

/// One numbered step: prints "N. CALL" and makes the call. False, after the result line, on
/// failure.
template <typename Make>
bool Step(int number, const char* call, Make make) {
  std::printf("%d. %s\n", number, call);
  return Succeeded(call, make());
}

/// The same with the port in the step's line.
template <typename Make>
bool PortStep(int number, const char* call, uint8_t port, Make make) {
  std::printf("%d. %s (port%d) \n", number, call, port);
  return Succeeded(call, make());
}

// Steps 1, 2 and `number`.
bool Initialize();
bool InitializeAndOpen();
bool Connect(int number, uint8_t port);

/// Step `number`: reads and prints the connection state.
bool PrintConnectionState(int number, uint8_t port);

/// Reads the connection state until it is `wanted`, for half a minute at most. False if it never
/// was; empty, after the result line, if the state could not be read.
std::optional<bool> AwaitConnectionState(uint8_t port, bool wanted);

/// Steps 3 to 5 of the tests that need a signal: our EDID and HDCP data, the connected port, its
/// clock status. Asks the operator to plug in a cable if there is none, and continues without one
/// after half a minute.
bool BringUp(uint8_t port);

/// The HDCP data that the tests write, K2V_HDMI_HDCP_BYTES: not real keys.
const uint8_t* HdcpTestData();

/// Prompts for a port until the answer is 0 to 3.
uint8_t get_port();

}  // namespace hdmi_steps
