#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "imgp/csc/yuv_to_rgb.h"
#include "imgp/geometry/rotate_kernels.h"
#include "kimgp_csc.h"
#include "kimgp_rot.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

bool Quarter(int op) { return op == KIMGP_ROT_90L || op == KIMGP_ROT_90R; }

// A destination frame for src turned by op, its buffers randomised.
TestFrame Turned(int32_t cs, int32_t w, int32_t h, int op, int32_t pad, std::mt19937& rng) {
  TestFrame f(cs, Quarter(op) ? h : w, Quarter(op) ? w : h, pad);
  f.FillRandom(rng);
  return f;
}

// Plane i of a snapshot-sized expectation (guards skipped).
uint8_t* PlaneIn(std::vector<uint8_t>& snap, const TestFrame& f, int i) {
  size_t off = kGuardBytes;
  for (int k = 0; k < i; ++k) off += f.buffer(k).size() + 2 * kGuardBytes;
  return snap.data() + off;
}

// The scalar definition of a turned plane: op 0 copies.
void TurnPlane(int op, size_t unit, const uint8_t* s, int32_t w, int32_t h, ptrdiff_t ss,
               ptrdiff_t ds, uint8_t* d) {
  if (op == KIMGP_ROT_COPY) {
    for (int32_t y = 0; y < h && w > 0; ++y) memcpy(d + y * ds, s + y * ss, size_t(w) * unit);
  } else {
    scalar::Rotate(op, unit, s, w, h, ss, ds, d);
  }
}

// Rows 0, 2, 4, ... of a plane, then turned.
void HalveAndTurn(int op, const uint8_t* s, int32_t w, int32_t h, int32_t ss, int32_t ds,
                  uint8_t* d) {
  const int32_t kept = (h + 1) / 2;
  std::vector<uint8_t> half(size_t(w) * size_t(kept > 0 ? kept : 0) + 1);
  for (int32_t r = 0; r < kept; ++r) memcpy(half.data() + size_t(r) * w, s + 2 * r * ss, size_t(w));
  TurnPlane(op, 1, half.data(), w, kept, w, ds, d);
}

const struct TurnedKernel {
  const char* name;
  int op;
  kimgp_csc_kernel fn;
} kYuyvTurned[] = {{"90l", KIMGP_ROT_90L, kimgp_csc_yuyv_to_bgra8888_90l},
                   {"90r", KIMGP_ROT_90R, kimgp_csc_yuyv_to_bgra8888_90r},
                   {"180", KIMGP_ROT_180, kimgp_csc_yuyv_to_bgra8888_180}};

std::vector<Size2> TurnSizes(std::mt19937& rng) {
  std::vector<Size2> sizes = TestSizes(rng, 12, 300, 40);
  // Around the bands of 16 rows by 2048 pixels, the tiles of 128 pixels by
  // 32 rows, and the odd-width pair.
  const Size2 more[] = {{128, 32}, {129, 33}, {256, 64}, {259, 65}, {9, 33},
                        {5, 70},   {300, 31}, {2100, 17}, {2051, 20}};
  sizes.insert(sizes.end(), std::begin(more), std::end(more));
  return sizes;
}

// The turned YUYV kernels write the scalar plain conversion turned by the
// scalar rotation, and nothing else, on every target. With an odd width the
// plain conversion's extra pixel is not written anywhere.
TEST(CscRotKernels, YuyvTurnedIsPlainThenRotation) {
  std::mt19937 rng = MakeRng(21);
  const std::vector<Size2> sizes = TurnSizes(rng);
  ForEachTarget([&](const std::string& target) {
    for (const TurnedKernel& k : kYuyvTurned) {
      for (const Size2& s : sizes) {
        const int32_t min_pad = (s.w & 1) ? 2 : 0;  // the last pair is read whole
        TestFrame src(KIMGP_CS_YUYV, s.w, s.h, min_pad + RandomPad(rng));
        src.FillRandom(rng);
        TestFrame got = Turned(KIMGP_CS_BGRA8888, s.w, s.h, k.op, RandomPad(rng), rng);
        SCOPED_TRACE(target + " " + k.name + " " + std::to_string(s.w) + "x" +
                     std::to_string(s.h));
        // The plain kernel's scalar walk into a scratch plane with room for
        // an odd width's extra pixel.
        const int32_t scratch_stride = 4 * (s.w + 1);
        std::vector<uint8_t> scratch(size_t(scratch_stride) * s.h);
        uint8_t* sp[1] = {scratch.data()};
        const int32_t sst[1] = {scratch_stride};
        csc::YuvToRgbImage<csc::Yuyv>(
            src.img.plane, src.img.width, src.img.height, src.img.stride, sst, sp,
            csc::ScalarYuvToRgbRowFor(csc::kRow_Yuyv_Bgra8888_kBt601Limited));
        std::vector<uint8_t> want = got.Snapshot();
        scalar::Rotate(k.op, 4, scratch.data(), s.w, s.h, scratch_stride, got.img.stride[0],
                       PlaneIn(want, got, 0));
        const std::vector<uint8_t> src_before = src.Snapshot();
        k.fn(src.img.plane, src.img.width, src.img.height, src.img.stride, got.img.stride,
             got.img.plane);
        ASSERT_EQ(FirstDifference(got.Snapshot(), want), "");
        ASSERT_EQ(src.Snapshot(), src_before);
      }
    }
  });
}

