// Vector paths of the kimgp_csc_new row stages; tails go to the scalar rows.
#include "imgp/csc/csc_new_rows.h"

#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/csc_new_rows.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/csc/csc_new_rows.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
// int32 lanes: the map's sums fit them (NewMatrixFits), so they equal the
// scalar definition's wider sums.
void NewMatrixRowVec(const csc::NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                     const int32_t* c2, int32_t* o, size_t n) {
  const hn::ScalableTag<int32_t> d;
  const size_t lanes = hn::Lanes(d);
  const auto m0 = hn::Set(d, k.m[r][0]), m1 = hn::Set(d, k.m[r][1]), m2 = hn::Set(d, k.m[r][2]);
  const auto f0 = hn::Set(d, k.in_off8[0]), f1 = hn::Set(d, k.in_off8[1]),
             f2 = hn::Set(d, k.in_off8[2]);
  const auto add = hn::Set(d, k.add[r]), zero = hn::Zero(d), hi = hn::Set(d, k.hi);
  size_t x = 0;
  for (; x + lanes <= n; x += lanes) {
    auto acc = hn::Add(hn::Mul(m0, hn::Sub(hn::LoadU(d, c0 + x), f0)), add);
    acc = hn::Add(acc, hn::Mul(m1, hn::Sub(hn::LoadU(d, c1 + x), f1)));
    acc = hn::Add(acc, hn::Mul(m2, hn::Sub(hn::LoadU(d, c2 + x), f2)));
    acc = hn::ShiftRight<csc::kNewShift>(acc);
    hn::StoreU(hn::Min(hn::Max(acc, zero), hi), d, o + x);
  }
  csc::scalar::NewMatrixRow(k, r, c0, c1, c2, o, x, n);
}
#else   // HWY_SCALAR: the scalar row.
void NewMatrixRowVec(const csc::NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                     const int32_t* c2, int32_t* o, size_t n) {
  csc::scalar::NewMatrixRow(k, r, c0, c1, c2, o, 0, n);
}
#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
namespace kelo {
namespace csc {
namespace scalar {
inline void NewMatrixRowVec(const NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                            const int32_t* c2, int32_t* o, size_t n) {
  NewMatrixRow(k, r, c0, c1, c2, o, 0, n);
}
}  // namespace scalar
}  // namespace csc

KELO_VEC_EXPORT(NewMatrixRowVec);

namespace csc {
bool NewMatrixFits(const NewMatrix& k, int32_t max_in8) {
  for (int r = 0; r < 3; ++r) {
    int64_t bound = k.add[r] < 0 ? -int64_t{k.add[r]} : k.add[r];
    for (int j = 0; j < 3; ++j) {
      const int64_t lo = k.in_off8[j], span = lo > max_in8 - lo ? lo : max_in8 - lo;
      bound += (k.m[r][j] < 0 ? -int64_t{k.m[r][j]} : k.m[r][j]) * span;
    }
    if (bound > INT32_MAX) return false;
  }
  return true;
}
void NewMatrixRow(const NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                  const int32_t* c2, int32_t* o, size_t n) {
  KELO_VEC_CALL(NewMatrixRowVec, scalar::NewMatrixRowVec)(k, r, c0, c1, c2, o, n);
}
}  // namespace csc
}  // namespace kelo
#endif  // !KELO_HAVE_HWY || HWY_ONCE
