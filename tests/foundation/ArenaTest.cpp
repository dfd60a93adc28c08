#include "platform/foundation/Arena.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace ns {
namespace {

/// Knows how many of its kind there are.
struct Counted {
  explicit Counted(uint64_t held = 0) : value(held) { ++count; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() { --count; }
  static inline std::atomic<int> count = 0;
  uint64_t value;
};

TEST(ArenaTest, ObjectsKeepWhatTheyHold) {
  // more than the smallest blocks have room for, and more than a large one
  constexpr uint64_t kCount = 100'000;
  Arena arena;
  std::vector<std::shared_ptr<Counted>> objects;
  for (uint64_t i = 0; i < kCount; ++i) objects.push_back(arena.make<Counted>(i * 3));
  EXPECT_EQ(Counted::count, static_cast<int>(kCount));
  uint64_t differences = 0;
  for (uint64_t i = 0; i < kCount; ++i) differences += objects[i]->value != i * 3 ? 1 : 0;
  EXPECT_EQ(differences, 0U);
  objects.clear();
  EXPECT_EQ(Counted::count, 0);
}

TEST(ArenaTest, ObjectsDoNotOverlap) {
  using Bytes = std::array<unsigned char, 100>;
  Arena arena;
  std::vector<std::shared_ptr<Bytes>> objects;
  for (size_t i = 0; i < 1000; ++i) {
    objects.push_back(arena.make<Bytes>());
    objects.back()->fill(static_cast<unsigned char>(i));
  }
  for (size_t i = 0; i < objects.size(); ++i) {
    const auto isMine = [i](unsigned char byte) { return byte == static_cast<unsigned char>(i); };
    EXPECT_TRUE(std::ranges::all_of(*objects[i], isMine)) << i;
  }
}

TEST(ArenaTest, ObjectsAreAligned) {
  struct alignas(16) Aligned {
    char bytes[16];
  };
  Arena arena;
  std::vector<std::shared_ptr<void>> kept;
  for (int i = 0; i < 100; ++i) {
    // 40 bytes with its counts
    kept.push_back(arena.make<std::array<uint64_t, 2>>());
    const std::shared_ptr<Aligned> aligned = arena.make<Aligned>();
    EXPECT_EQ(reinterpret_cast<uintptr_t>(aligned.get()) % 16, 0U);
    kept.push_back(aligned);
  }
}

TEST(ArenaTest, ObjectsOutliveTheArena) {
  std::vector<std::shared_ptr<Counted>> objects;
  {
    Arena arena;
    for (uint64_t i = 0; i < 1000; ++i) objects.push_back(arena.make<Counted>(i));
  }
  EXPECT_EQ(Counted::count, 1000);
  EXPECT_EQ(objects[999]->value, 999U);
  objects.resize(1);
  EXPECT_EQ(Counted::count, 1);
  EXPECT_EQ(objects[0]->value, 0U);
  objects.clear();
  EXPECT_EQ(Counted::count, 0);
}

TEST(ArenaTest, WeakPointersOutliveObjectAndArena) {
  std::weak_ptr<Counted> weak;
  {
    Arena arena;
    const std::shared_ptr<Counted> object = arena.make<Counted>();
    weak = object;
    EXPECT_FALSE(weak.expired());
  }
  EXPECT_TRUE(weak.expired());
}

TEST(ArenaTest, AnObjectMayBeLargerThanABlock) {
  constexpr size_t kSize = size_t{5} << 20;
  Arena arena;
  const auto before = arena.make<Counted>(1);
  const auto large = arena.make<std::array<unsigned char, kSize>>();
  const auto after = arena.make<Counted>(2);
  large->fill(0xA5);
  EXPECT_EQ(before->value, 1U);
  EXPECT_EQ(after->value, 2U);
}

TEST(ArenaTest, AConstructorMayRaise) {
  struct Raising {
    Raising() { throw std::runtime_error("no"); }
  };
  Arena arena;
  const auto before = arena.make<Counted>(1);
  EXPECT_THROW((void)arena.make<Raising>(), std::runtime_error);
  const auto after = arena.make<Counted>(2);
  EXPECT_EQ(before->value, 1U);
  EXPECT_EQ(after->value, 2U);
}

TEST(ArenaTest, ThreadsMayReleaseObjectsWhileOthersAreMade) {
  constexpr size_t kThreads = 4;
  constexpr size_t kCount = 100'000;
  std::vector<std::vector<std::shared_ptr<Counted>>> shares(kThreads);
  Arena arena;
  for (uint64_t i = 0; i < kCount; ++i) shares[i % kThreads].push_back(arena.make<Counted>(i));
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (auto& share : shares) threads.emplace_back([&share] { share.clear(); });
  std::vector<std::shared_ptr<Counted>> more;
  for (uint64_t i = 0; i < kCount; ++i) more.push_back(arena.make<Counted>(i));
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Counted::count, static_cast<int>(kCount));
  uint64_t differences = 0;
  for (uint64_t i = 0; i < kCount; ++i) differences += more[i]->value != i ? 1 : 0;
  EXPECT_EQ(differences, 0U);
}

#ifdef __SANITIZE_ADDRESS__
TEST(ArenaDeathTest, ASanitizerSeesUsesOfReleasedObjects) {
  Arena arena;
  const auto neighbour = arena.make<Counted>(1);
  const volatile uint64_t* const gone = &arena.make<Counted>(2)->value;
  EXPECT_DEATH((void)*gone, "use-after-poison");
}
#endif

/// Bytes that are in memory now.
size_t resident() {
  std::ifstream file("/proc/self/statm");
  size_t size = 0, pages = 0;
  file >> size >> pages;
  return pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

TEST(ArenaTest, AnObjectThatStaysKeepsOneBlock) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "a sanitizer keeps what is given back";
#endif
  using Large = std::array<unsigned char, 100'000>;
  constexpr size_t kCount = 1000;  // 100 MB
  std::vector<std::shared_ptr<Large>> objects;
  Arena arena;
  const size_t before = resident();
  for (size_t i = 0; i < kCount; ++i) {
    objects.push_back(arena.make<Large>());
    objects.back()->fill(1);
  }
  EXPECT_GT(resident(), before + kCount * sizeof(Large));
  objects.erase(objects.begin(), objects.end() - 1);
  EXPECT_LT(resident(), before + (size_t{8} << 20));
}

TEST(ArenaTest, MemoryIsGivenBack) {
  const auto peak = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;  // kilobytes
  };
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "a sanitizer keeps what is given back";
#endif
  const auto before = peak();
  constexpr int kRounds = 40;  // of 4.8 MB each
  Arena arena;
  for (int round = 0; round < kRounds; ++round) {
    std::vector<std::shared_ptr<Counted>> objects;
    for (uint64_t i = 0; i < 150'000; ++i) objects.push_back(arena.make<Counted>(i));
  }
  EXPECT_LT(peak() - before, 100 << 10);
}

}  // namespace
}  // namespace ns
