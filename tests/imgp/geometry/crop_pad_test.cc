#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "imgp/geometry/frame_pack.h"
#include "kimgp_frame.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

// Rows of plane i from byte sx of row sy of `src` to byte dx of row dy of
// the expected frame.
void Region(const TestFrame& src, int i, int64_t sx, int64_t sy, TestFrame* want, int64_t dx,
            int64_t dy, int64_t bytes, int32_t rows) {
  ReferenceCopyRows(src.buffer(i).data() + sy * src.img.stride[i] + sx, src.img.stride[i],
                    want->buffer(i).data() + dy * want->img.stride[i] + dx,
                    want->img.stride[i], bytes, rows);
}

int PixelBytes(int32_t cs) { return cs >= 500 ? 4 : cs >= 400 ? 3 : 1; }

// The copies of crop (from the source's (x, y) to the destination's start)
// or of padding (the other way round) into the expected frame; `size` gives
// the rectangle's plane sizes.
void ExpectRegions(const TestFrame& src, TestFrame* want, const kimgp_img& size, bool crop) {
  const int32_t cs = src.img.cs;
  const int64_t x = src.img.x, y = src.img.y;
  auto place = [&](int i, int64_t ox, int64_t oy, int64_t bytes, int32_t rows) {
    if (crop) {
      Region(src, i, ox, oy, want, 0, 0, bytes, rows);
    } else {
      Region(src, i, 0, 0, want, ox, oy, bytes, rows);
    }
  };
  const int n = PixelBytes(cs);
  place(0, n * x, y, int64_t{n} * size.width[0], size.height[0]);
  if (cs == KIMGP_CS_NV12 || cs == KIMGP_CS_NV21) {
    place(1, x, (y + 1) >> 1, size.width[0], size.height[1]);
  } else if (cs == KIMGP_CS_YUV420) {
    for (int i = 1; i < 3; ++i) {
      place(i, (x + 1) >> 1, (y + 1) >> 1, size.width[i], size.height[i]);
    }
  }
}

void FillPlane(TestFrame* f, int i, uint8_t v) {
  memset(f->buffer(i).data(), v, f->buffer(i).size());
}

const int32_t kCropCodes[] = {KIMGP_CS_YUV420, KIMGP_CS_NV12, KIMGP_CS_NV21,
                              KIMGP_CS_RGB888, KIMGP_CS_BGR888, KIMGP_CS_RGBA8888,
                              KIMGP_CS_BGRA8888, KIMGP_CS_ARGB8888, KIMGP_CS_ABGR8888};
const int32_t kRefused[] = {KIMGP_CS_YUV400, KIMGP_CS_YUV422N, KIMGP_CS_YUV444, KIMGP_CS_YV12,
                            KIMGP_CS_T64X32, KIMGP_CS_UYVY,    KIMGP_CS_RGB565, 504,
                            KIMGP_CS_P010LE};

// Random rectangles of every accepted code, with padded strides; the whole
// destination (guards and row padding too) is compared.
TEST(Crop, RectangleOfEveryCode) {
  std::mt19937 rng = MakeRng(11);
  for (int32_t cs : kCropCodes) {
    for (int trial = 0; trial < 30; ++trial) {
      const int32_t sw = 1 + rng() % 90, sh = 1 + rng() % 20;
      const int32_t dw = 1 + rng() % sw, dh = 1 + rng() % sh;
      TestFrame src(cs, sw, sh, RandomPad(rng)), dst(cs, dw, dh, RandomPad(rng));
      src.FillRandom(rng);
      dst.FillRandom(rng);
      src.img.x = rng() % (sw - dw + 1);
      src.img.y = rng() % (sh - dh + 1);
      TestFrame want(dst);
      ExpectRegions(src, &want, dst.img, true);
      SCOPED_TRACE(std::to_string(cs) + " " + std::to_string(sw) + "x" + std::to_string(sh));
      ASSERT_EQ(kimgp_crop(&src.img, &dst.img), KIMGP_OK);
      ASSERT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");
    }
  }
}

// The worked example: luma from (3, 1), chroma from (2, 1).
TEST(Crop, Yuv420AtThreeOne) {
  TestFrame src(KIMGP_CS_YUV420, 16, 8), dst(KIMGP_CS_YUV420, 6, 4);
  for (int i = 0; i < 3; ++i) {
    for (int32_t r = 0; r < src.img.height[i]; ++r) {
      for (int32_t c = 0; c < src.img.width[i]; ++c) {
        src.buffer(i).data()[r * src.img.stride[i] + c] = static_cast<uint8_t>(16 * r + c);
      }
    }
  }
  src.img.x = 3;
  src.img.y = 1;
  ASSERT_EQ(kimgp_crop(&src.img, &dst.img), KIMGP_OK);
  EXPECT_EQ(dst.buffer(0).data()[0], 16 * 1 + 3);
  EXPECT_EQ(dst.buffer(1).data()[0], 16 * 1 + 2);
  EXPECT_EQ(dst.buffer(2).data()[dst.img.stride[2] + 2], 16 * 2 + 4);
}

