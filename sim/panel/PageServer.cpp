#include "PageServer.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <openssl/crypto.h>
#include <openssl/rand.h>
#include <pthread.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "Image.h"
#include "LiveBoard.h"
#include "PageFiles.h"
#include "Panel.h"
#include "core/SharedBoard.h"

namespace panel {
namespace {

constexpr size_t kMostCommandBytes = 4096;

/// Headers of every response: nothing is loaded from elsewhere, and no page may frame it.
constexpr const char* kHeaders[][2] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
     "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
};

struct Answer {
  unsigned status = MHD_HTTP_OK;
  std::string type = "text/plain; charset=utf-8";
  std::string body{};
  std::string tag{};
};

/// The part of a request that has been received.
struct Request {
  std::string body;
  bool isTooLong = false;
};

Answer Refusal(unsigned status, const std::string& why) {
  return {.status = status, .body = why + "\n"};
}

std::string NewToken() {
  unsigned char bytes[16];
  if (RAND_bytes(bytes, sizeof(bytes)) != 1) throw std::runtime_error("no random numbers");
  std::string token;
  for (const unsigned char byte : bytes) token += Printed("%02x", byte);
  return token;
}

std::string Header(MHD_Connection* connection, const char* name) {
  const char* value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  return value == nullptr ? "" : value;
}

class PageServer {
 public:
  PageServer(const cvnsim::BoardFiles& files, uint16_t port) : board_(files), token_(NewToken()) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    daemon_ =
        MHD_start_daemon(MHD_USE_INTERNAL_POLLING_THREAD, port, nullptr, nullptr,
                         &PageServer::Serve, this, MHD_OPTION_SOCK_ADDR, &address,
                         MHD_OPTION_CONNECTION_LIMIT, 32U, MHD_OPTION_CONNECTION_TIMEOUT, 30U,
                         MHD_OPTION_NOTIFY_COMPLETED, &PageServer::Forget, nullptr, MHD_OPTION_END);
    if (daemon_ == nullptr) {
      throw std::runtime_error("127.0.0.1:" + std::to_string(port) +
                               " cannot be served: " + std::strerror(errno));
    }
    const MHD_DaemonInfo* info = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_BIND_PORT);
    host_ = "127.0.0.1:" + std::to_string(info->port);
  }
  ~PageServer() { MHD_stop_daemon(daemon_); }
  PageServer(const PageServer&) = delete;
  PageServer& operator=(const PageServer&) = delete;

  std::string Address() const { return "http://" + host_ + "/" + token_ + "/"; }

 private:
  static MHD_Result Serve(void* self, MHD_Connection* connection, const char* path,
                          const char* method, const char*, const char* data, size_t* size,
                          void** state) {
    if (*state == nullptr) {
      *state = new Request;
      return MHD_YES;
    }
    auto& request = *static_cast<Request*>(*state);
    if (*size > 0) {
      request.isTooLong |= request.body.size() + *size > kMostCommandBytes;
      if (!request.isTooLong) request.body.append(data, *size);
      *size = 0;
      return MHD_YES;
    }
    auto& server = *static_cast<PageServer*>(self);
    return Send(connection, server.AnswerTo(connection, path, method, request));
  }

  static void Forget(void*, MHD_Connection*, void** state, MHD_RequestTerminationCode) {
    delete static_cast<Request*>(*state);
    *state = nullptr;
  }

  static MHD_Result Send(MHD_Connection* connection, const Answer& answer) {
    MHD_Response* response = MHD_create_response_from_buffer(
        answer.body.size(), const_cast<char*>(answer.body.data()), MHD_RESPMEM_MUST_COPY);
    for (const auto& [name, value] : kHeaders) MHD_add_response_header(response, name, value);
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, answer.type.c_str());
    if (!answer.tag.empty())
      MHD_add_response_header(response, MHD_HTTP_HEADER_ETAG, answer.tag.c_str());
    const MHD_Result queued = MHD_queue_response(connection, answer.status, response);
    MHD_destroy_response(response);
    return queued;
  }

  Answer AnswerTo(MHD_Connection* connection, const std::string& path, const std::string& method,
                  const Request& request) {
    try {
      if (const std::string why = ReasonAgainst(connection, path); !why.empty())
        return Refusal(MHD_HTTP_FORBIDDEN, why);
      const std::string name = path.substr(token_.size() + 2);
      if (name == "command") return AnswerCommand(method, request);
      if (method != "GET") return Refusal(MHD_HTTP_METHOD_NOT_ALLOWED, "only GET");
      if (name == "picture.png") return AnswerPicture(Header(connection, "If-None-Match"));
      return AnswerFile(name);
    } catch (const std::exception& error) {
      return Refusal(MHD_HTTP_INTERNAL_SERVER_ERROR, error.what());
    }
  }

  /// Why a request is refused; empty if it comes from our page, or from someone who knows its
  /// address. Requests of other pages that could do harm carry their origin, and after a DNS
  /// rebinding the host name is not ours.
  std::string ReasonAgainst(MHD_Connection* connection, const std::string& path) const {
    const std::string start = "/" + token_ + "/";
    if (path.size() < start.size() || CRYPTO_memcmp(path.data(), start.data(), start.size()) != 0)
      return "this address lacks its token; cvnsim panel prints the whole";
    if (Header(connection, "Host") != host_) return "this is not the host's name";
    const std::string origin = Header(connection, "Origin");
    if (!origin.empty() && origin != "http://" + host_) return "another origin";
    const std::string site = Header(connection, "Sec-Fetch-Site");
    if (site == "cross-site" || site == "same-site") return "another site";
    return "";
  }

  Answer AnswerFile(const std::string& name) {
    const struct {
      const char* name;
      const char* type;
      std::string_view text;
    } kFiles[] = {{"", "text/html; charset=utf-8", kIndexHtml},
                  {"page.css", "text/css; charset=utf-8", kPageCss},
                  {"page.js", "text/javascript; charset=utf-8", kPageJs}};
    for (const auto& file : kFiles) {
      if (name == file.name) return {.type = file.type, .body = std::string(file.text)};
    }
    if (name != "state.json") return Refusal(MHD_HTTP_NOT_FOUND, "there is no such page");
    const std::string why = board_.Find();
    return {.type = "application/json",
            .body = why.empty() ? BoardJson(board_.Files())
                                : "{\"on\":false,\"why\":" + JsonString(why) + "}"};
  }

  Answer AnswerPicture(const std::string& known) {
    if (!board_.Find().empty()) return {.status = MHD_HTTP_NO_CONTENT};
    const AVFrame& picture = panel_.Look();
    const std::string tag = Printed("\"%llu\"", static_cast<unsigned long long>(panel_.Number()));
    if (tag == known) return {.status = MHD_HTTP_NOT_MODIFIED, .tag = tag};
    if (tag != pngTag_) png_ = ToPng(picture);
    pngTag_ = tag;
    return {.type = "image/png", .body = std::string(png_.begin(), png_.end()), .tag = tag};
  }

  /// The command's words are those of cvnsim, and so are the error messages.
  Answer AnswerCommand(const std::string& method, const Request& request) {
    if (method != "POST") return Refusal(MHD_HTTP_METHOD_NOT_ALLOWED, "only POST");
    if (request.isTooLong) return Refusal(MHD_HTTP_CONTENT_TOO_LARGE, "too long for a command");
    std::string why;
    try {
      Do(request.body);
    } catch (const std::runtime_error& error) {
      why = error.what();
    }
    return {.type = "application/json",
            .body = why.empty() ? "{\"done\":true}"
                                : "{\"done\":false,\"why\":" + JsonString(why) + "}"};
  }

  void Do(const std::string& line) {
    const sim::Action action = sim::ParseCommand(sim::Split(line));
    if (const std::string why = board_.Find(); !why.empty()) throw std::runtime_error(why);
    action(*sim::BoardLock());
  }

  LiveBoard board_;
  const std::string token_;
  std::string host_;
  Panel panel_;
  Bytes png_;
  std::string pngTag_;
  MHD_Daemon* daemon_ = nullptr;
};

