// What the link tests have in common: sessions around what a test does, rounds, and the result.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "LinkMemory.h"
#include "rlink.h"

/// The link library with the memory that asynchronous commands refer to. The slave may read that
/// memory until the library is gone, so it is declared first and freed last.
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

/// Opens a session of `classId`, calls `inside` with it and closes it, with the messages of tests
/// of several sessions. Returns whether all went well; false without a word where there is no
/// library.
bool WithSession(LinkHost& host, uint32_t classId, const std::function<bool(const Link&)>& inside);

/// Sends `params` and waits for the answer. Prints a message where that fails.
bool SendCommand(const Link& link, RLNK_CMD_PARAMS* params, int round);

/// Sends the four-letter values and checks the slave's answer.
bool SendValues(const Link& link, int round);

/// Sends the notice that the slave answers with a command of its own, and does not wait for it. Its
/// memory is that of the session's host. Prints nothing. Returns the result of the HAL, or -1 where
/// there is no memory that the slave can reach.
int SendNotice(const Link& link);
