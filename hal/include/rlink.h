// The inter-chip link: sessions between this chip (the host) and the slave chip on the other side
// of the link, commands in both directions and shared ring buffers. C++ only.
#pragma once

#include <cstddef>
#include <cstdint>

// An open session, filled in by the library. All zero before it is opened.
struct RLNK_HOST_SESSION {
  uint32_t class_id;
  uint32_t host;  // the process that opened it
  uint32_t session_id;
  uint32_t state;
  uint32_t reserved;
};

// A parameter: the two numbers of a value, or the address and the size in bytes of memory. The
// slave can only access the lowest 4 GiB of memory, so an address has 32 bits.
struct RLNK_CMD_PARAM {
  uint32_t a;
  uint32_t b;
};

enum : uint32_t { RLNK_PARAM_COUNT = 4 };

// Type of a parameter.
enum RLNK_PARAM_TYPE : uint32_t {
  RLNK_PARAM_NONE = 0,
  RLNK_PARAM_VALUE_IN = 1,
  RLNK_PARAM_VALUE_OUT = 2,
  RLNK_PARAM_VALUE_INOUT = 3,
  RLNK_PARAM_MEMREF_IN = 5,
  RLNK_PARAM_MEMREF_OUT = 6,
  RLNK_PARAM_MEMREF_INOUT = 7,
};

struct RLNK_CMD_PARAMS {
  uint32_t cmd_id;
  uint32_t paramTypes;  // type of parameter i in bits 4i to 4i + 3
  RLNK_CMD_PARAM param[RLNK_PARAM_COUNT];
};

enum RLNK_BUFFER_DIR : uint32_t {
  RLNK_BUFFER_SEND = 0,     // from the host to the slave
  RLNK_BUFFER_RECEIVE = 1,  // from the slave to the host
};

// A ring buffer that host and slave share.
struct RLNK_BUFFER {
  uint32_t handle;  // identifies it in commands
  uint32_t size;    // bytes
  uint32_t dir;     // RLNK_BUFFER_DIR
  uint32_t session_id;
};

// The data waiting in a ring buffer: one part up to its end, and one that starts at its beginning.
struct RLNK_BUFFER_RANGE {
  void* start_1;
  uint32_t size_1;  // bytes
  void* start_2;
  uint32_t size_2;
};

// Called on a thread of the library when the slave invokes a command on the host. What it writes to
// the output parameters is the answer.
typedef void (*RLNK_INVOKE_HANDLER)(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params);

// A function returns 0 or a failure code unless documented otherwise.
class RLink {
 public:
  // A separate link with its own sessions; null if none is available.
  static RLink* Create();
  virtual ~RLink() = default;

  virtual int OpenSession(uint32_t class_id, RLNK_HOST_SESSION* session) = 0;
  // Waits until the slave has finished its work in this session, including its calls of the
  // handler.
  virtual int CloseSession(RLNK_HOST_SESSION* session) = 0;
  virtual int RegisterInvokeCommand(uint32_t class_id, RLNK_INVOKE_HANDLER handler) = 0;
  // Waits for the slave's answer, which is in the output parameters.
  virtual int Send(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) = 0;
  // Does not wait. The command is copied; memory that it refers to must stay valid until the
  // session is closed, because the slave reads it when it executes the command.
  virtual int SendAsync(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) = 0;

  // Null on failure. The library owns the buffer; ReleaseBuffer frees it.
  virtual RLNK_BUFFER* AllocateBuffer(RLNK_HOST_SESSION* session, uint32_t size,
                                      RLNK_BUFFER_DIR dir) = 0;
  virtual int ReleaseBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) = 0;
  // Number of bytes that can be put into the buffer.
  virtual int QueryBufferFreeSize(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) = 0;
  // Number of bytes waiting in the buffer.
  virtual int QueryBufferDataSize(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) = 0;
  // Puts all `size` bytes into the buffer, or none of them. `flags` is 0.
  virtual int SendBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, const void* data,
                         uint32_t size, uint32_t flags) = 0;
  // Takes exactly `size` bytes out of the buffer.
  virtual int GetBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, void* data,
                        uint32_t size) = 0;
  // Returns the location of the waiting data without removing them.
  virtual int GetBufferDataRange(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer,
                                 RLNK_BUFFER_RANGE* range) = 0;
  // Releases `size` bytes that were read in place to the slave.
  virtual int UpdateReadPointer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer, uint32_t size) = 0;
  // Discards all waiting data.
  virtual int FlushBuffer(RLNK_HOST_SESSION* session, RLNK_BUFFER* buffer) = 0;
};

static_assert(sizeof(RLNK_HOST_SESSION) == 5 * 4, "five 32-bit words");
static_assert(offsetof(RLNK_HOST_SESSION, session_id) == 8, "the third word");
static_assert(sizeof(RLNK_CMD_PARAMS) == 10 * 4, "ten 32-bit words");
