// Tests of the ring buffers that host and slave share.
#include <cstdio>
#include <cstring>
#include <functional>
#include <numeric>
#include <optional>
#include <vector>

#include "LinkCommands.h"
#include "LinkSession.h"
#include "RlinkTestCase.h"

namespace {

constexpr uint32_t kBufferBytes = 4096;
constexpr uint32_t kBytes = 1024;
// Does not divide the buffer's size, so that some rounds wrap around at its end.
constexpr uint32_t kRoundBytes = 1500;

using Bytes = std::vector<unsigned char>;

struct SharedBuffer {
  Link link;
  RLNK_BUFFER* record;

  int FreeSize() const { return link.rlink.QueryBufferFreeSize(link.session, record); }
  int DataSize() const { return link.rlink.QueryBufferDataSize(link.session, record); }
};

/// A step of a buffer test; returns whether it succeeded.
using BufferStep = bool (*)(const SharedBuffer& buffer, int round);

/// Name of a buffer in the messages of its allocation and release.
struct BufferName {
  const char* handle;
  const char* suffix;
};

constexpr BufferName kTheBuffer = {"Buffer", ""};
constexpr BufferName kSendBuffer = {"Send buffer", ""};
constexpr BufferName kReceiveBuffer = {"Recv buffer", " (Recv)"};

bool Release(const SharedBuffer& buffer, const BufferName& name) {
  const bool ok = buffer.link.rlink.ReleaseBuffer(buffer.link.session, buffer.record) == 0;
  std::printf("ReleaseBuffer%s %s.\n", name.suffix, ok ? "success" : "failed");
  return ok;
}

/// Calls `inside` with a new buffer and releases it. Returns whether everything succeeded.
bool WithBuffer(const Link& link, RLNK_BUFFER_DIR dir, const BufferName& name,
                const std::function<bool(const SharedBuffer&)>& inside) {
  RLNK_BUFFER* const record = link.rlink.AllocateBuffer(link.session, kBufferBytes, dir);
  if (record == nullptr) {
    std::printf("AllocateBuffer%s failed.\n", name.suffix);
    return false;
  }
  std::printf("AllocateBuffer success. %s handle = %08x.\n", name.handle, record->handle);
  const SharedBuffer buffer{link, record};
  const bool ok = inside(buffer);
  return Release(buffer, name) && ok;
}

template <RLNK_BUFFER_DIR dir, BufferStep step>
bool BufferOnce(const Link& link) {
  return WithBuffer(link, dir, kTheBuffer,
                    [](const SharedBuffer& buffer) { return step(buffer, kNoRound); });
}

template <RLNK_BUFFER_DIR dir, BufferStep step>
bool BufferInRounds(const Link& link) {
  return WithBuffer(link, dir, kTheBuffer, [](const SharedBuffer& buffer) {
    return DoRounds([&](int round) { return step(buffer, round); });
  });
}

uint32_t BytesOf(int round) {
  return round == kNoRound ? kBytes : kRoundBytes;
}

uint32_t Checksum(const Bytes& bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), uint32_t{0});
}

int TellFreeSize(const SharedBuffer& buffer) {
  const int size = buffer.FreeSize();
  std::printf("QueryBufferFreeSize = %d\n", size);
  return size;
}

int TellDataSize(const SharedBuffer& buffer) {
  const int size = buffer.DataSize();
  std::printf("QueryBufferDataSize = %d\n", size);
  return size;
}

/// Puts bytes of value one, plus the round's number in rounds, into the buffer. Returns their
/// checksum.
std::optional<uint32_t> PutBytes(const SharedBuffer& buffer, int round) {
  const int value = round == kNoRound ? 1 : 1 + round;
  const Bytes bytes(BytesOf(round), static_cast<unsigned char>(value));
  const auto size = static_cast<uint32_t>(bytes.size());
  TellFreeSize(buffer);
  const Link& link = buffer.link;
  if (link.rlink.SendBuffer(link.session, buffer.record, bytes.data(), size, 0) != 0) {
    std::puts("SendBuffer failed.");
    return std::nullopt;
  }
  const uint32_t checksum = Checksum(bytes);
  std::printf("SendBuffer %d byte success. checksum = %08x\n", static_cast<int>(size), checksum);
  TellFreeSize(buffer);
  return checksum;
}

