// kimgp_cpy as kelo calls it: every format the library copies comes through
// whole into padded rows, the others are refused with the library's status.
#include <gtest/gtest.h>

#include "kimgp_copy.h"
#include "tests/support/guarded.h"
#include "tests/tools/util.h"
#include "tools/kelo/input.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace test {
namespace {

using cli::FormatInfo;

std::string Name(const ::testing::TestParamInfo<const FormatInfo*>& i) {
  return i.param->name;
}

bool LibraryCopies(const FormatInfo& f) {
  return f.cs >= 0 && f.cs != KIMGP_CS_T64X32 &&
         (f.cs <= 99 || (f.cs >= 200 && f.cs <= 299));
}

class LibraryCopy : public ::testing::TestWithParam<const FormatInfo*> {};

// Source drawn by kelo, destination in guarded buffers with row padding
// filled with a marker: the picture must arrive byte for byte, the padding
// and guards must stay as they were.
TEST_P(LibraryCopy, CopiesThePictureIntoPaddedRows) {
  const FormatInfo& f = *GetParam();
  const struct {
    int32_t w, h;
  } kSizes[] = {{1, 1}, {15, 9}, {2, 3}, {40, 17}};
  for (const auto& s : kSizes) {
    SCOPED_TRACE(std::to_string(s.w) + "x" + std::to_string(s.h));
    const cli::Image src = cli::PatternImage(f, s.w, s.h, 3);
    kimgp_img layout;
    cli::Layout(f, s.w, s.h, cli::IsTiled(f) ? 0 : 6, &layout);
    TestFrame dst(layout, f.planes, 0xC3);
    const kimgp_img sv = cli::CopyView(src.img());
    kimgp_img dv = cli::CopyView(dst.img);
    ASSERT_EQ(kimgp_cpy(&sv, &dv), KIMGP_OK);
    ASSERT_TRUE(dst.GuardsIntact());
    for (int i = 0; i < f.planes; ++i) {
      const int32_t rb = src.RowBytes(i);
      const int32_t rows = cli::IsTiled(f) ? layout.buf_height[i]
                                           : layout.height[i];
      const int32_t run = cli::IsTiled(f) ? layout.stride[i] : rb;
      for (int32_t y = 0; y < rows; ++y) {
        const uint8_t* got = dst.buffer(i).data() + y * layout.stride[i];
        const uint8_t* want = src.plane(i) + y * src.stride(i);
        ASSERT_EQ(std::vector<uint8_t>(got, got + run),
                  std::vector<uint8_t>(want, want + run))
            << "plane " << i << " row " << y;
        for (int32_t x = run; x < layout.stride[i]; ++x) {
          ASSERT_EQ(got[x], 0xC3) << "padding of plane " << i << " row " << y;
        }
      }
    }
  }
}

std::vector<const FormatInfo*> Copied(bool copied) {
  std::vector<const FormatInfo*> out;
  for (const FormatInfo* f : cli::KnownFormats()) {
    if (LibraryCopies(*f) == copied && f->cs >= 0) out.push_back(f);
  }
  return out;
}

INSTANTIATE_TEST_SUITE_P(Formats, LibraryCopy,
                         ::testing::ValuesIn(Copied(true)), Name);

class RefusedCopy : public ::testing::TestWithParam<const FormatInfo*> {};

TEST_P(RefusedCopy, ReportsTheLibraryStatus) {
  const FormatInfo& f = *GetParam();
  const cli::Image src = cli::PatternImage(f, 6, 4);
  cli::Image dst(f, 6, 4);
  const int32_t status = cli::CopyWithLibrary(src, &dst);
  EXPECT_EQ(status, KIMGP_ERR_UNSUPPORTED);
  EXPECT_EQ(cli::StatusMessage("kimgp_cpy", status, f),
            std::string("kimgp_cpy: format ") + f.name +
                " not supported (status -3)");
  EXPECT_EQ(FrameBytes(dst), std::vector<uint8_t>(dst.FileBytes(), 0));
}

INSTANTIATE_TEST_SUITE_P(Formats, RefusedCopy,
                         ::testing::ValuesIn(Copied(false)), Name);

TEST(KeloOnlyFormats, NeverReachTheLibrary) {
  for (const char* name : {"yuv400p16", "yuv422p16", "yuv444p16"}) {
    const FormatInfo& f = *cli::LookupFormat(name);
    const cli::Image src = cli::PatternImage(f, 4, 4);
    cli::Image dst(f, 4, 4);
    EXPECT_NE(RunErrorOf([&] { cli::CopyWithLibrary(src, &dst); })
                  .find("kelo-only"),
              std::string::npos)
        << name;
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
