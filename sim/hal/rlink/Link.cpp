// The link library: sessions, buffers and handlers of the host, with one thread for the slave and
// another one that calls the handlers.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "core/Call.h"
#include "rlink.h"
#include "rlink/LinkArea.h"
#include "rlink/Ring.h"
#include "rlink/Slave.h"
#include "rlink/Worker.h"

namespace sim {

// Found by argument-dependent lookup from CallText.h, so not in the unnamed namespace.
static void Put(CallText& out, const RLNK_BUFFER_RANGE& range) {
  out.text << '{' << range.size_1 << '+' << range.size_2 << '}';
}

static void Put(CallText& out, const RLNK_CMD_PARAMS& params) {
  char text[64];
  std::snprintf(text, sizeof(text), "{cmd=0x%x, types=0x%x", params.cmd_id, params.paramTypes);
  out.text << text;
  uint32_t types = params.paramTypes;
  for (const RLNK_CMD_PARAM& param : params.param) {
    const bool isMemory = (types & 0xF) >= RLNK_PARAM_MEMREF_IN;
    std::snprintf(text, sizeof(text), isMemory ? ", memory:%x" : ", %x:%x",
                  isMemory ? param.b : param.a, param.b);
    if ((types & 0xF) != RLNK_PARAM_NONE) out.text << text;
    types >>= 4;
  }
  out.text << '}';
}

static void Put(CallText& out, const RLink&) {
  out.text << "{link}";
}

static void Put(CallText& out, RLNK_INVOKE_HANDLER handler) {
  out.text << (handler == nullptr ? "NULL" : "{handler}");
}

namespace {

constexpr auto kAnswerTimeout = std::chrono::milliseconds(500);
constexpr auto kAsyncDelay = std::chrono::milliseconds(100);  // until the slave starts on it

/// A buffer of this link. Its destruction releases the ring for all processes, unless it is the
/// copy of a forked child.
struct SharedBuffer {
  RLNK_BUFFER record;
  std::shared_ptr<Ring> ring;
  pid_t owner = getpid();

  SharedBuffer(const RLNK_BUFFER& buffer, std::shared_ptr<Ring> shared)
      : record(buffer), ring(std::move(shared)) {}
  ~SharedBuffer() {
    if (owner == getpid()) ring->Release();
  }
  SharedBuffer(const SharedBuffer&) = delete;
  SharedBuffer& operator=(const SharedBuffer&) = delete;
};

/// Serves one call like `Call`, but without locking the board, which the slave needs meanwhile.
template <typename Work, typename... Arguments>
auto ServeCall(const std::string& function, Work work, const Arguments&... arguments) {
  const std::string name = "RLink::" + function;
  const auto programmed = TakeFailure(*BoardLock(), name.c_str());
  using Result = std::invoke_result_t<Work>;
  const Result result = programmed ? ProgrammedResult<Result>(*programmed) : work();
  const BoardLock board;
  Note(FormatCall(name.c_str(), result, arguments...));
  return result;
}

class SimLink : public RLink {
 public:
  SimLink() = default;
  ~SimLink() override;

  int OpenSession(uint32_t class_id, RLNK_HOST_SESSION* session) override;
  int CloseSession(RLNK_HOST_SESSION* session) override;
  int RegisterInvokeCommand(uint32_t class_id, RLNK_INVOKE_HANDLER handler) override;
  int Send(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) override;
  int SendAsync(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) override;
  RLNK_BUFFER* AllocateBuffer(RLNK_HOST_SESSION* session, uint32_t size,
                              RLNK_BUFFER_DIR dir) override;
  int ReleaseBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) override;
  int QueryBufferFreeSize(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) override;
  int QueryBufferDataSize(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) override;
  int SendBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, const void* data, uint32_t size,
                 uint32_t flags) override;
  int GetBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, void* data,
                uint32_t size) override;
  int GetBufferDataRange(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer,
                         RLNK_BUFFER_RANGE* range) override;
  int UpdateReadPointer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, uint32_t size) override;
  int FlushBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) override;

 private:
  using Buffers = std::vector<std::unique_ptr<SharedBuffer>>;

  bool IsOpen(const RLNK_HOST_SESSION* session);
  void Enter(const RLNK_HOST_SESSION& session);
  void Forget(uint32_t sessionId);
  void WaitForSlave();
  int Serve(const RLNK_HOST_SESSION& session, RLNK_CMD_PARAMS& params);
  void CallHandler(RLNK_HOST_SESSION session, RLNK_CMD_PARAMS params);
  Buffers::iterator Find(const RLNK_HOST_SESSION* session, const RLNK_BUFFER* buffer);
  RLNK_BUFFER* AddBuffer(const RLNK_HOST_SESSION* session, uint32_t size, RLNK_BUFFER_DIR dir);
  template <typename Work, typename... Arguments>
  int OnRing(const char* function, const RLNK_HOST_SESSION* session, const RLNK_BUFFER* buffer,
             Work work, const Arguments&... arguments);

  std::mutex mutex_;  // guards the members below, except the threads
  std::map<uint32_t, RLNK_HOST_SESSION> sessions_;
  std::map<uint32_t, RLNK_INVOKE_HANDLER> handlers_;  // by class
  Buffers buffers_;
  Worker host_;   // calls handlers
  Worker slave_;  // serves commands
};