bool TellChecksum(bool ok, uint32_t received, int round) {
  if (ok) {
    TellRound("Return value correct.", round);
  } else {
    std::printf("Return value (%08x) incorrect.\n", received);
  }
  return ok;
}

bool SendData(const SharedBuffer& buffer, int round) {
  const std::optional<uint32_t> checksum = PutBytes(buffer, round);
  if (!checksum) return false;
  RLNK_CMD_PARAMS params{
      kCommandTakeData, 0x211, {{buffer.record->handle, BytesOf(round)}, {*checksum, 0}, {}, {}}};
  if (!SendCommand(buffer.link, &params, round)) return false;
  const uint32_t received = params.param[2].a;
  return TellChecksum(received == *checksum, received, round);
}

/// Makes the slave put data into the buffer. Returns their checksum when they have arrived.
std::optional<uint32_t> LetSlavePutData(const SharedBuffer& buffer, int round) {
  const uint32_t first = round == kNoRound ? 1 : static_cast<uint32_t>(1 + round);
  RLNK_CMD_PARAMS params{
      kCommandPutData, 0x211, {{buffer.record->handle, BytesOf(round)}, {first, 0}, {}, {}}};
  if (!SendCommand(buffer.link, &params, round)) return std::nullopt;
  const int size = TellDataSize(buffer);
  if (size == static_cast<int>(BytesOf(round))) return params.param[2].a;
  if (size == 0 && round != kNoRound) {
    std::puts("Expect data from slave, but got nothing.");
  } else {
    std::printf("Buffer data size(%d) incorrect.\n", size);
  }
  return std::nullopt;
}

/// Reads the data in place and releases their space.
bool ReadInPlace(const SharedBuffer& buffer, Bytes* bytes) {
  const Link& link = buffer.link;
  RLNK_BUFFER_RANGE range{};
  if (link.rlink.GetBufferDataRange(link.session, buffer.record, &range) != 0 ||
      uint64_t{range.size_1} + range.size_2 != bytes->size() ||
      (range.size_1 > 0 && range.start_1 == nullptr) ||
      (range.size_2 > 0 && range.start_2 == nullptr)) {
    std::puts("GetAvailBufferRange failed.");
    return false;
  }
  std::printf("Buffer start_1 = %p\n", range.start_1);
  std::printf("Buffer size_1 = %d\n", static_cast<int>(range.size_1));
  std::printf("Buffer start_2 = %p\n", range.start_2);
  std::printf("Buffer size_2 = %d\n", static_cast<int>(range.size_2));
  if (range.size_1 > 0) std::memcpy(bytes->data(), range.start_1, range.size_1);
  if (range.size_2 > 0) std::memcpy(bytes->data() + range.size_1, range.start_2, range.size_2);
  std::puts("Copy data done.");
  const auto size = static_cast<uint32_t>(bytes->size());
  if (link.rlink.UpdateReadPointer(link.session, buffer.record, size) == 0) return true;
  std::puts("UpdateReadPointer failed.");
  return false;
}

/// Reads the data through a copy made by the library.
bool ReadCopied(const SharedBuffer& buffer, Bytes* bytes) {
  const Link& link = buffer.link;
  const auto size = static_cast<uint32_t>(bytes->size());
  if (link.rlink.GetBuffer(link.session, buffer.record, bytes->data(), size) == 0) return true;
  std::puts("GetBuffer failed.");
  return false;
}

template <bool (*read)(const SharedBuffer&, Bytes*)>
bool ReceiveData(const SharedBuffer& buffer, int round) {
  const std::optional<uint32_t> checksum = LetSlavePutData(buffer, round);
  Bytes bytes(BytesOf(round));
  if (!checksum || !read(buffer, &bytes)) return false;
  return TellChecksum(Checksum(bytes) == *checksum, *checksum, round);
}

