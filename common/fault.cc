#include "common/internal/fault.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace kelo {
namespace {

std::atomic<int> g_fail_at{0};
std::atomic<int> g_events{0};

// Counts one event; true when it is the one to fail.
bool Fails() {
  const int n = g_events.fetch_add(1, std::memory_order_relaxed) + 1;
  const int at = g_fail_at.load(std::memory_order_relaxed);
  return at != 0 && n == at;
}

}  // namespace

void* HeapAlloc(size_t bytes) { return Fails() ? nullptr : std::malloc(bytes); }

void* HeapAllocAligned(size_t alignment, size_t bytes) {
  if (Fails()) return nullptr;
  const size_t rounded = (bytes + alignment - 1) & ~(alignment - 1);
  return rounded < bytes ? nullptr : std::aligned_alloc(alignment, rounded);
}

int StartThread(pthread_t* thread, void* (*fn)(void*), void* arg) {
  if (Fails()) return EAGAIN;
  return pthread_create(thread, nullptr, fn, arg);
}

void FailNthForTest(int n) {
  g_events.store(0, std::memory_order_relaxed);
  g_fail_at.store(n, std::memory_order_relaxed);
}

int FaultEventsForTest() { return g_events.load(std::memory_order_relaxed); }

}  // namespace kelo
