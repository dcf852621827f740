// The built-in pattern: defined values at the bar centres in every layout,
// and no byte written outside the picture, whatever the size.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/guarded.h"
#include "tests/tools/util.h"
#include "tools/kelo/input.h"
#include "tools/kelo/pattern.h"

namespace kelo {
namespace test {
namespace {

using cli::Family;
using cli::FormatInfo;
using cli::Image;

// 140x48: bars of 20 pixels over rows 0-31, the strip over rows 32-35,
// the zone plate below.
constexpr int32_t kW = 140, kH = 48;
constexpr int32_t kBarRow = 16, kStripRow = 34, kZoneRow = 40;

// BT.601 limited range 75% bars and the strip under them.
const int kBarY[7] = {180, 162, 131, 112, 84, 65, 35};
const int kBarU[7] = {128, 44, 156, 72, 184, 100, 212};
const int kBarV[7] = {128, 142, 44, 58, 198, 212, 114};
const int kStripY[7] = {35, 16, 84, 16, 131, 16, 180};
const int kStripU[7] = {212, 128, 184, 128, 156, 128, 128};
const int kStripV[7] = {114, 128, 198, 128, 44, 128, 128};
const int kBarRgb[7][3] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191},
                           {0, 191, 0},     {191, 0, 191}, {191, 0, 0},
                           {0, 0, 191}};
const int kStripRgb[7][3] = {{0, 0, 191}, {0, 0, 0},   {191, 0, 191},
                             {0, 0, 0},   {0, 191, 191}, {0, 0, 0},
                             {191, 191, 191}};

// Plane i as rows of bytes in picture order (tiles undone).
std::vector<uint8_t> Untiled(const Image& im, int i, int32_t* pitch) {
  const kimgp_img& img = im.img();
  *pitch = img.stride[i];
  const size_t bytes = static_cast<size_t>(img.stride[i]) * img.buf_height[i];
  std::vector<uint8_t> out(im.plane(i), im.plane(i) + bytes);
  cli::Tile t;
  if (!cli::TileOf(im.format(), i, &t)) return out;
  const int32_t across = img.stride[i] / t.w;
  size_t k = 0;  // tiles are stored one after another
  for (int32_t ty = 0; ty < img.buf_height[i] / t.h; ++ty) {
    for (int32_t tx = 0; tx < across; ++tx, ++k) {
      for (int32_t r = 0; r < t.h; ++r) {
        std::memcpy(&out[(ty * t.h + r) * img.stride[i] + tx * t.w],
                    im.plane(i) + k * t.w * t.h + r * t.w, t.w);
      }
    }
  }
  return out;
}

struct Sample {
  int y, u, v;
};

// Y, U, V at pixel (x, row) read the way each layout stores them; 16-bit
// values are returned as stored in their 10 significant bits.
Sample YuvAt(const Image& im, int32_t x, int32_t row) {
  const FormatInfo& f = im.format();
  const uint8_t* p0 = im.plane(0) + row * im.stride(0);
  if (f.family == Family::kPackedYuv) {
    const bool uyvy = f.cs == KIMGP_CS_UYVY;
    const uint8_t* pair = p0 + 4 * (x / 2);
    return {p0[2 * x + (uyvy ? 1 : 0)], pair[uyvy ? 0 : 1],
            pair[uyvy ? 2 : 3]};
  }
  const int n = f.family == Family::kYuv16 ? 2 : 1;
  auto read = [&](int plane, int32_t xb, int32_t r) {
    int32_t pitch;
    const std::vector<uint8_t> b = Untiled(im, plane, &pitch);
    const uint8_t* s = &b[r * pitch + xb * n];
    const int v = n == 2 ? s[0] | s[1] << 8 : s[0];
    return f.cs == KIMGP_CS_P010LE ? v >> 6 : v;
  };
  Sample s{read(0, x, row), -1, -1};
  if (f.planes == 1) return s;
  const int32_t cx = x >> f.x_shift[1], cy = row >> f.y_shift[1];
  if (f.planes == 2) {
    s.u = read(1, 2 * cx, cy);
    s.v = read(1, 2 * cx + 1, cy);
  } else {
    s.u = read(1, cx, cy);
    s.v = read(2, cx, cy);
  }
  if (f.cs == KIMGP_CS_YV12 || f.cs == KIMGP_CS_YV16 ||
      f.cs == KIMGP_CS_NV21) {
    std::swap(s.u, s.v);
  }
  return s;
}

std::vector<const FormatInfo*> FormatsWhere(bool rgb) {
  std::vector<const FormatInfo*> out;
  for (const FormatInfo* f : cli::KnownFormats()) {
    if ((f->family == Family::kRgb) == rgb) out.push_back(f);
  }
  return out;
}

std::string Name(const ::testing::TestParamInfo<const FormatInfo*>& i) {
  return i.param->name;
}

// Tiled planes: byte (x, y) of the picture, placed by PlaneAddr, is found
// at (x, y) once the tiles are undone the slow way.
TEST(TiledLayout, BytesLandInTheirTiles) {
  for (const char* name : {"t64x32", "t16x16", "t8x8", "t256x16"}) {
    SCOPED_TRACE(name);
    const FormatInfo& f = *cli::LookupFormat(name);
    Image im(f, 300, 70);
    for (int i = 0; i < f.planes; ++i) {
      const cli::PlaneAddr addr(im.img(), f, i);
      const int32_t rb = im.RowBytes(i), rows = im.img().height[i];
      for (int32_t y = 0; y < rows; ++y) {
        for (int32_t x = 0; x < rb; ++x) {
          *addr.At(x, y) = static_cast<uint8_t>(x * 7 + y * 31 + 1);
        }
      }
      int32_t pitch;
      const std::vector<uint8_t> flat = Untiled(im, i, &pitch);
      for (int32_t y = 0; y < rows; ++y) {
        for (int32_t x = 0; x < rb; ++x) {
          ASSERT_EQ(flat[y * pitch + x],
                    static_cast<uint8_t>(x * 7 + y * 31 + 1))
              << "plane " << i << " at " << x << "," << y;
        }
      }
    }
  }
}

class YuvPattern : public ::testing::TestWithParam<const FormatInfo*> {};

TEST_P(YuvPattern, BarsStripAndZonePlateHaveTheirValues) {
  const FormatInfo& f = *GetParam();
  const Image im = cli::PatternImage(f, kW, kH);
  const int scale = f.family == Family::kYuv16 ? 4 : 1;
  for (int b = 0; b < 7; ++b) {
    SCOPED_TRACE("bar " + std::to_string(b));
    const int32_t x = b * 20 + 10;
    const Sample bar = YuvAt(im, x, kBarRow), strip = YuvAt(im, x, kStripRow);
    EXPECT_EQ(bar.y, kBarY[b] * scale);
    EXPECT_EQ(strip.y, kStripY[b] * scale);
    if (f.planes > 1 || f.family == Family::kPackedYuv) {
      EXPECT_EQ(bar.u, kBarU[b] * scale);
      EXPECT_EQ(bar.v, kBarV[b] * scale);
      EXPECT_EQ(strip.u, kStripU[b] * scale);
      EXPECT_EQ(strip.v, kStripV[b] * scale);
    }
  }
  for (int32_t x = 0; x < kW; x += 2) {
    const Sample z = YuvAt(im, x, kZoneRow);
    ASSERT_GE(z.y, 16 * scale);
    ASSERT_LE(z.y, 235 * scale);
    if (f.planes > 1 || f.family == Family::kPackedYuv) {
      ASSERT_EQ(z.u, 128 * scale);
      ASSERT_EQ(z.v, 128 * scale);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, YuvPattern,
                         ::testing::ValuesIn(FormatsWhere(false)), Name);

// Byte offsets of R, G, B, A per layout; 5-6-5 words checked by field.
class RgbPattern : public ::testing::TestWithParam<const FormatInfo*> {};

TEST_P(RgbPattern, BarsAndStripHaveTheirValues) {
  const FormatInfo& f = *GetParam();
  const Image im = cli::PatternImage(f, kW, kH);
  static const struct {
    int32_t cs;
    int r, g, b, a;
  } kOrder[] = {{KIMGP_CS_RGB888, 0, 1, 2, -1},
                {KIMGP_CS_BGR888, 2, 1, 0, -1},
                {KIMGP_CS_RGBA8888, 0, 1, 2, 3},
                {KIMGP_CS_BGRA8888, 2, 1, 0, 3},
                {KIMGP_CS_ARGB8888, 1, 2, 3, 0},
                {KIMGP_CS_ABGR8888, 3, 2, 1, 0}};
  for (int b = 0; b < 7; ++b) {
    for (int32_t row : {kBarRow, kStripRow}) {
      SCOPED_TRACE("bar " + std::to_string(b) + " row " + std::to_string(row));
      const int* want = row == kBarRow ? kBarRgb[b] : kStripRgb[b];
      const int bytes = im.RowBytes(0) / kW;
      const uint8_t* p =
          im.plane(0) + row * im.stride(0) + (b * 20 + 10) * bytes;
      if (bytes == 2) {
        const int word = p[0] | p[1] << 8;
        const int hi = word >> 11, lo = word & 31;
        const bool red_high = f.cs == KIMGP_CS_RGB565;
        EXPECT_EQ(red_high ? hi : lo, want[0] >> 3);
        EXPECT_EQ((word >> 5) & 63, want[1] >> 2);
        EXPECT_EQ(red_high ? lo : hi, want[2] >> 3);
        continue;
      }
      for (const auto& o : kOrder) {
        if (o.cs != f.cs) continue;
        EXPECT_EQ(p[o.r], want[0]);
        EXPECT_EQ(p[o.g], want[1]);
        EXPECT_EQ(p[o.b], want[2]);
        if (o.a >= 0) {
          EXPECT_EQ(p[o.a], 255);
        }
      }
    }
  }
  // The zone plate is gray.
  if (f.cs == KIMGP_CS_RGB888) {
    const uint8_t* z = im.plane(0) + kZoneRow * im.stride(0);
    for (int32_t x = 0; x < kW; ++x) {
      ASSERT_TRUE(z[3 * x] == z[3 * x + 1] && z[3 * x + 1] == z[3 * x + 2]);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, RgbPattern,
                         ::testing::ValuesIn(FormatsWhere(true)), Name);

// Drawn into guarded buffers with padded rows, every format at tiny and
// odd sizes must write every byte of the picture and nothing else: the
// pattern is drawn over a 0x00 and a 0xFF fill, and a byte is written
// exactly when both draws leave the same value there.
class PatternBounds : public ::testing::TestWithParam<const FormatInfo*> {};

TEST_P(PatternBounds, WritesThePictureAndNothingElse) {
  const FormatInfo& f = *GetParam();
  const struct {
    int32_t w, h;
  } kSizes[] = {{1, 1}, {3, 7}, {7, 3}, {2, 2}, {1, 5}, {5, 1}, {17, 9},
                {33, 18}};
  for (const auto& s : kSizes) {
    SCOPED_TRACE(std::to_string(s.w) + "x" + std::to_string(s.h));
    kimgp_img layout;
    cli::Layout(f, s.w, s.h, cli::IsTiled(f) ? 0 : 5, &layout);
    TestFrame zeros(layout, f.planes, 0x00), ones(layout, f.planes, 0xFF);
    ASSERT_TRUE(cli::pattern::Draw(&zeros.img, 1));
    ASSERT_TRUE(cli::pattern::Draw(&ones.img, 1));
    ASSERT_TRUE(zeros.GuardsIntact());
    ASSERT_TRUE(ones.GuardsIntact());
    for (int i = 0; i < f.planes; ++i) {
      const int32_t row_bytes = frame::PlaneOf(f, i, s.w, s.h).row_bytes;
      const GuardedBuffer& a = zeros.buffer(i);
      const GuardedBuffer& b = ones.buffer(i);
      int64_t written = 0;
      for (size_t k = 0; k < a.size(); ++k) {
        const bool w = a.data()[k] == b.data()[k];
        written += w;
        if (!cli::IsTiled(f)) {
          const int32_t x = static_cast<int32_t>(k % layout.stride[i]);
          ASSERT_EQ(w, x < row_bytes) << "plane " << i << " byte " << k;
        }
      }
      EXPECT_EQ(written, int64_t{row_bytes} * layout.height[i])
          << "plane " << i;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, PatternBounds,
                         ::testing::ValuesIn(cli::KnownFormats()), Name);

}  // namespace
}  // namespace test
}  // namespace kelo