TEST(Crop, OtherCodesRefusedWithoutWriting) {
  for (int32_t cs : kRefused) {
    TestFrame src(cs, 16, 8), dst(cs, 8, 4);
    const std::vector<uint8_t> before = dst.Snapshot();
    EXPECT_EQ(kimgp_crop(&src.img, &dst.img), KIMGP_ERR_UNSUPPORTED) << cs;
    EXPECT_EQ(dst.Snapshot(), before);
  }
}

// The worked example: 4x2 NV12 at (2, 2) in 8x6.
TEST(Padding, Nv12WorkedExample) {
  TestFrame src(KIMGP_CS_NV12, 4, 2), dst(KIMGP_CS_NV12, 8, 6);
  for (int i = 0; i < 2; ++i) {
    for (size_t b = 0; b < src.buffer(i).size(); ++b) src.buffer(i).data()[b] = 200 + b;
  }
  src.img.x = 2;
  src.img.y = 2;
  ASSERT_EQ(kimgp_padding(&src.img, &dst.img), KIMGP_OK);
  std::vector<uint8_t> luma(48, 16), chroma(24, 128);
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 4; ++c) luma[(2 + r) * 8 + 2 + c] = 200 + 4 * r + c;
  }
  for (int c = 0; c < 4; ++c) chroma[1 * 8 + 2 + c] = 200 + c;
  EXPECT_EQ(std::vector<uint8_t>(dst.buffer(0).data(), dst.buffer(0).data() + 48), luma);
  EXPECT_EQ(std::vector<uint8_t>(dst.buffer(1).data(), dst.buffer(1).data() + 24), chroma);
  EXPECT_TRUE(dst.GuardsIntact());
}

const int32_t kPadCodes[] = {KIMGP_CS_YUV420,   KIMGP_CS_NV12,     KIMGP_CS_NV21,
                             KIMGP_CS_RGB888,   KIMGP_CS_BGR888,   KIMGP_CS_RGBA8888,
                             KIMGP_CS_BGRA8888};

// Random placements of every accepted code into frames with spare buffer
// rows: the whole buffer is filled, then the source copied.
TEST(Padding, PlacementOfEveryCode) {
  std::mt19937 rng = MakeRng(12);
  for (int32_t cs : kPadCodes) {
    for (int trial = 0; trial < 30; ++trial) {
      const int32_t dw = 1 + rng() % 90, dh = 1 + rng() % 20;
      const int32_t sw = 1 + rng() % dw, sh = 1 + rng() % dh;
      TestFrame src(cs, sw, sh, RandomPad(rng));
      kimgp_img layout = TestFrame(cs, dw, dh, RandomPad(rng)).img;
      for (int i = 0; i < 3; ++i) layout.buf_height[i] += rng() % 3;
      TestFrame dst(layout, cs == KIMGP_CS_YUV420 ? 3 : cs <= 7 ? 2 : 1);
      src.FillRandom(rng);
      dst.FillRandom(rng);
      src.img.x = rng() % (dw - sw + 1);
      src.img.y = rng() % (dh - sh + 1);
      TestFrame want(dst);
      for (int i = 0; i < want.planes(); ++i) FillPlane(&want, i, cs > 99 ? 0 : i ? 128 : 16);
      ExpectRegions(src, &want, src.img, false);
      SCOPED_TRACE(std::to_string(cs) + " " + std::to_string(dw) + "x" + std::to_string(dh));
      // Chroma placed at rounded-up offsets must still fit its plane.
      bool fits = true;
      for (int i = 1; i < dst.planes(); ++i) {
        const int32_t cy = (src.img.y + 1) >> 1, cx = (src.img.x + 1) >> 1;
        fits = fits && cy + src.img.height[i] <= dst.img.height[i] &&
               (cs != KIMGP_CS_YUV420 || cx + src.img.width[i] <= dst.img.width[i]);
      }
      const std::vector<uint8_t> expect = fits ? want.Snapshot() : dst.Snapshot();
      ASSERT_EQ(kimgp_padding(&src.img, &dst.img), fits ? KIMGP_OK : KIMGP_ERR_ARGS);
      ASSERT_EQ(FirstDifference(dst.Snapshot(), expect), "");
    }
  }
}