SimLink::~SimLink() {
  WaitForSlave();
  const BoardLock board;
  for (const auto& [id, session] : sessions_) LeaveSession(*board, id);
}

// Handlers may send commands, so the slave is drained before and after them.
void SimLink::WaitForSlave() {
  slave_.Drain();
  host_.Drain();
  slave_.Drain();
}

bool SimLink::IsOpen(const RLNK_HOST_SESSION* session) {
  const std::lock_guard lock(mutex_);
  return session != nullptr && sessions_.contains(session->session_id);
}

void SimLink::Enter(const RLNK_HOST_SESSION& session) {
  const std::lock_guard lock(mutex_);
  sessions_[session.session_id] = session;
}

void SimLink::Forget(uint32_t sessionId) {
  {
    const std::lock_guard lock(mutex_);
    sessions_.erase(sessionId);
    std::erase_if(buffers_,
                  [=](const auto& buffer) { return buffer->record.session_id == sessionId; });
  }
  LeaveSession(*BoardLock(), sessionId);
}

int SimLink::OpenSession(uint32_t class_id, RLNK_HOST_SESSION* session) {
  const auto open = [&]() -> int {
    if (session == nullptr) return K2V_RHAL_ERR_PARAM;
    const uint32_t id = EnterSession(*BoardLock(), class_id);
    if (id == 0) return K2V_RHAL_ERR_BUSY;
    *session = {class_id, static_cast<uint32_t>(getpid()), id, 1, 0};
    Enter(*session);
    return K2V_RHAL_OK;
  };
  return ServeCall(__func__, open, class_id, Out{session});
}

int SimLink::CloseSession(RLNK_HOST_SESSION* session) {
  const auto close = [&]() -> int {
    if (!IsOpen(session)) return K2V_RHAL_ERR_ORDER;
    WaitForSlave();
    Forget(session->session_id);
    session->state = 0;
    return K2V_RHAL_OK;
  };
  return ServeCall(__func__, close, session);
}

int SimLink::RegisterInvokeCommand(uint32_t class_id, RLNK_INVOKE_HANDLER handler) {
  const auto enter = [&]() -> int {
    const std::lock_guard lock(mutex_);
    handlers_[class_id] = handler;
    return K2V_RHAL_OK;
  };
  return ServeCall(__func__, enter, class_id, handler);
}

int SimLink::Send(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) {
  const auto send = [&]() -> int {
    if (params == nullptr) return K2V_RHAL_ERR_PARAM;
    if (!IsOpen(session)) return K2V_RHAL_ERR_ORDER;
    if (BoardLock()->link.silent) {
      std::this_thread::sleep_for(kAnswerTimeout);
      return K2V_RHAL_ERR_FAIL;
    }
    int result = 0;
    slave_.Post([&] { result = Serve(*session, *params); });
    slave_.Drain();
    return result;
  };
  return ServeCall(__func__, send, session, params);
}

int SimLink::SendAsync(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) {
  const auto send = [&]() -> int {
    if (params == nullptr) return K2V_RHAL_ERR_PARAM;
    if (!IsOpen(session)) return K2V_RHAL_ERR_ORDER;
    slave_.Post([this, from = *session, command = *params]() mutable {
      std::this_thread::sleep_for(kAsyncDelay);
      Serve(from, command);
    });
    return K2V_RHAL_OK;
  };
  return ServeCall(__func__, send, session, params);
}

// Runs on the slave's thread.
int SimLink::Serve(const RLNK_HOST_SESSION& session, RLNK_CMD_PARAMS& params) {
  const Link faults = BoardLock()->link;
  if (faults.silent) return K2V_RHAL_ERR_FAIL;
  const auto invoke = [this, session](const RLNK_CMD_PARAMS& command) {
    host_.Post([this, session, command] { CallHandler(session, command); });
  };
  return ServeCommand({Ring::Find, invoke, faults.wrong}, params);
}

// Runs on the thread that calls handlers.
void SimLink::CallHandler(RLNK_HOST_SESSION session, RLNK_CMD_PARAMS params) {
  RLNK_INVOKE_HANDLER handler = nullptr;
  {
    const std::lock_guard lock(mutex_);
    const auto found = handlers_.find(session.class_id);
    if (found != handlers_.end()) handler = found->second;
  }
  if (handler != nullptr) handler(&session, &params);
}

