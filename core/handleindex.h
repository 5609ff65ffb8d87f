// Object ids by handle. Drawings hold objects by the million and look them up by handle while
// they load, so this is one flat table probed in place rather than a node per object.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace corvane::core {

class HandleIndex {
 public:
  // Keys are non-zero handle values; values are object ids (asOldId()).
  bool contains(std::uint64_t handle) const noexcept { return find(handle).has_value(); }
  std::optional<std::uint64_t> find(std::uint64_t handle) const noexcept;
  // False (and nothing changes) when the handle is zero or already there.
  bool insert(std::uint64_t handle, std::uint64_t id);
  // False when the handle was not there.
  bool erase(std::uint64_t handle) noexcept;
  std::size_t size() const noexcept { return size_; }
  // Room for this many entries in all without the table growing on the way.
  void reserve(std::size_t entries);

 private:
  struct Slot {
    std::uint64_t handle = 0;  // 0: free
    std::uint64_t id = 0;
  };
  std::size_t home(std::uint64_t handle) const noexcept;
  static std::size_t step(std::uint64_t handle) noexcept;
  void grow();
  void rebuild(std::size_t capacity);

  std::vector<Slot> slots_;  // a power of two in size, or empty
  std::size_t size_ = 0;     // entries
  std::size_t used_ = 0;     // slots not free: entries and erased ones
};

}  // namespace corvane::core
