// The simulated link library: ring buffers, order of calls, sessions of several link objects.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "SimHal.h"
#include "rlink.h"

namespace {

constexpr uint32_t kClass = 0x54455354;
constexpr int kParam = -2;
constexpr int kOrder = -3;
constexpr int kBusy = -5;
constexpr int kNotSupported = -7;

class LinkLibrary : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(link_->OpenSession(kClass, &session_), 0); }

  RLNK_BUFFER* Allocate(uint32_t size, RLNK_BUFFER_DIR dir) {
    return link_->AllocateBuffer(&session_, size, dir);
  }

  int Put(RLNK_BUFFER* buffer, uint32_t size) {
    const std::vector<uint8_t> bytes(size, 7);
    return link_->SendBuffer(&session_, buffer, bytes.data(), size, 0);
  }

  /// Makes the slave put or take bytes; returns its checksum.
  uint32_t LetSlave(uint32_t command, const RLNK_BUFFER* buffer, uint32_t size, uint32_t first) {
    RLNK_CMD_PARAMS params{command, 0x211, {{buffer->handle, size}, {first, 0}, {}, {}}};
    EXPECT_EQ(link_->Send(&session_, &params), 0);
    return params.param[2].a;
  }

  /// Waits until both threads of the link have worked. While a thread starts, the sanitizer's
  /// runtime holds locks that a child forked meanwhile could never take.
  void WaitForThreads() {
    RLNK_CMD_PARAMS invoke{0x1003, 0, {}};
    EXPECT_EQ(link_->Send(&session_, &invoke), 0);
    RLNK_HOST_SESSION other{};
    EXPECT_EQ(link_->OpenSession(kClass + 1, &other), 0);
    EXPECT_EQ(link_->CloseSession(&other), 0);
  }

  std::unique_ptr<RLink> link_{RLink::Create()};
  RLNK_HOST_SESSION session_{};
};

TEST_F(LinkLibrary, DataIsUnchangedWhereverTheRingWraps) {
  RLNK_BUFFER* const buffer = Allocate(100, RLNK_BUFFER_RECEIVE);
  bool wrapped = false;
  for (uint32_t round = 0; round < 20; ++round) {
    LetSlave(0x1006, buffer, 70, round);
    RLNK_BUFFER_RANGE range{};
    ASSERT_EQ(link_->GetBufferDataRange(&session_, buffer, &range), 0);
    ASSERT_EQ(range.size_1 + range.size_2, 70u);
    wrapped = wrapped || range.size_2 > 0;
    std::vector<uint8_t> expected(70);
    std::iota(expected.begin(), expected.end(), static_cast<uint8_t>(round));
    const auto* first = static_cast<uint8_t*>(range.start_1);
    const auto* second = static_cast<uint8_t*>(range.start_2);
    std::vector<uint8_t> seen(first, first + range.size_1);
    seen.insert(seen.end(), second, second + range.size_2);
    EXPECT_EQ(seen, expected) << "round " << round;
    std::vector<uint8_t> taken(30);
    EXPECT_EQ(link_->GetBuffer(&session_, buffer, taken.data(), 30), 0);
    EXPECT_TRUE(std::equal(taken.begin(), taken.end(), expected.begin())) << "round " << round;
    EXPECT_EQ(link_->UpdateReadPointer(&session_, buffer, 41), kParam) << "only 40 are left";
    EXPECT_EQ(link_->UpdateReadPointer(&session_, buffer, 40), 0);
    EXPECT_EQ(link_->QueryBufferDataSize(&session_, buffer), 0);
  }
  EXPECT_TRUE(wrapped);
}

TEST_F(LinkLibrary, FullRingRejectsDataUntilFlushed) {
  RLNK_BUFFER* const buffer = Allocate(100, RLNK_BUFFER_SEND);
  EXPECT_EQ(Put(buffer, 60), 0);
  EXPECT_EQ(Put(buffer, 41), kBusy);
  EXPECT_EQ(Put(buffer, 40), 0);
  EXPECT_EQ(link_->QueryBufferFreeSize(&session_, buffer), 0);
  EXPECT_EQ(LetSlave(0x1005, buffer, 30, 0), 30u * 7);
  EXPECT_EQ(link_->QueryBufferFreeSize(&session_, buffer), 30);
  EXPECT_EQ(link_->FlushBuffer(&session_, buffer), 0);
  EXPECT_EQ(link_->QueryBufferFreeSize(&session_, buffer), 100);
  uint8_t byte = 0;
  EXPECT_EQ(link_->GetBuffer(&session_, buffer, &byte, 1), kParam);
}

pid_t StartChild(const std::function<bool()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);  // ends a child that hangs, so that the test ends too
    _exit(work() ? 0 : 1);
  }
  return child;
}

bool Succeeded(pid_t child) {
  int status = 1;
  return waitpid(child, &status, 0) == child && status == 0;
}