struct Options {
  uint16_t port = 0;    // 0: any free port
  pid_t companion = 0;  // the server ends when that process does; 0: none
};

Options ParseOptions(const sim::Words& words) {
  Options options;
  for (size_t i = 0; i < words.size(); i += 2) {
    const bool hasValue = i + 1 < words.size();
    if (words[i] == "--port" && hasValue)
      options.port = static_cast<uint16_t>(sim::ParseNumber(words[i + 1], "port", 1, 65535));
    else if (words[i] == "--with" && hasValue)
      options.companion =
          static_cast<pid_t>(sim::ParseNumber(words[i + 1], "process", 1, INT32_MAX));
    else
      sim::RefuseWord("unknown option", sim::Join(words, i), "--port N or --with PROCESS");
  }
  return options;
}

sigset_t EndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
  return signals;
}

}  // namespace

void RunPage(const sim::Words& words, const cvnsim::BoardFiles& files) {
  const Options options = ParseOptions(words);
  // Before the server's thread starts, which must not receive these signals.
  const sigset_t signals = EndingSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  const PageServer server(files, options.port);
  std::cout << "Panel: " << server.Address() << std::endl;
  constexpr timespec kBetweenLooks = {0, 500'000'000};
  while (sigtimedwait(&signals, nullptr, &kBetweenLooks) < 0) {
    if (options.companion != 0 && kill(options.companion, 0) != 0 && errno == ESRCH) return;
  }
}

}  // namespace panel
