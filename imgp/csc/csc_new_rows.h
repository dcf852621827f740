// Row stages of kimgp_csc_new that have vector paths: the scalar definitions
// (the contract, over [i0, n)) and the dispatching entries (over [0, n)).
#ifndef KELO_IMGP_CSC_CSC_NEW_ROWS_H_
#define KELO_IMGP_CSC_CSC_NEW_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace kelo {
namespace csc {

// The composed map of a pair of sides in fixed point. Inputs are samples in
// eighths of a source code; output row r of the map is
//   acc = sum_j m[r][j] (c_j - in_off8[j]) + add[r],  out = clamp(acc >> 17)
// to 0 .. hi, where m has 14 fractional bits and add[r] holds the output
// offset << 17 and the rounding half.
struct NewMatrix {
  int32_t m[3][3];
  int32_t in_off8[3];
  int32_t add[3];
  int32_t hi;
};
constexpr int kNewFrac = 14, kNewShift = kNewFrac + 3;

// Whether every acc of inputs in 0 .. max_in8 fits int32 (the vector rows
// need it; otherwise only the scalar rows run).
bool NewMatrixFits(const NewMatrix& k, int32_t max_in8);

namespace scalar {
inline int64_t NewAcc(const NewMatrix& k, int r, int32_t c0, int32_t c1, int32_t c2) {
  return int64_t{k.m[r][0]} * (c0 - k.in_off8[0]) + int64_t{k.m[r][1]} * (c1 - k.in_off8[1]) +
         int64_t{k.m[r][2]} * (c2 - k.in_off8[2]) + k.add[r];
}
inline int32_t NewClamp(int64_t v, int32_t hi) {
  return v < 0 ? 0 : (v > hi ? hi : static_cast<int32_t>(v));
}
// o[x] = output row r of the map at x, for x in [i0, n).
inline void NewMatrixRow(const NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                         const int32_t* c2, int32_t* o, size_t i0, size_t n) {
  for (size_t x = i0; x < n; ++x) {
    o[x] = NewClamp(NewAcc(k, r, c0[x], c1[x], c2[x]) >> kNewShift, k.hi);
  }
}
}  // namespace scalar

// scalar::NewMatrixRow over [0, n) on the best target; `k` must fit int32.
void NewMatrixRow(const NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                  const int32_t* c2, int32_t* o, size_t n);

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_CSC_NEW_ROWS_H_
