// A counting allocator for the memory figures of a benchmark: the heap bytes held right now
// and the most held since the last reset. It replaces the global operator new and delete, so
// a program includes it from exactly one of its files.
#pragma once

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> heldBytes{0};
std::atomic<std::size_t> peakBytes{0};

void* track(void* p) {
  if (p == nullptr) throw std::bad_alloc();
  const std::size_t now = heldBytes.fetch_add(malloc_usable_size(p)) + malloc_usable_size(p);
  std::size_t peak = peakBytes.load();
  while (now > peak && !peakBytes.compare_exchange_weak(peak, now)) {
  }
  return p;
}

void release(void* p) noexcept {
  if (p == nullptr) return;
  heldBytes.fetch_sub(malloc_usable_size(p));
  std::free(p);
}

}  // namespace

void* operator new(std::size_t size) { return track(std::malloc(size == 0 ? 1 : size)); }
void* operator new[](std::size_t size) { return track(std::malloc(size == 0 ? 1 : size)); }
void* operator new(std::size_t size, std::align_val_t align) {
  return track(std::aligned_alloc(static_cast<std::size_t>(align),
                                  (size + static_cast<std::size_t>(align) - 1) & ~(static_cast<std::size_t>(align) - 1)));
}
void operator delete(void* p) noexcept { release(p); }
void operator delete[](void* p) noexcept { release(p); }
void operator delete(void* p, std::size_t) noexcept { release(p); }
void operator delete[](void* p, std::size_t) noexcept { release(p); }
void operator delete(void* p, std::align_val_t) noexcept { release(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { release(p); }