TEST_F(LinkLibrary, ProcessesExchangeDataThroughARing) {
  WaitForThreads();
  RLNK_BUFFER* const toHost = Allocate(1000, RLNK_BUFFER_RECEIVE);
  RLNK_BUFFER* const toSlave = Allocate(1000, RLNK_BUFFER_SEND);
  ASSERT_EQ(Put(toSlave, 300), 0);
  // A child sees the parent's data, and vice versa.
  EXPECT_TRUE(Succeeded(StartChild([&] {
    std::vector<uint8_t> bytes(300);
    return link_->GetBuffer(&session_, toSlave, bytes.data(), 300) == 0 && bytes[299] == 7 &&
           Put(toHost, 500) == 0;
  })));
  EXPECT_EQ(link_->QueryBufferDataSize(&session_, toSlave), 0);
  EXPECT_EQ(link_->QueryBufferDataSize(&session_, toHost), 500);
  // A separate link in the child accesses the buffers by their handles, as the slave does.
  EXPECT_TRUE(Succeeded(StartChild([&] {
    const std::unique_ptr<RLink> own(RLink::Create());
    RLNK_HOST_SESSION session{};
    RLNK_CMD_PARAMS put{0x1006, 0x211, {{toHost->handle, 400}, {1, 0}, {}, {}}};
    return own->OpenSession(kClass, &session) == 0 && own->Send(&session, &put) == 0;
  })));
  EXPECT_EQ(link_->FlushBuffer(&session_, toSlave), 0);
  EXPECT_EQ(link_->UpdateReadPointer(&session_, toHost, 500), 0);
  std::vector<uint8_t> expected(400), seen(400);
  std::iota(expected.begin(), expected.end(), uint8_t{1});
  EXPECT_EQ(link_->GetBuffer(&session_, toHost, seen.data(), 400), 0);
  EXPECT_EQ(seen, expected);
  // Concurrent writes of two processes are not interleaved within a call.
  const auto putOften = [&] {
    for (int i = 0; i < 200; ++i) {
      const std::vector<uint8_t> pair = {static_cast<uint8_t>(i), static_cast<uint8_t>(i)};
      if (link_->SendBuffer(&session_, toSlave, pair.data(), 2, 0) != 0) return false;
    }
    return true;
  };
  const pid_t other = StartChild(putOften);
  EXPECT_TRUE(putOften());
  EXPECT_TRUE(Succeeded(other));
  std::vector<uint8_t> pairs(800);
  EXPECT_EQ(link_->GetBuffer(&session_, toSlave, pairs.data(), 800), 0);
  for (std::size_t i = 0; i < pairs.size(); i += 2) EXPECT_EQ(pairs[i], pairs[i + 1]);
}

TEST_F(LinkLibrary, RejectsInvalidArguments) {
  RLNK_BUFFER* const buffer = Allocate(100, RLNK_BUFFER_SEND);
  RLNK_HOST_SESSION other{};
  RLNK_CMD_PARAMS unknown{0x7777, 0, {}};
  RLNK_CMD_PARAMS wrongTypes{0x1001, 0x213, {}};
  RLNK_CMD_PARAMS noMemory{0x1002, 0x7675, {{0, 8}, {0, 8}, {0, 8}, {0, 8}}};
  RLNK_CMD_PARAMS noBuffer{0x1005, 0x211, {{buffer->handle + 1, 1}, {}, {}, {}}};
  EXPECT_EQ(link_->Send(&session_, &unknown), kNotSupported);
  EXPECT_EQ(link_->Send(&session_, &wrongTypes), kParam);
  EXPECT_EQ(link_->Send(&session_, &noMemory), kParam);
  EXPECT_EQ(link_->Send(&session_, &noBuffer), kParam);
  RLNK_CMD_PARAMS emptyMemory{0x1002, 0x7675, {}};
  EXPECT_EQ(link_->Send(&session_, &emptyMemory), kParam);
  EXPECT_EQ(link_->Send(&other, &unknown), kOrder);
  EXPECT_EQ(link_->CloseSession(&other), kOrder);
  EXPECT_EQ(link_->OpenSession(kClass, nullptr), kParam);
  uint8_t byte = 0;
  EXPECT_EQ(link_->Send(&session_, nullptr), kParam);
  EXPECT_EQ(link_->GetBufferDataRange(&session_, buffer, nullptr), kParam);
  EXPECT_EQ(link_->SendBuffer(&session_, buffer, nullptr, 1, 0), kParam);
  EXPECT_EQ(link_->SendBuffer(&session_, buffer, &byte, 1, 1), kParam) << "there are no flags";
  EXPECT_EQ(link_->GetBuffer(&session_, buffer, nullptr, 0), kParam);
  EXPECT_EQ(Allocate(0, RLNK_BUFFER_SEND), nullptr);
  EXPECT_EQ(link_->ReleaseBuffer(&session_, buffer), 0);
  EXPECT_EQ(link_->ReleaseBuffer(&session_, buffer), kParam);
  EXPECT_EQ(link_->CloseSession(&session_), 0);
  EXPECT_EQ(link_->CloseSession(&session_), kOrder);
}

TEST_F(LinkLibrary, SessionsOfAllLinksExistUntilTheirLinkIsDestroyed) {
  RLNK_HOST_SESSION other{};
  {
    const std::unique_ptr<RLink> second(RLink::Create());
    ASSERT_EQ(second->OpenSession(kClass, &other), 0);
    EXPECT_NE(other.session_id, session_.session_id);
    EXPECT_EQ(link_->CloseSession(&other), kOrder) << "the session of another link";
    EXPECT_NE(simhal::State().find("session 00000002 of class 54455354"), std::string::npos);
  }
  EXPECT_EQ(simhal::State().find("session 00000002"), std::string::npos);
  std::vector<std::unique_ptr<RLink>> links;
  int result = 0;
  while (result == 0 && links.size() < 100) {
    links.emplace_back(RLink::Create());
    result = links.back()->OpenSession(kClass, &other);
  }
  EXPECT_EQ(result, kBusy) << "the slave cannot hold more sessions";
  EXPECT_EQ(links.size(), 32u);
}

}  // namespace
