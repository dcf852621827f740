// Scalar definitions of the rotation and flip kernels: where each sample unit
// of a plane goes. Shared by the exported kernels (whole planes in the
// scalar build, tails and sub-blocks otherwise) and the tests.
#ifndef KELO_IMGP_GEOMETRY_ROTATE_KERNELS_H_
#define KELO_IMGP_GEOMETRY_ROTATE_KERNELS_H_

#include <cstddef>
#include <cstdint>

namespace kelo {

// Rotation codes; each is the row of the kernel tables.
enum RotOp : int {
  kRotCopy = 0,
  kRot90l = 1,  // counter-clockwise: (x, y) -> column y of row W-1-x
  kRot90r = 2,  // clockwise: (x, y) -> column H-1-y of row x
  kRot180 = 3,  // (x, y) -> (W-1-x, H-1-y)
  kRotHori = 4,  // (x, y) -> (W-1-x, y)
  kRotVert = 5,  // (x, y) -> (x, H-1-y)
};

namespace scalar {

// Destination column and row of source unit (x, y) of a w x h plane.
template <int Op>
inline void RotTarget(int32_t x, int32_t y, int32_t w, int32_t h, int32_t* col,
                      int32_t* row) {
  static_assert(Op >= kRot90l && Op <= kRotVert, "rotation code");
  switch (Op) {
    case kRot90l: *col = y; *row = w - 1 - x; break;
    case kRot90r: *col = h - 1 - y; *row = x; break;
    case kRot180: *col = w - 1 - x; *row = h - 1 - y; break;
    case kRotHori: *col = w - 1 - x; *row = y; break;
    default: *col = x; *row = h - 1 - y; break;
  }
}

// Moves every N-byte unit of a w x h plane to where Op sends it. Strides are
// in bytes; only the first w units of a row are read and written. Works on
// any sub-rectangle too: the caller offsets src and dst to the rectangle's
// first unit and its image under Op.
template <int Op, size_t N>
void RotatePlane(const uint8_t* src, int32_t w, int32_t h, ptrdiff_t ss,
                 ptrdiff_t ds, uint8_t* dst) {
  for (int32_t y = 0; y < h; ++y) {
    const uint8_t* s = src + y * ss;
    for (int32_t x = 0; x < w; ++x, s += N) {
      int32_t col, row;
      RotTarget<Op>(x, y, w, h, &col, &row);
      uint8_t* d = dst + row * ds + static_cast<ptrdiff_t>(col) * N;
      for (size_t k = 0; k < N; ++k) d[k] = s[k];
    }
  }
}

// The scalar kernel for a run-time operation (1..5) and unit size (1..4).
template <size_t N>
inline void RotateUnits(int op, const uint8_t* src, int32_t w, int32_t h,
                        ptrdiff_t ss, ptrdiff_t ds, uint8_t* dst) {
  switch (op) {
    case kRot90l: return RotatePlane<kRot90l, N>(src, w, h, ss, ds, dst);
    case kRot90r: return RotatePlane<kRot90r, N>(src, w, h, ss, ds, dst);
    case kRot180: return RotatePlane<kRot180, N>(src, w, h, ss, ds, dst);
    case kRotHori: return RotatePlane<kRotHori, N>(src, w, h, ss, ds, dst);
    case kRotVert: return RotatePlane<kRotVert, N>(src, w, h, ss, ds, dst);
    default: return;
  }
}

inline void Rotate(int op, size_t unit, const uint8_t* src, int32_t w,
                   int32_t h, ptrdiff_t ss, ptrdiff_t ds, uint8_t* dst) {
  switch (unit) {
    case 1: return RotateUnits<1>(op, src, w, h, ss, ds, dst);
    case 2: return RotateUnits<2>(op, src, w, h, ss, ds, dst);
    case 3: return RotateUnits<3>(op, src, w, h, ss, ds, dst);
    case 4: return RotateUnits<4>(op, src, w, h, ss, ds, dst);
    default: return;
  }
}

}  // namespace scalar

// Rotates or flips a plane of `unit`-byte samples with the best path of the
// running CPU. Does nothing when w or h is below 1.
void Rotate(int op, size_t unit, const uint8_t* src, int32_t w, int32_t h,
            ptrdiff_t ss, ptrdiff_t ds, uint8_t* dst);

}  // namespace kelo

#endif  // KELO_IMGP_GEOMETRY_ROTATE_KERNELS_H_