// Exactly fitting succeeds; one more column or row is -1; refused codes are
// -3 only once the size fits; a source that fits in luma but whose chroma, at
// the rounded-up chroma offset, would pass the destination's chroma plane is
// -1, and so are negative offsets; nothing is written on either.
TEST(Padding, Statuses) {
  struct Case {
    int32_t cs, x, y, status, sw = 4, sh = 4, dw = 8, dh = 6;
  } const kCases[] = {
      {KIMGP_CS_YUV420, 4, 2, KIMGP_OK},       {KIMGP_CS_YUV420, 5, 2, KIMGP_ERR_ARGS},
      {KIMGP_CS_YUV420, 4, 3, KIMGP_ERR_ARGS}, {KIMGP_CS_BGRA8888, 4, 2, KIMGP_OK},
      {KIMGP_CS_ARGB8888, 0, 0, KIMGP_ERR_UNSUPPORTED},
      {KIMGP_CS_ABGR8888, 0, 0, KIMGP_ERR_UNSUPPORTED},
      {KIMGP_CS_YUV444, 0, 0, KIMGP_ERR_UNSUPPORTED},
      {KIMGP_CS_ARGB8888, 5, 0, KIMGP_ERR_ARGS},
      {KIMGP_CS_RGB565, 0, 3, KIMGP_ERR_ARGS},
      {KIMGP_CS_NV12, 0, 1, KIMGP_ERR_ARGS, 4, 3, 8, 4},   // chroma rows 1..2 of 2
      {KIMGP_CS_NV21, 0, 1, KIMGP_OK, 4, 3, 8, 5},         // rows 1..2 of 3
      {KIMGP_CS_YUV420, 1, 0, KIMGP_ERR_ARGS, 3, 4, 4, 4}, // chroma columns 1..2 of 2
      {KIMGP_CS_YUV420, 1, 1, KIMGP_ERR_ARGS, 3, 3, 4, 4},
      {KIMGP_CS_YUV420, 1, 1, KIMGP_OK, 3, 3, 5, 5},
      {KIMGP_CS_YUV420, -1, 0, KIMGP_ERR_ARGS, 2, 2, 4, 4},
      {KIMGP_CS_RGB888, 0, -1, KIMGP_ERR_ARGS, 2, 2, 4, 4},
  };
  for (const Case& c : kCases) {
    TestFrame src(c.cs, c.sw, c.sh), dst(c.cs, c.dw, c.dh);
    src.img.x = c.x;
    src.img.y = c.y;
    const std::vector<uint8_t> before = dst.Snapshot();
    EXPECT_EQ(kimgp_padding(&src.img, &dst.img), c.status) << c.cs << " " << c.x << "," << c.y;
    if (c.status != KIMGP_OK) {
      EXPECT_EQ(dst.Snapshot(), before);
    }
  }
}

// An anaglyph by the definition, for a pair frame of w x h per view.
std::vector<uint8_t> Anaglyph(const TestFrame& src, const TestFrame& dst, int32_t order) {
  TestFrame want(dst);
  const int32_t w = dst.img.width[0];
  for (int32_t r = 0; r < dst.img.height[0]; ++r) {
    const uint8_t* left = src.buffer(0).data() + r * src.img.stride[0];
    const uint8_t* right = left + dst.img.stride[0];
    const uint8_t* red = order == 1 ? left : right;
    const uint8_t* gb = order == 1 ? right : left;
    uint8_t* o = want.buffer(0).data() + r * dst.img.stride[0];
    for (int32_t p = 0; p < w; ++p) {
      o[3 * p] = red[3 * p];
      o[3 * p + 1] = gb[3 * p + 1];
      o[3 * p + 2] = gb[3 * p + 2];
    }
  }
  return want.Snapshot();
}

// Widths not a multiple of 8 pixels are packed exactly on every target, with
// nothing written past a row.
TEST(FramePacking, BothOrdersOnEveryTarget) {
  std::mt19937 rng = MakeRng(13);
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : TestSizes(rng, 20, 200, 6)) {
      for (int32_t order : {1, 2}) {
        TestFrame src(KIMGP_CS_RGB888, 2 * s.w, s.h), dst(KIMGP_CS_RGB888, s.w, s.h);
        ASSERT_EQ(src.img.stride[0], 2 * dst.img.stride[0]);
        src.FillRandom(rng);
        dst.FillRandom(rng);
        const std::vector<uint8_t> want = Anaglyph(src, dst, order);
        SCOPED_TRACE(target + " " + std::to_string(s.w) + "x" + std::to_string(s.h));
        ASSERT_EQ(kimgp_fpa(&src.img, &dst.img, order), KIMGP_OK);
        ASSERT_EQ(FirstDifference(dst.Snapshot(), want), "");
      }
    }
  });
}

