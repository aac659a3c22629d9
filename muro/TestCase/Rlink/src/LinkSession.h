// Shared by the link tests: sessions around the body of a test, rounds, and the result.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "LinkMemory.h"
#include "rlink.h"

/// The link library with the memory that asynchronous commands refer to. The slave may read that
/// memory until the library is destroyed, so the memory is declared first and freed last.
struct LinkHost {
  LinkMemory memory;
  std::unique_ptr<RLink> rlink{RLink::Create()};
};

/// An open session and the host that it belongs to.
struct Link {
  RLink& rlink;
  const LinkMemory& memory;
  RLNK_HOST_SESSION* session;
};

/// The body of a test in an open session; returns whether it succeeded.
using LinkBody = bool (*)(const Link& link);

/// Round of a step that is executed only once.
inline constexpr int kNoRound = -1;
/// A step of a test that can be executed in rounds.
using LinkStep = bool (*)(const Link& link, int round);

template <LinkStep step>
bool Once(const Link& link) {
  return step(link, kNoRound);
}

/// Executes `step(round)` kRounds times, or until one fails. Returns whether all succeeded.
bool DoRounds(const std::function<bool(int round)>& step);

template <LinkStep step>
bool InRounds(const Link& link) {
  return DoRounds([&](int round) { return step(link, round); });
}

/// Prints `text` as a line, with the round appended if there is one.
void TellRound(const char* text, int round);

/// Prints the result of a test between lines of stars.
void CheckResult(int ok, const char* name);

/// Called after a session was closed successfully, to print the messages of the test; returns
/// whether the test succeeded.
using LinkClosed = bool (*)(uint32_t sessionId);

/// A complete test of one session of kTestClass: opens it, registers `handler` unless null,
/// executes `body`, closes the session and prints the result under `name`. Returns 1 for success,
/// else 0.
int RunSession(const char* name, RLNK_INVOKE_HANDLER handler, LinkBody body,
               LinkClosed closed = nullptr);

/// Opens a session of `classId`, calls `inside` with it and closes it, with the messages of tests
/// of several sessions. Returns whether everything succeeded; false without a message if there is
/// no library.
bool WithSession(LinkHost& host, uint32_t classId, const std::function<bool(const Link&)>& inside);

/// Sends `params` and waits for the answer. Prints a message on failure.
bool SendCommand(const Link& link, RLNK_CMD_PARAMS* params, int round);

/// Sends the four-letter values and checks the slave's answer.
bool SendValues(const Link& link, int round);

/// Sends the notice, which the slave answers with a command of its own, and does not wait for it.
/// Its memory is that of the session's host. Prints nothing. Returns the result of the HAL, or -1
/// if there is no memory that the slave can access.
int SendNotice(const Link& link);
