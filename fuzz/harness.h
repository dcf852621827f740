// What every image fuzzer shares: choosing codes, sizes and layouts from the
// input, frames in guarded buffers, and the run that calls an entry once per
// vector target and judges the results.
//
// The frames keep to what the headers ask of callers: every plane a code uses
// is as large as its stride, rows and buffer height say, and strides are at
// least the row length. Planes a code does not use point into an inaccessible
// page, so an entry that touches one crashes. Around that, the fuzzer is free:
// named, unnamed and out-of-range codes, sizes from 0 to a few hundred, exact,
// padded and odd strides, extra buffer rows, offsets, modes and std words, and
// now and then a size field made zero or negative.
#ifndef KELO_FUZZ_HARNESS_H_
#define KELO_FUZZ_HARNESS_H_

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <functional>
#include <memory>

#include "kimgp_img.h"
#include "tests/support/guarded.h"

namespace kelo {
namespace fuzz {

using test::TestFrame;

// Ends the run with a reproducer when `ok` is false.
void Check(bool ok, const char* what);

// A colour-space code: mostly a named one, sometimes an unnamed code inside a
// range (9, 102, 504, ...) or one outside every range.
int32_t PickCode(FuzzedDataProvider& in);
// A named code of the list (one of n).
int32_t PickFrom(FuzzedDataProvider& in, const int32_t* codes, size_t n);
// A picture size: small values and odd ones often, up to `max`.
int32_t PickSize(FuzzedDataProvider& in, int32_t max);
// A std word: 0, 1, 10, 11 mostly, sometimes anything.
int32_t PickStd(FuzzedDataProvider& in);

// Planes the library may read or write for code `cs` (unnamed codes take the
// geometry of their range).
int PlanesOf(int32_t cs);
// 3 for the codes that copy, rotate and resize treat as three byte planes
// (every code up to 99 but YUV400, NV12 and NV21, tiled ones included), else
// 0 (the layout's own count): the `planes` argument of MakeFrame.
int ThreePlaneOps(int32_t cs);

// Whether a resize of src into dst may fail on a later plane after resizing
// earlier ones: some plane after the first is empty on either side, or the
// code is P010LE (whose chroma ratio is checked after the luma is done).
bool LaterPlaneMayFail(const TestFrame& src, const TestFrame& dst);

// A w x h frame of code cs with the input's padding (none, 1..70 bytes, odd)
// and extra buffer rows, random contents, and the unused planes pointed at
// the inaccessible page. Sizes below 1 describe empty planes. `planes` above
// the layout's own count adds empty planes (an operation that treats every
// code up to 99 as three planes visits them).
std::unique_ptr<TestFrame> MakeFrame(FuzzedDataProvider& in, int32_t cs,
                                     int32_t w, int32_t h, int planes = 0);
// A frame from a whole descriptor (its cs, sizes, strides and buffer heights
// for `planes` planes), padded as the input says.
std::unique_ptr<TestFrame> MakeFrameFrom(FuzzedDataProvider& in,
                                         const kimgp_img& layout, int planes);
// A frame of code cs whose plane i is src's plane i turned a quarter: as wide
// as it is high and as high as it is wide, in the same units.
std::unique_ptr<TestFrame> MakeTurned(FuzzedDataProvider& in, int32_t cs,
                                      const TestFrame& src);
// Now and then (as the input says) sets one width or height field of the
// descriptor to 0 or a negative value; the buffers stay as they were.
// Returns whether it did.
bool MaybeHostileSizes(FuzzedDataProvider& in, kimgp_img* img);
// The two frames of a conversion, w x h each: codes scs and dcs, std words
// from pick_std (the destination's often the source's), and now and then a
// hostile size field on either side.
struct Conversion {
  std::unique_ptr<TestFrame> src, dst;
};
Conversion MakeConversion(FuzzedDataProvider& in, int32_t scs, int32_t dcs, int32_t w,
                          int32_t h, int32_t (*pick_std)(FuzzedDataProvider&) = PickStd);
// The inaccessible page that unused planes point at.
uint8_t* Poison();

struct Expect {
  // The entry writes into the source's planes (in-place filters): the
  // source is compared like a destination.
  bool in_place = false;
  // Statuses that must leave the destination untouched.
  bool untouched_on_error = true;
  // A -1 or -3 may keep the planes done before a later plane failed (the
  // resizers return the first failing plane's status).
  bool keeps_earlier_planes = false;
};

// Calls `call(src, dst)` once per vector target, each time on fresh copies of
// the two frames, and checks: every guard band intact, the source's planes
// unchanged (unless in place), nothing written on -1 or -3, and the same
// status and the same bytes on every target. Returns the status.
using Call = std::function<int32_t(kimgp_img* src, kimgp_img* dst)>;
int32_t RunEveryTarget(const TestFrame& src, const TestFrame& dst,
                       const Call& call, Expect expect = {});

}  // namespace fuzz
}  // namespace kelo

#endif  // KELO_FUZZ_HARNESS_H_