// The turned halvings are the kept rows turned, on every target; an odd
// height keeps its last row as the plain halving does.
TEST(CscRotKernels, HalfRowsTurnedIsHalvingThenRotation) {
  std::mt19937 rng = MakeRng(22);
  std::vector<Size2> sizes = TestSizes(rng, 16, 200, 70);
  const Size2 more[] = {{16, 32}, {17, 33}, {8, 15}, {40, 1}, {3, 31}};
  sizes.insert(sizes.end(), std::begin(more), std::end(more));
  ForEachTarget([&](const std::string& target) {
    for (int op : {KIMGP_ROT_COPY, KIMGP_ROT_90L, KIMGP_ROT_90R}) {
      for (const Size2& s : sizes) {
        const int32_t kept = (s.h + 1) / 2;
        const int32_t ss = s.w + RandomPad(rng);
        const int32_t dw = Quarter(op) ? kept : s.w, dh = Quarter(op) ? s.w : kept;
        const int32_t ds = dw + RandomPad(rng);
        GuardedBuffer src(size_t(ss) * s.h), dst(size_t(ds) * dh);
        for (size_t i = 0; i < src.size(); ++i) src.data()[i] = uint8_t(rng());
        for (size_t i = 0; i < dst.size(); ++i) dst.data()[i] = uint8_t(rng());
        SCOPED_TRACE(target + " op " + std::to_string(op) + " " + std::to_string(s.w) + "x" +
                     std::to_string(s.h));
        std::vector<uint8_t> want = dst.raw();
        HalveAndTurn(op, src.data(), s.w, s.h, ss, ds, want.data() + kGuardBytes);
        kimgp_tbl_fn_csc_1x2_to_1x1_rot[op](src.data(), s.w, s.h, ss, ds, dst.data());
        ASSERT_EQ(FirstDifference(dst.raw(), want), "");
      }
    }
  });
}

TEST(CscRotKernels, Tables) {
  const kimgp_csc_kernel yuyv[6] = {kimgp_csc_yuyv_to_bgra8888, kimgp_csc_yuyv_to_bgra8888_90l,
                                    kimgp_csc_yuyv_to_bgra8888_90r,
                                    kimgp_csc_yuyv_to_bgra8888_180, nullptr, nullptr};
  const kimgp_csc_plane_helper halve[6] = {kimgp_csc_1x2_to_1x1, kimgp_csc_1x2_to_1x1_rot_90l,
                                           kimgp_csc_1x2_to_1x1_rot_90r, nullptr, nullptr,
                                           nullptr};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(kimgp_csc_rot_yuyv2bgra8888[i], yuyv[i]) << i;
    EXPECT_EQ(kimgp_tbl_fn_csc_1x2_to_1x1_rot[i], halve[i]) << i;
  }
}

// Every pair of a set of codes with every rotation code up to 7: the status,
// and not a byte written on -1 or -3.
TEST(CscRot, EveryPairAndRotationCode) {
  const int32_t codes[] = {0, 1, 2, 3, 4, 5, 6, 7, 11, 100, 101, 200, 400, 500, 501, 502, 600};
  std::mt19937 rng = MakeRng(23);
  for (int32_t s : codes) {
    for (int32_t d : codes) {
      for (uint32_t rot = 0; rot <= 7; ++rot) {
        int32_t want = -3;
        const bool planar = (s == 2 || s == 5) && (d == 1 || d == 4);
        if (s == d) {
          want = -1;
        } else if ((s == 101 && d == 501 && rot <= 3) || (planar && rot <= 2)) {
          want = 0;
        }
        TestFrame src(s, 16, 8);
        src.FillRandom(rng);
        TestFrame dst = Turned(d, 16, 8, int(rot), 0, rng);
        const auto before = dst.Snapshot();
        ASSERT_EQ(kimgp_csc_rot(&src.img, rot, &dst.img), want)
            << s << " -> " << d << " rot " << rot;
        if (want != 0) {
          ASSERT_EQ(dst.Snapshot(), before) << s << " -> " << d << " rot " << rot;
        }
        ASSERT_TRUE(dst.GuardsIntact()) << s << " -> " << d << " rot " << rot;
      }
    }
  }
}

