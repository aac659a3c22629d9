// What the link tests have in common: sessions around what a test does, rounds, and the result.
#pragma once

#include <cstdint>
#include <functional>

#include "rlink.h"

/// An open session and the library it belongs to.
struct Link {
  RLink& rlink;
  RLNK_HOST_SESSION* session;
};

/// What a test does in an open session; returns whether it went well.
using LinkBody = bool (*)(const Link& link);

/// Round of a step that is done only once.
inline constexpr int kNoRound = -1;
/// A step of a test that can be done in rounds.
using LinkStep = bool (*)(const Link& link, int round);

template <LinkStep step>
bool Once(const Link& link) {
  return step(link, kNoRound);
}

/// Does `step(round)` kRounds times, until one fails. Returns whether all went well.
bool DoRounds(const std::function<bool(int round)>& step);

template <LinkStep step>
bool InRounds(const Link& link) {
  return DoRounds([&](int round) { return step(link, round); });
}

/// Prints `text` as a line, with the round at its end if there is one.
void TellRound(const char* text, int round);

/// Prints the result of a test between lines of stars.
void CheckResult(int ok, const char* name);

/// What a test has to say once its session was closed well; returns whether the test did.
using LinkClosed = bool (*)(uint32_t sessionId);

/// A whole test of one session of kTestClass: opens it, registers `handler` if there is one, does
/// `body`, closes the session and tells the result under `name`. Returns 1 for success, else 0.
int RunSession(const char* name, RLNK_INVOKE_HANDLER handler, LinkBody body,
               LinkClosed closed = nullptr);

/// Opens a session of `classId`, calls `inside` with it and closes it, as tests of several sessions
/// tell it. Returns whether all went well.
bool WithSession(RLink& rlink, uint32_t classId, const std::function<bool(const Link&)>& inside);

/// Sends `params` and waits for the answer. Prints a message where that fails.
bool SendCommand(const Link& link, RLNK_CMD_PARAMS* params, int round);

/// Sends the four-letter values and checks the slave's answer.
bool SendValues(const Link& link, int round);

/// Sends the notice that the slave answers with a command of its own. Prints nothing.
int SendNotice(const Link& link);
