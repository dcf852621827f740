// Internals of the tone mapper shared by its sources and reached by tests.
#ifndef KELO_IMGP_HDR_HDR_INTERNAL_H_
#define KELO_IMGP_HDR_HDR_INTERNAL_H_

#include <cstdint>

#include "kimgp_hdr.h"

namespace kelo {
namespace hdr {

// Rows first .. end-1 of the frame of a filled record; `vector` false keeps to
// the scalar definition.
void ConvertBand(kimgp_hdr_work* w, int32_t first, int32_t end, bool vector);

// Sets a zeroed record's frame words, flags and descriptors for a frame.
void InitWork(kimgp_hdr_work* w, const kimgp_img* src, kimgp_img* dst, int32_t variant, bool hlg);

// Fills the curve parameters and every table of a record whose width,
// height, variant and hlg words are set, for a chosen peak.
void BuildTables(kimgp_hdr_work* w, int32_t peak);

// The tone mapper's log line: tag "KIMGP_HDR", information priority.
void Log(const char* fmt, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

// Test hooks. Not thread-safe: set them before a call, clear them after.
// Log lines go to `sink` instead of the system log (null: system log).
using LogSink = void (*)(void* ctx, const char* tag, const char* line);
void SetLogSinkForTest(LogSink sink, void* ctx);
// Bit i set: creating worker i (first row 4 * (i + 1)) fails.
void SetThreadFailureForTest(uint32_t mask);

}  // namespace hdr
}  // namespace kelo

#endif  // KELO_IMGP_HDR_HDR_INTERNAL_H_