// The planar pairs are their two steps: luma turned, each chroma plane halved
// and turned into the plane of the same chroma.
TEST(CscRot, PlanarPairsAreTheirSteps) {
  const struct {
    int32_t s, d;
    bool crossed;
  } pairs[] = {{2, 1, false}, {2, 4, true}, {5, 4, false}, {5, 1, true}};
  std::mt19937 rng = MakeRng(24);
  for (const auto& p : pairs) {
    for (int op : {KIMGP_ROT_COPY, KIMGP_ROT_90L, KIMGP_ROT_90R}) {
      for (Size2 sz : {Size2{16, 8}, Size2{37, 21}, Size2{66, 35}, Size2{3, 1}}) {
        TestFrame src(p.s, sz.w, sz.h, RandomPad(rng));
        src.FillRandom(rng);
        TestFrame dst = Turned(p.d, sz.w, sz.h, op, RandomPad(rng), rng);
        std::vector<uint8_t> want = dst.Snapshot();
        const kimgp_img& si = src.img;
        TurnPlane(op, 1, si.plane[0], si.width[0], si.height[0], si.stride[0], dst.img.stride[0],
                  PlaneIn(want, dst, 0));
        for (int i = 1; i <= 2; ++i) {
          const int j = p.crossed ? 3 - i : i;
          HalveAndTurn(op, si.plane[i], si.width[i], si.height[i], si.stride[i],
                       dst.img.stride[j], PlaneIn(want, dst, j));
        }
        ASSERT_EQ(kimgp_csc_rot(&src.img, uint32_t(op), &dst.img), 0);
        ASSERT_EQ(FirstDifference(dst.Snapshot(), want), "")
            << p.s << " -> " << p.d << " op " << op << " " << sz.w << "x" << sz.h;
      }
    }
  }
}

TEST(CscRot, WorkedExamples) {
  std::mt19937 rng = MakeRng(25);
  // YUYV offers BGRA8888 only.
  for (uint32_t rot = 0; rot <= 5; ++rot) {
    TestFrame src(KIMGP_CS_YUYV, 16, 8), dst(KIMGP_CS_RGBA8888, 16, 16);
    const auto before = dst.Snapshot();
    EXPECT_EQ(kimgp_csc_rot(&src.img, rot, &dst.img), -3) << rot;
    EXPECT_EQ(dst.Snapshot(), before);
  }
  // The same code on both sides is -1 whatever the rotation code.
  for (int32_t cs : {KIMGP_CS_YUYV, KIMGP_CS_YUV422N, KIMGP_CS_RGBA8888}) {
    TestFrame src(cs, 16, 8), dst(cs, 16, 8);
    const auto before = dst.Snapshot();
    EXPECT_EQ(kimgp_csc_rot(&src.img, 99, &dst.img), -1) << cs;
    EXPECT_EQ(kimgp_csc_rot(&src.img, 3, &dst.img), -1) << cs;
    EXPECT_EQ(dst.Snapshot(), before);
  }
  // YUV422N to YUV420 without rotation is kimgp_csc's conversion.
  TestFrame src(KIMGP_CS_YUV422N, 38, 22, 3);
  src.FillRandom(rng);
  TestFrame a(KIMGP_CS_YUV420, 38, 22, 5), b(KIMGP_CS_YUV420, 38, 22, 5);
  ASSERT_EQ(kimgp_csc_rot(&src.img, KIMGP_ROT_COPY, &a.img), 0);
  ASSERT_EQ(kimgp_csc(&src.img, &b.img), 0);
  EXPECT_EQ(FirstDifference(a.Snapshot(), b.Snapshot()), "");
  // YUV422N to YV12 turned left: plane 2 holds the turned U plane. U sample
  // (x, 2k) lands in column k of row W - 1 - x (W = 19 chroma samples).
  TestFrame yv12(KIMGP_CS_YV12, 22, 38);
  ASSERT_EQ(kimgp_csc_rot(&src.img, KIMGP_ROT_90L, &yv12.img), 0);
  const kimgp_img& s = src.img;
  const kimgp_img& d = yv12.img;
  ASSERT_EQ(s.width[1], 19);
  for (int32_t x : {0, 7, 18}) {
    for (int32_t k : {0, 5, 10}) {
      EXPECT_EQ(d.plane[2][(18 - x) * d.stride[2] + k], s.plane[1][2 * k * s.stride[1] + x]);
      EXPECT_EQ(d.plane[1][(18 - x) * d.stride[1] + k], s.plane[2][2 * k * s.stride[2] + x]);
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
