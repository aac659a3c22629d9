#include "rlink/LinkArea.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "core/Areas.h"

namespace sim {
namespace {

struct Fault {
  std::string_view name;
  bool Link::*member;
  const char* state;
};

constexpr Fault kFaults[] = {
    {"silent", &Link::silent, ", slave silent"},
    {"wrong", &Link::wrong, ", slave's data wrong"},
    {"full", &Link::full, ", buffers full"},
};

// Called on the board itself, so the process ids are those of its own namespace.
bool IsFree(const LinkSession& session) {
  return session.id == 0 || (kill(session.process, 0) != 0 && errno == ESRCH);
}

Action ParseLink(const Words& words) {
  const auto fault = std::ranges::find(kFaults, words[0], &Fault::name);
  if (fault == std::end(kFaults)) {
    RefuseWord("unknown fault", words[0], "silent, wrong or full");
  }
  const bool on = ParseChoice(words[1], "on", "off");
  return [fault, on](Board& board) { board.link.*fault->member = on; };
}

constexpr Command kCommands[] = {
    {"link", "silent|wrong|full on|off",
     "the slave on the link does not answer, its data have one wrong bit, or all buffers are full",
     2, 2, ParseLink},
};

void Describe(const Board& board, std::ostream& out) {
  out << "link";
  for (const Fault& fault : kFaults) {
    if (board.link.*fault.member) out << fault.state;
  }
  out << ":\n";
  bool any = false;
  for (const LinkSession& session : board.link.sessions) {
    if (session.id == 0) continue;
    any = true;
    char line[64];
    std::snprintf(line, sizeof(line), "  session %08x of class %08x\n", session.id,
                  session.classId);
    out << line;
  }
  if (!any) out << "  no session\n";
}

}  // namespace

constinit const Area kLinkArea = {kCommands, Describe};

uint32_t EnterSession(Board& board, uint32_t classId) {
  const auto place = std::ranges::find_if(board.link.sessions, IsFree);
  if (place == std::end(board.link.sessions)) return 0;
  *place = {++board.link.lastSession, classId, getpid()};
  return place->id;
}

void LeaveSession(Board& board, uint32_t id) {
  const auto place = std::ranges::find(board.link.sessions, id, &LinkSession::id);
  if (place != std::end(board.link.sessions)) *place = {};
}

}  // namespace sim