// The row kernel with padded destination rows: exact rows, padding kept.
TEST(FramePacking, RowKernelKeepsRowPadding) {
  std::mt19937 rng = MakeRng(14);
  ForEachTarget([&](const std::string& target) {
    for (int32_t w : {1, 5, 8, 21, 64, 85, 130}) {
      const int32_t h = 3, ss = 6 * w + 7, ds = 3 * w + RandomPad(rng);
      GuardedBuffer src(static_cast<size_t>(ss) * h), dst(static_cast<size_t>(ds) * h);
      for (size_t i = 0; i < src.size(); ++i) src.data()[i] = static_cast<uint8_t>(rng());
      std::vector<uint8_t> want = dst.raw();
      for (int32_t r = 0; r < h; ++r) {
        scalar::PackAnaglyphRow(src.data() + r * ss + 3 * w, src.data() + r * ss,
                                want.data() + kGuardBytes + r * ds, w);
      }
      kimgp_fpa_frm_pack(src.data() + 3 * w, src.data(), dst.data(), w, h, ss, ds);
      ASSERT_EQ(FirstDifference(dst.raw(), want), "") << target << " w=" << w;
    }
  });
}

// Frames past the size from which the stores are streamed, with rows that
// start at every alignment: the same exact rows.
TEST(FramePacking, LargeFramesOnEveryTarget) {
  std::mt19937 rng = MakeRng(15);
  ForEachTarget([&](const std::string& target) {
    const int32_t w = 1201, h = static_cast<int32_t>(kStreamBytes / (3 * 1201)) + 2;
    const int32_t ss = 6 * w + 5, ds = 3 * w + 3;
    GuardedBuffer src(static_cast<size_t>(ss) * h), dst(static_cast<size_t>(ds) * h);
    for (size_t i = 0; i < src.size(); ++i) src.data()[i] = static_cast<uint8_t>(rng());
    std::vector<uint8_t> want = dst.raw();
    for (int32_t r = 0; r < h; ++r) {
      scalar::PackAnaglyphRow(src.data() + r * ss, src.data() + r * ss + 3 * w,
                              want.data() + kGuardBytes + r * ds, w);
    }
    kimgp_fpa_frm_pack(src.data(), src.data() + 3 * w, dst.data(), w, h, ss, ds);
    ASSERT_EQ(FirstDifference(dst.raw(), want), "") << target;
  });
}

// Each check fails on its own with -1, the packing order only after the
// size checks; nothing is written.
TEST(FramePacking, ChecksInOrder) {
  const struct Case {
    const char* what;
    void (*spoil)(kimgp_img* s, kimgp_img* d);
    int32_t order;
  } kCases[] = {
      {"src cs", [](kimgp_img* s, kimgp_img*) { s->cs = KIMGP_CS_BGR888; }, 1},
      {"dst cs", [](kimgp_img*, kimgp_img* d) { d->cs = KIMGP_CS_BGR888; }, 1},
      {"width", [](kimgp_img*, kimgp_img* d) { d->width[0] = 7; }, 1},
      {"height", [](kimgp_img*, kimgp_img* d) { d->height[0] = 3; }, 1},
      {"src stride", [](kimgp_img* s, kimgp_img* d) { s->stride[0] += 6; d->stride[0] += 3; }, 1},
      {"dst stride", [](kimgp_img*, kimgp_img* d) { d->stride[0] += 1; }, 1},
      {"order 0", [](kimgp_img*, kimgp_img*) {}, 0},
      {"order 3", [](kimgp_img*, kimgp_img*) {}, 3},
  };
  for (const Case& c : kCases) {
    TestFrame src(KIMGP_CS_RGB888, 16, 4, 0, 1), dst(KIMGP_CS_RGB888, 8, 4, 8);
    dst.img.stride[0] = 24;  // the pair's rows are exactly twice as long
    c.spoil(&src.img, &dst.img);
    const std::vector<uint8_t> before = dst.Snapshot();
    EXPECT_EQ(kimgp_fpa(&src.img, &dst.img, c.order), KIMGP_ERR_ARGS) << c.what;
    EXPECT_EQ(dst.Snapshot(), before) << c.what;
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
