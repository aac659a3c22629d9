#include "Address.h"

#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace network {

namespace {

// A network reserved for examples, so that no real host is addressed by mistake.
constexpr char kBoardAddress[] = "192.0.2.10";
constexpr unsigned char kPrefixBits = 24;
constexpr char kInterface[] = "eth0";

struct Request {
  nlmsghdr header;
  ifaddrmsg address;
  char attributes[64];
};

void Add(Request& request, unsigned short type, const void* data, std::size_t size) {
  const std::size_t end = NLMSG_ALIGN(request.header.nlmsg_len);
  rtattr attribute = {};
  attribute.rta_type = type;
  attribute.rta_len = static_cast<unsigned short>(RTA_LENGTH(size));
  char* const place = reinterpret_cast<char*>(&request) + end;
  std::memcpy(place, &attribute, sizeof(attribute));
  std::memcpy(place + RTA_LENGTH(0), data, size);
  request.header.nlmsg_len = static_cast<unsigned>(end + RTA_SPACE(size));
}

/// All addresses in the networks of the loopback device are the board's own, including the
/// server's. The label makes this one appear as another interface's.
Request AddressRequest(bool present) {
  Request request = {};
  request.header.nlmsg_type = present ? RTM_NEWADDR : RTM_DELADDR;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_ACK;
  if (present) request.header.nlmsg_flags |= NLM_F_CREATE | NLM_F_REPLACE;
  request.header.nlmsg_len = NLMSG_LENGTH(sizeof(request.address));
  request.address.ifa_family = AF_INET;
  request.address.ifa_prefixlen = kPrefixBits;
  request.address.ifa_index = if_nametoindex("lo");
  in_addr address = {};
  inet_pton(AF_INET, kBoardAddress, &address);
  Add(request, IFA_LOCAL, &address, sizeof(address));
  Add(request, IFA_ADDRESS, &address, sizeof(address));
  Add(request, IFA_LABEL, kInterface, sizeof(kInterface));
  return request;
}

/// Sends a request to the kernel. Returns its error number, 0 on success.
int Ask(const Request& request) {
  const int link = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  if (link < 0) return errno;
  struct {
    nlmsghdr header;
    nlmsgerr error;
    char rest[256];
  } answer = {};
  const bool asked = send(link, &request, request.header.nlmsg_len, 0) >= 0 &&
                     recv(link, &answer, sizeof(answer), 0) >= 0;
  const int error = asked ? -answer.error.error : errno;
  close(link);
  return error;
}

}  // namespace

void SetAddress(bool present) {
  const int error = Ask(AddressRequest(present));
  const bool wasSoAlready = present ? error == EEXIST : error == EADDRNOTAVAIL;
  if (error != 0 && !wasSoAlready)
    throw std::system_error(error, std::generic_category(), "the board's network address");
}

}  // namespace network
