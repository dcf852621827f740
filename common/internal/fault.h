// Heap blocks and threads taken inside the library's calls. Every allocation
// and thread start of an entry goes through these two, so that a test can
// make any one of them fail and check what the entry does then: return its
// documented status with nothing written and nothing held, or finish the job
// another way (a worker that does not start has its share done by the
// caller).
#ifndef KELO_COMMON_INTERNAL_FAULT_H_
#define KELO_COMMON_INTERNAL_FAULT_H_

#include <pthread.h>

#include <cstddef>

namespace kelo {

// std::malloc, or null when the test hook says this one fails.
void* HeapAlloc(size_t bytes);
// std::aligned_alloc (bytes rounded up to a multiple of `alignment`, a power
// of two), or null likewise. Both are released with std::free.
void* HeapAllocAligned(size_t alignment, size_t bytes);
// pthread_create with default attributes, or EAGAIN when the hook says so.
int StartThread(pthread_t* thread, void* (*fn)(void*), void* arg);

// Test hook: the n-th allocation or thread start from now on (1-based, both
// counted in one sequence, from any thread) fails; 0 turns failures off.
void FailNthForTest(int n);
// Allocations and thread starts since the last FailNthForTest.
int FaultEventsForTest();

}  // namespace kelo

#endif  // KELO_COMMON_INTERNAL_FAULT_H_
