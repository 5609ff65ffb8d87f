#include "core/handleindex.h"

namespace corvane::core {

namespace {

// A free slot has handle 0 and id 0; a slot whose entry was erased keeps id kErased so that
// probes go on past it.
constexpr std::uint64_t kErased = 1;

}  // namespace

std::size_t HandleIndex::home(std::uint64_t handle) const noexcept {
  // Handles are mostly given out one after another, and objects are added and looked up in
  // about that order: neighbouring handles in neighbouring slots keep the probes in cache.
  return static_cast<std::size_t>(handle ^ (handle >> 32)) & (slots_.size() - 1);
}

std::size_t HandleIndex::step(std::uint64_t handle) noexcept {
  // A handle that meets an occupied home jumps by a stride of its own, so a long run of
  // consecutive handles is left in a few probes rather than walked to its end. Odd strides
  // visit every slot of a table whose size is a power of two.
  return static_cast<std::size_t>((handle * 0x9E3779B97F4A7C15ull) >> 40) | 1u;
}

std::optional<std::uint64_t> HandleIndex::find(std::uint64_t handle) const noexcept {
  if (handle == 0 || slots_.empty()) return std::nullopt;
  const std::size_t mask = slots_.size() - 1;
  const std::size_t stride = step(handle);
  for (std::size_t i = home(handle);; i = (i + stride) & mask) {
    if (slots_[i].handle == handle) return slots_[i].id;
    if (slots_[i].handle == 0 && slots_[i].id != kErased) return std::nullopt;
  }
}

bool HandleIndex::insert(std::uint64_t handle, std::uint64_t id) {
  if (handle == 0) return false;
  // Free slots (erased ones do not count) stay above a quarter, so a probe meets one soon.
  if ((used_ + 1) * 4 > slots_.size() * 3) grow();
  const std::size_t mask = slots_.size() - 1;
  const std::size_t stride = step(handle);
  Slot* reuse = nullptr;
  for (std::size_t i = home(handle);; i = (i + stride) & mask) {
    Slot& slot = slots_[i];
    if (slot.handle == handle) return false;
    if (slot.handle != 0) continue;
    if (slot.id == kErased) {
      if (!reuse) reuse = &slot;
      continue;
    }
    if (reuse) {
      *reuse = {handle, id};
    } else {
      slot = {handle, id};
      ++used_;
    }
    ++size_;
    return true;
  }
}

bool HandleIndex::erase(std::uint64_t handle) noexcept {
  if (handle == 0 || slots_.empty()) return false;
  const std::size_t mask = slots_.size() - 1;
  const std::size_t stride = step(handle);
  for (std::size_t i = home(handle);; i = (i + stride) & mask) {
    Slot& slot = slots_[i];
    if (slot.handle == handle) {
      slot = {0, kErased};
      --size_;
      return true;
    }
    if (slot.handle == 0 && slot.id != kErased) return false;
  }
}

void HandleIndex::reserve(std::size_t entries) {
  std::size_t capacity = 16;
  while (entries * 4 > capacity * 3) capacity *= 2;
  if (capacity > slots_.size()) rebuild(capacity);
}

void HandleIndex::grow() {
  // Erased slots are dropped on the way.
  std::size_t capacity = 16;
  while ((size_ + 1) * 2 > capacity) capacity *= 2;
  rebuild(capacity);
}

void HandleIndex::rebuild(std::size_t capacity) {
  std::vector<Slot> old;
  old.swap(slots_);
  slots_.assign(capacity, Slot{});
  used_ = 0;
  const std::size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.handle == 0) continue;
    const std::size_t stride = step(slot.handle);
    std::size_t i = home(slot.handle);
    while (slots_[i].handle != 0) i = (i + stride) & mask;
    slots_[i] = slot;
    ++used_;
  }
}

}  // namespace corvane::core