bool Flush(const SharedBuffer& buffer) {
  const bool ok = buffer.link.rlink.FlushBuffer(buffer.link.session, buffer.record) == 0;
  std::puts(ok ? "FlushBuffer success." : "FlushBuffer failed.");
  return ok;
}

bool CheckFreeAfterFlush(const SharedBuffer& buffer, int round) {
  const int size = buffer.FreeSize();
  if (size == static_cast<int>(kBufferBytes)) return true;
  if (round == kNoRound) {
    std::printf("Buffer free size(%d) incorrect after flushing buffer.\n", size);
  } else {
    std::printf("Buffer free size(%d/%d) incorrect after flushing buffer.\n", size,
                static_cast<int>(kBufferBytes));
  }
  return false;
}

/// Flushed data do not reach the slave; data put in afterwards do.
bool FlushSent(const SharedBuffer& buffer, int round) {
  return PutBytes(buffer, round) && Flush(buffer) && CheckFreeAfterFlush(buffer, round) &&
         SendData(buffer, round);
}

bool FlushReceived(const SharedBuffer& buffer, int round) {
  if (!LetSlavePutData(buffer, round) || !Flush(buffer)) return false;
  const int size = buffer.DataSize();
  if (size == 0) return true;
  std::printf("Buffer data size(%d) incorrect after flushing buffer.\n", size);
  return false;
}

bool AllocateBoth(const Link& link) {
  const auto tellFree = [](const SharedBuffer& buffer) { return TellFreeSize(buffer) >= 0; };
  return WithBuffer(link, RLNK_BUFFER_SEND, kSendBuffer, [&](const SharedBuffer& send) {
    return tellFree(send) && WithBuffer(link, RLNK_BUFFER_RECEIVE, kReceiveBuffer, tellFree);
  });
}

}  // namespace

int TestFunc_Buffer_Send() {
  return RunSession(__func__, nullptr, BufferOnce<RLNK_BUFFER_SEND, SendData>);
}

int TestFunc_Buffer_Send_Multiple() {
  return RunSession(__func__, nullptr, BufferInRounds<RLNK_BUFFER_SEND, SendData>);
}

int TestFunc_Buffer_Get_1() {
  return RunSession(__func__, nullptr, BufferOnce<RLNK_BUFFER_RECEIVE, ReceiveData<ReadInPlace>>);
}

int TestFunc_Buffer_Get_1_Multiple() {
  return RunSession(__func__, nullptr,
                    BufferInRounds<RLNK_BUFFER_RECEIVE, ReceiveData<ReadInPlace>>);
}

int TestFunc_Buffer_Get_2() {
  return RunSession(__func__, nullptr, BufferOnce<RLNK_BUFFER_RECEIVE, ReceiveData<ReadCopied>>);
}

int TestFunc_Buffer_Get_2_Multiple() {
  return RunSession(__func__, nullptr,
                    BufferInRounds<RLNK_BUFFER_RECEIVE, ReceiveData<ReadCopied>>);
}

int TestFunc_Buffer_Flush_Send() {
  return RunSession(__func__, nullptr, BufferOnce<RLNK_BUFFER_SEND, FlushSent>);
}

int TestFunc_Buffer_Flush_Send_Multiple() {
  return RunSession(__func__, nullptr, BufferInRounds<RLNK_BUFFER_SEND, FlushSent>);
}

int TestFunc_Buffer_Flush_Recv() {
  return RunSession(__func__, nullptr, BufferOnce<RLNK_BUFFER_RECEIVE, FlushReceived>);
}

int TestFunc_Buffer_Flush_Recv_Multiple() {
  return RunSession(__func__, nullptr, BufferInRounds<RLNK_BUFFER_RECEIVE, FlushReceived>);
}

int TestFunc_Buffer_AllocateRelease() {
  return RunSession(__func__, nullptr, AllocateBoth);
}
