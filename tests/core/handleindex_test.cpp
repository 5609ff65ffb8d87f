#include "core/handleindex.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace corvane::core {
namespace {

// Each pattern of handles goes through the index and through std::map side by side: inserts,
// lookups of present and absent handles, erases and inserts into the slots erased ones left.
TEST(HandleIndex, AgreesWithAnOrderedMapForEveryPatternOfHandles) {
  std::mt19937_64 random(7);
  struct Case {
    const char* name;
    std::vector<std::uint64_t> handles;
  };
  auto run = [](std::uint64_t first, std::uint64_t stride, std::size_t count) {
    std::vector<std::uint64_t> out;
    for (std::size_t i = 0; i < count; ++i) out.push_back(first + i * stride);
    return out;
  };
  auto joined = [](std::vector<std::uint64_t> a, const std::vector<std::uint64_t>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
  };
  std::vector<std::uint64_t> scattered;
  for (int i = 0; i < 5000; ++i) scattered.push_back(random() | 1);
  const Case cases[] = {
      {"consecutive", run(0x100, 1, 20000)},
      {"descending", run(0x8000, static_cast<std::uint64_t>(-1), 0x7000)},
      {"power-of-two stride", run(0x400, 0x400, 8000)},
      {"two far ranges", joined(run(0x100, 1, 6000), run(0x100000100, 1, 6000))},
      {"range and its alias", joined(run(0x10, 1, 4000), run((1ull << 32) + 0x10, 1, 4000))},
      {"largest handles", run(0xFFFFFFFFFFFFF000ull, 1, 0x1000)},
      {"scattered", scattered},
  };
  // Each pattern three times: growing as it goes, with room made for all beforehand, and with
  // room made halfway (which rebuilds a table that already holds entries).
  enum class Room { None, Before, Halfway };
  for (const Room room : {Room::None, Room::Before, Room::Halfway})
  for (const Case& c : cases) {
    HandleIndex index;
    std::map<std::uint64_t, std::uint64_t> model;
    if (room == Room::Before) index.reserve(c.handles.size());
    for (std::size_t i = 0; i < c.handles.size(); ++i) {
      if (room == Room::Halfway && i == c.handles.size() / 2) index.reserve(c.handles.size() * 2);
      const bool fresh = model.emplace(c.handles[i], i + 1).second;
      ASSERT_EQ(index.insert(c.handles[i], i + 1), fresh) << c.name << " at " << i;
    }
    ASSERT_EQ(index.size(), model.size()) << c.name;
    for (const auto& [handle, id] : model) ASSERT_EQ(index.find(handle), id) << c.name << " " << handle;
    // Neighbours of every tenth handle, most of them absent.
    for (std::size_t i = 0; i < c.handles.size(); i += 10) {
      for (const std::uint64_t probe : {c.handles[i] + 1, c.handles[i] - 1, c.handles[i] ^ (std::uint64_t{1} << 40)}) {
        const auto found = model.find(probe);
        const auto expected = found == model.end() ? std::nullopt : std::optional<std::uint64_t>(found->second);
        ASSERT_EQ(index.find(probe), expected) << c.name << " probe " << probe;
      }
    }
    // Every third handle goes; the rest must stay reachable past the gaps.
    std::size_t n = 0;
    for (auto it = model.begin(); it != model.end(); ++n) {
      if (n % 3 == 0) {
        ASSERT_TRUE(index.erase(it->first)) << c.name;
        ASSERT_FALSE(index.erase(it->first)) << c.name;
        it = model.erase(it);
      } else {
        ++it;
      }
    }
    ASSERT_EQ(index.size(), model.size()) << c.name;
    for (std::size_t i = 0; i < c.handles.size(); ++i) {
      const auto found = model.find(c.handles[i]);
      const auto expected = found == model.end() ? std::nullopt : std::optional<std::uint64_t>(found->second);
      ASSERT_EQ(index.find(c.handles[i]), expected) << c.name << " after erasing, at " << i;
    }
    // Erased handles come back with new ids.
    for (std::size_t i = 0; i < c.handles.size(); i += 3) {
      const bool fresh = model.emplace(c.handles[i], 1000000 + i).second;
      ASSERT_EQ(index.insert(c.handles[i], 1000000 + i), fresh) << c.name;
    }
    for (const auto& [handle, id] : model) ASSERT_EQ(index.find(handle), id) << c.name << " again " << handle;
  }
}

TEST(HandleIndex, RefusesTheNullHandleAndKeepsTheFirstIdOfAHandle) {
  struct Case {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> inserts;
    std::uint64_t handle;
    std::optional<std::uint64_t> found;
    std::size_t size;
  } const cases[] = {
      {{}, 0x1F, std::nullopt, 0},
      {{{0, 5}}, 0, std::nullopt, 0},
      {{{0x1F, 5}, {0x1F, 6}}, 0x1F, 5, 1},
      {{{0x1F, 5}, {0x20, 6}}, 0x20, 6, 2},
      {{{0x1F, 5}}, 0x2F, std::nullopt, 1},
  };
  for (const auto& c : cases) {
    HandleIndex index;
    for (const auto& [handle, id] : c.inserts) index.insert(handle, id);
    EXPECT_EQ(index.find(c.handle), c.found) << std::hex << c.handle;
    EXPECT_EQ(index.size(), c.size) << std::hex << c.handle;
    EXPECT_FALSE(index.erase(0));
  }
}

}  // namespace
}  // namespace corvane::core