// Never reads `buffer`: the record of a released one is gone, so only its address is compared.
SimLink::Buffers::iterator SimLink::Find(const RLNK_HOST_SESSION* session,
                                         const RLNK_BUFFER* buffer) {
  return std::ranges::find_if(buffers_, [=](const auto& candidate) {
    return session != nullptr && &candidate->record == buffer &&
           candidate->record.session_id == session->session_id;
  });
}

RLNK_BUFFER* SimLink::AddBuffer(const RLNK_HOST_SESSION* session, uint32_t size,
                                RLNK_BUFFER_DIR dir) {
  constexpr uint32_t kMaxBytes = 16 << 20;
  if (!IsOpen(session) || size == 0 || size > kMaxBytes || dir > RLNK_BUFFER_RECEIVE) {
    return nullptr;
  }
  const uint32_t handle = ++BoardLock()->link.lastBuffer;
  std::shared_ptr<Ring> ring = Ring::Create(handle, size);
  if (ring == nullptr) return nullptr;
  const std::lock_guard lock(mutex_);
  const RLNK_BUFFER record = {handle, size, dir, session->session_id};
  return &buffers_.emplace_back(std::make_unique<SharedBuffer>(record, std::move(ring)))->record;
}

RLNK_BUFFER* SimLink::AllocateBuffer(RLNK_HOST_SESSION* session, uint32_t size,
                                     RLNK_BUFFER_DIR dir) {
  return ServeCall(
      __func__, [&] { return AddBuffer(session, size, dir); }, session, size, uint32_t{dir});
}

/// Serves a call on a buffer: `work` gets its ring and whether the link's buffers are full.
template <typename Work, typename... Arguments>
int SimLink::OnRing(const char* function, const RLNK_HOST_SESSION* session,
                    const RLNK_BUFFER* buffer, Work work, const Arguments&... arguments) {
  uint32_t handle = 0;
  const auto serve = [&]() -> int {
    const bool full = BoardLock()->link.full;
    const std::lock_guard lock(mutex_);
    const auto found = Find(session, buffer);
    if (found == buffers_.end()) return K2V_RHAL_ERR_PARAM;
    handle = (*found)->record.handle;
    return work(*(*found)->ring, full);
  };
  return ServeCall(function, serve, session, handle, arguments...);
}

int SimLink::ReleaseBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) {
  const auto release = [&](Ring&, bool) -> int {
    buffers_.erase(Find(session, buffer));
    return K2V_RHAL_OK;
  };
  return OnRing(__func__, session, buffer, release);
}

int SimLink::QueryBufferFreeSize(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) {
  return OnRing(__func__, session, buffer,
                [](Ring& ring, bool full) { return full ? 0 : static_cast<int>(ring.Free()); });
}

int SimLink::QueryBufferDataSize(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) {
  return OnRing(__func__, session, buffer,
                [](Ring& ring, bool) { return static_cast<int>(ring.Used()); });
}

int SimLink::SendBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, const void* data,
                        uint32_t size, uint32_t flags) {
  const auto put = [&](Ring& ring, bool full) -> int {
    if (data == nullptr || flags != 0) return K2V_RHAL_ERR_PARAM;
    const std::span<const uint8_t> bytes(static_cast<const uint8_t*>(data), size);
    return !full && ring.Put(bytes) ? K2V_RHAL_OK : K2V_RHAL_ERR_BUSY;
  };
  return OnRing(__func__, session, buffer, put, size, flags);
}

int SimLink::GetBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, void* data, uint32_t size) {
  const auto take = [&](Ring& ring, bool) -> int {
    const std::span<uint8_t> bytes(static_cast<uint8_t*>(data), size);
    return data != nullptr && ring.Take(bytes) ? K2V_RHAL_OK : K2V_RHAL_ERR_PARAM;
  };
  return OnRing(__func__, session, buffer, take, size);
}

int SimLink::GetBufferDataRange(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer,
                                RLNK_BUFFER_RANGE* range) {
  const auto show = [&](Ring& ring, bool) -> int {
    if (range == nullptr) return K2V_RHAL_ERR_PARAM;
    const auto [first, second] = ring.Waiting();
    *range = {first.data(), static_cast<uint32_t>(first.size()), second.data(),
              static_cast<uint32_t>(second.size())};
    return K2V_RHAL_OK;
  };
  return OnRing(__func__, session, buffer, show, Out{range});
}

int SimLink::UpdateReadPointer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, uint32_t size) {
  const auto drop = [&](Ring& ring, bool) -> int {
    return ring.Drop(size) ? K2V_RHAL_OK : K2V_RHAL_ERR_PARAM;
  };
  return OnRing(__func__, session, buffer, drop, size);
}

int SimLink::FlushBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) {
  const auto flush = [](Ring& ring, bool) -> int {
    ring.DropAll();
    return K2V_RHAL_OK;
  };
  return OnRing(__func__, session, buffer, flush);
}

RLink* CreateLink() {
  return new SimLink;
}

}  // namespace
}  // namespace sim

RLink* RLink::Create() {
  return sim::ServeCall("Create", sim::CreateLink);
}
