// Frame files: round trips through each file type and malformed input.
#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <cstring>

#include "tests/tools/util.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"

namespace kelo {
namespace test {
namespace {

using cli::FileType;
using cli::FrameReader;
using cli::Image;
using cli::LookupFormat;

const cli::FormatInfo& Fmt(const char* name) { return *LookupFormat(name); }

// Writes `frames` pattern frames of f to path through the kelo writer.
std::vector<Image> WritePattern(const std::string& path, FileType type,
                                const cli::FormatInfo& f, int32_t w, int32_t h,
                                int frames,
                                const cli::StreamInfo* like = nullptr) {
  cli::StreamInfo info;
  if (like != nullptr) info = *like;
  info.format = &f;
  info.width = w;
  info.height = h;
  auto writer = cli::CreateWriter(path, type, info);
  std::vector<Image> out;
  for (int i = 0; i < frames; ++i) {
    out.push_back(cli::PatternImage(f, w, h, i));
    writer->Write(out.back());
  }
  writer->Finish();
  return out;
}

// Every frame a reader delivers.
std::vector<Image> ReadAll(FrameReader* r) {
  std::vector<Image> out;
  Image im;
  while (r->Read(&im)) out.push_back(im);
  return out;
}

void ExpectSameFrames(const std::vector<Image>& got,
                      const std::vector<Image>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < got.size(); ++i) {
    SCOPED_TRACE("frame " + std::to_string(i));
    ASSERT_TRUE(got[i].SameShape(want[i]));
    EXPECT_EQ(FrameBytes(got[i]), FrameBytes(want[i]));
  }
}

// Raw files: several frames back to back in every layout family, at a size
// odd in both directions so that chroma rounding and tiles matter.
class RawRoundTrip : public ::testing::TestWithParam<const char*> {};

TEST_P(RawRoundTrip, FramesComeBackInOrder) {
  const cli::FormatInfo& f = Fmt(GetParam());
  const std::string path = TempPath("frames.raw");
  const auto written = WritePattern(path, FileType::kRaw, f, 13, 7, 3);
  ASSERT_NE(FrameBytes(written[0]), FrameBytes(written[1]));
  EXPECT_EQ(ReadBytes(path).size(), 3 * cli::FileFrameBytes(f, 13, 7));

  auto reader = cli::OpenRawReader(path, f, 13, 7);
  EXPECT_EQ(reader->info().frames, 3);
  ExpectSameFrames(ReadAll(reader.get()), written);
  Image extra;
  EXPECT_FALSE(reader->Read(&extra));
}

INSTANTIATE_TEST_SUITE_P(Formats, RawRoundTrip,
                         ::testing::Values("yuv420", "yv12", "nv21", "uyvy",
                                           "rgb565", "bgra8888", "yuv420p16",
                                           "p010le", "t16x16", "t64x32",
                                           "yuv444p16"));

TEST(RawInput, TrailingPartialFrameIsReported) {
  const std::string path = TempPath("partial.yuv");
  WritePattern(path, FileType::kRaw, Fmt("yuv420"), 4, 4, 2);
  WriteBytes(path, ReadBytes(path) + "12345");
  const std::string e = RunErrorOf(
      [&] { cli::OpenRawReader(path, Fmt("yuv420"), 4, 4); });
  EXPECT_NE(e.find("partial frame of 5 bytes"), std::string::npos) << e;
  EXPECT_NE(e.find("24 bytes"), std::string::npos) << e;
}

// Y4M of every colour tag kelo reads and writes, 8 and 10 bits.
struct Y4mCase {
  const char* format;
  const char* tag;
};

class Y4mRoundTrip : public ::testing::TestWithParam<Y4mCase> {};

TEST_P(Y4mRoundTrip, HeaderAndFramesSurvive) {
  const cli::FormatInfo& f = Fmt(GetParam().format);
  const std::string path = TempPath("clip.y4m");
  const auto written = WritePattern(path, FileType::kY4m, f, 13, 7, 2);
  const std::string bytes = ReadBytes(path);
  const std::string header = "YUV4MPEG2 W13 H7 F25:1 Ip A1:1 C" +
                             std::string(GetParam().tag) + "\n";
  EXPECT_EQ(bytes.substr(0, header.size()), header);
  EXPECT_EQ(bytes.size(),
            header.size() + 2 * (6 + cli::FileFrameBytes(f, 13, 7)));

  auto reader = cli::OpenY4mReader(path);
  EXPECT_EQ(reader->info().format, &f);
  ExpectSameFrames(ReadAll(reader.get()), written);
}

INSTANTIATE_TEST_SUITE_P(
    Tags, Y4mRoundTrip,
    ::testing::Values(Y4mCase{"yuv420", "420jpeg"}, Y4mCase{"yuv422n", "422"},
                      Y4mCase{"yuv444", "444"}, Y4mCase{"yuv400", "mono"},
                      Y4mCase{"yuv420p16", "420p10"},
                      Y4mCase{"yuv422p16", "422p10"},
                      Y4mCase{"yuv444p16", "444p10"},
                      Y4mCase{"yuv400p16", "mono10"}),
    [](const auto& info) { return std::string(info.param.format); });

TEST(Y4m, SourceTagsArePassedOnAndFrameParametersSkipped) {
  const std::string in = TempPath("in.y4m"), out = TempPath("out.y4m");
  const std::string header =
      "YUV4MPEG2 W2 H2 F30000:1001 It A0:0 C420paldv XCOLORRANGE=LIMITED\n";
  WriteBytes(in, header + "FRAME Ixyz\nabcdef" + "FRAME\nghijkl");
  auto reader = cli::OpenY4mReader(in);
  EXPECT_EQ(reader->info().format, &Fmt("yuv420"));
  const auto frames = ReadAll(reader.get());
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(FrameBytes(frames[1]), std::vector<uint8_t>({'g', 'h', 'i', 'j',
                                                         'k', 'l'}));
  auto writer = cli::CreateWriter(out, FileType::kY4m, reader->info());
  for (const Image& im : frames) writer->Write(im);
  writer->Finish();
  EXPECT_EQ(ReadBytes(out), header + "FRAME\nabcdef" + "FRAME\nghijkl");
}

TEST(Y4m, NoColourTagMeansYuv420AndStaysAbsent) {
  const std::string in = TempPath("in.y4m"), out = TempPath("out.y4m");
  WriteBytes(in, "YUV4MPEG2 W2 H2\nFRAME\nabcdef");
  auto reader = cli::OpenY4mReader(in);
  EXPECT_EQ(reader->info().format, &Fmt("yuv420"));
  auto writer = cli::CreateWriter(out, FileType::kY4m, reader->info());
  writer->Write(ReadAll(reader.get()).at(0));
  writer->Finish();
  EXPECT_EQ(ReadBytes(out), "YUV4MPEG2 W2 H2\nFRAME\nabcdef");
}

TEST(Y4m, FormatsWithoutATagAreRefusedBeforeTheFileIsMade) {
  const std::string out = TempPath("nv12.y4m");
  cli::StreamInfo info;
  info.format = &Fmt("nv12");
  info.width = info.height = 4;
  EXPECT_NE(RunErrorOf([&] { cli::CreateWriter(out, FileType::kY4m, info); }),
            "");
  EXPECT_EQ(ReadBytes(out), "");
}

// Malformed Y4M: each must end in a RunError mentioning the problem, both
// when reading frames and when only counting them.
struct BadY4m {
  const char* name;
  std::string bytes;
  const char* message;
};

void PrintTo(const BadY4m& c, std::ostream* os) { *os << c.name; }

class MalformedY4m : public ::testing::TestWithParam<BadY4m> {};

TEST_P(MalformedY4m, IsAnErrorNotACrash) {
  const std::string path = TempPath("bad.y4m");
  WriteBytes(path, GetParam().bytes);
  for (bool skip : {false, true}) {
    const std::string e = RunErrorOf([&] {
      auto r = cli::OpenY4mReader(path);
      Image im;
      while (skip ? r->Skip() : r->Read(&im)) {
      }
    });
    EXPECT_NE(e.find(GetParam().message), std::string::npos)
        << (skip ? "skip: " : "read: ") << e;
  }
}

const std::string kHead = "YUV4MPEG2 W2 H2\n";

INSTANTIATE_TEST_SUITE_P(
    Cases, MalformedY4m,
    ::testing::Values(
        BadY4m{"empty", "", "not a Y4M file"},
        BadY4m{"magic", "YUV4MPEG W2 H2\n", "not a Y4M file"},
        BadY4m{"magic_suffix", "YUV4MPEG2X W2 H2\n", "not a Y4M file"},
        BadY4m{"binary", std::string(9000, '\x01'), "not a Y4M file"},
        BadY4m{"short", "YUV", "not a Y4M file"},
        BadY4m{"unterminated", "YUV4MPEG2 W2 H2", "without a newline"},
        BadY4m{"no_height", "YUV4MPEG2 W2\n", "W and H are required"},
        BadY4m{"zero_width", "YUV4MPEG2 W0 H2\n", "width 'W0'"},
        BadY4m{"huge_width", "YUV4MPEG2 W99999 H2\n", "width"},
        BadY4m{"sign", "YUV4MPEG2 W-2 H2\n", "width"},
        BadY4m{"over_limit", "YUV4MPEG2 W16384 H16384 C444p10\n", "MiB"},
        BadY4m{"ratio", "YUV4MPEG2 W2 H2 F25\n", "not a ratio"},
        BadY4m{"interlace", "YUV4MPEG2 W2 H2 Ix\n", "interlacing"},
        BadY4m{"colour", "YUV4MPEG2 W2 H2 C411\n", "colour space C411"},
        BadY4m{"long_header",
               "YUV4MPEG2 W2 H2 X" + std::string(5000, 'a') + "\n",
               "longer than"},
        BadY4m{"truncated_frame", kHead + "FRAME\nabc",
               "frame 1 is truncated: 3 of 6 bytes"},
        BadY4m{"truncated_second", kHead + "FRAME\nabcdefFRAME\na",
               "frame 2 is truncated: 1 of 6 bytes"},
        BadY4m{"no_payload", kHead + "FRAME\n", "frame 1 is truncated: 0"},
        BadY4m{"cut_frame_line", kHead + "FRA", "does not start with FRAME"},
        BadY4m{"cut_frame_params", kHead + "FRAME Ixx", "without a newline"},
        BadY4m{"not_frame", kHead + "FRAMX\nabcdef",
               "does not start with FRAME"}),
    [](const auto& info) { return std::string(info.param.name); });

// PNG written from each RGB layout reads back as the pattern drawn in
// rgb888 / rgba8888; 5-6-5 pixels come back with their bits replicated.
class PngRgb : public ::testing::TestWithParam<const char*> {};

uint8_t Expand(uint8_t v, int bits) {
  const int q = v >> (8 - bits);
  return static_cast<uint8_t>(q << (8 - bits) | q >> (2 * bits - 8));
}

TEST_P(PngRgb, WriteThenReadGivesThePatternColours) {
  const cli::FormatInfo& f = Fmt(GetParam());
  const std::string path = TempPath("rgb.png");
  cli::WritePng(path, cli::PatternImage(f, 11, 5));
  std::string detail;
  const Image got = cli::ReadPng(path, &detail);
  cli::RgbOrder order;
  ASSERT_TRUE(cli::RgbOrderOf(f, &order));
  const bool alpha = order.a >= 0;
  const Image want =
      cli::PatternImage(Fmt(alpha ? "rgba8888" : "rgb888"), 11, 5);
  ASSERT_TRUE(got.SameShape(want)) << got.format().name;
  EXPECT_EQ(detail, alpha ? "PNG 8-bit RGBA" : "PNG 8-bit RGB");
  std::vector<uint8_t> expect = FrameBytes(want);
  if (f.cs == KIMGP_CS_RGB565 || f.cs == KIMGP_CS_BGR565) {
    for (size_t i = 0; i < expect.size(); ++i) {
      expect[i] = Expand(expect[i], i % 3 == 1 ? 6 : 5);
    }
  }
  EXPECT_EQ(FrameBytes(got), expect);
}

INSTANTIATE_TEST_SUITE_P(Formats, PngRgb,
                         ::testing::Values("rgb565", "bgr565", "rgb888",
                                           "bgr888", "rgba8888", "bgra8888",
                                           "argb8888", "abgr8888"));

// YUV layouts go to PNG as their luma plane in gray: the same picture for
// every layout (10-bit ones within one step of the 8-bit pattern).
class PngLuma : public ::testing::TestWithParam<const char*> {};

TEST_P(PngLuma, LumaPlaneIsWrittenAsGray) {
  const cli::FormatInfo& f = Fmt(GetParam());
  const std::string path = TempPath("luma.png");
  cli::WritePng(path, cli::PatternImage(f, 9, 12));
  std::string detail;
  const Image got = cli::ReadPng(path, &detail);
  EXPECT_EQ(detail, "PNG 8-bit gray");
  const std::vector<uint8_t> luma =
      FrameBytes(cli::PatternImage(Fmt("yuv400"), 9, 12));
  const std::vector<uint8_t> rgb = FrameBytes(got);
  ASSERT_EQ(rgb.size(), 3 * luma.size());
  const int tolerance = f.family == cli::Family::kYuv16 ? 1 : 0;
  for (size_t i = 0; i < luma.size(); ++i) {
    ASSERT_EQ(rgb[3 * i], rgb[3 * i + 2]);
    ASSERT_NEAR(rgb[3 * i], luma[i], tolerance) << "pixel " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, PngLuma,
                         ::testing::Values("yuv400", "yuv420", "nv21",
                                           "yuyv", "uyvy", "t8x8",
                                           "yuv420p16", "p010le",
                                           "yuv400p16"));

// PNG colour types other than RGB, written with libpng's own simple API.
TEST(PngRead, GrayPaletteAndAlphaAreExpanded) {
  struct Case {
    const char* name;
    png_uint_32 format;
    std::vector<uint8_t> pixels;  // 2x1
    std::vector<uint8_t> want;
    const char* want_format;
  } const cases[] = {
      {"gray", PNG_FORMAT_GRAY, {7, 200}, {7, 7, 7, 200, 200, 200}, "rgb888"},
      {"gray_alpha", PNG_FORMAT_GA, {7, 9, 200, 255},
       {7, 7, 7, 9, 200, 200, 200, 255}, "rgba8888"},
      {"palette", PNG_FORMAT_RGB_COLORMAP, {1, 0},
       {40, 50, 60, 10, 20, 30}, "rgb888"},
  };
  const uint8_t colormap[] = {10, 20, 30, 40, 50, 60};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    png_image img;
    std::memset(&img, 0, sizeof(img));
    img.version = PNG_IMAGE_VERSION;
    img.width = 2;
    img.height = 1;
    img.format = c.format;
    img.colormap_entries = 2;
    const std::string path = TempPath(std::string(c.name) + ".png");
    ASSERT_TRUE(png_image_write_to_file(&img, path.c_str(), 0,
                                        c.pixels.data(), 0, colormap));
    const Image got = cli::ReadPng(path);
    EXPECT_STREQ(got.format().name, c.want_format);
    EXPECT_EQ(FrameBytes(got), c.want);
  }
}

// Bytes that are not a good PNG: foreign data, cuts at every kind of place,
// a broken checksum and an oversized header.
TEST(PngRead, DamagedFilesGiveAnError) {
  const std::string good_path = TempPath("good.png");
  cli::WritePng(good_path, cli::PatternImage(Fmt("rgb888"), 64, 64));
  const std::string good = ReadBytes(good_path);
  ASSERT_GT(good.size(), 100u);

  std::vector<std::pair<std::string, std::string>> bad = {
      {"empty", ""}, {"text", "this is not a png file at all"}};
  for (size_t cut : {4, 8, 16, 33, 60}) {
    bad.push_back({"cut" + std::to_string(cut), good.substr(0, cut)});
  }
  bad.push_back({"cut_half", good.substr(0, good.size() / 2)});
  bad.push_back({"cut_tail", good.substr(0, good.size() - 4)});
  std::string flipped = good;
  flipped[good.size() / 2] ^= 0x5A;  // inside IDAT
  bad.push_back({"flipped", flipped});

  // An IHDR of 100000 x 1 with a correct checksum.
  std::string ihdr = good.substr(12, 17);
  ihdr[4] = 0;
  ihdr[5] = 1;
  ihdr[6] = static_cast<char>(0x86);
  ihdr[7] = static_cast<char>(0xA0);
  const uLong crc = crc32(0, reinterpret_cast<const Bytef*>(ihdr.data()), 17);
  std::string huge = good.substr(0, 12) + ihdr;
  for (int s = 24; s >= 0; s -= 8) huge.push_back(static_cast<char>(crc >> s));
  huge += good.substr(33);
  bad.push_back({"huge", huge});

  for (const auto& b : bad) {
    SCOPED_TRACE(b.first);
    const std::string path = TempPath(b.first + ".png");
    WriteBytes(path, b.second);
    EXPECT_NE(RunErrorOf([&] { cli::ReadPng(path); }), "");
  }
}

TEST(PngWrite, SeveralFramesGoToNumberedFiles) {
  const std::string path = TempPath("seq.png");
  auto writer = cli::CreateWriter(path, FileType::kPng, cli::StreamInfo());
  for (int i = 0; i < 3; ++i) {
    writer->Write(cli::PatternImage(Fmt("yuv420"), 8, 8, i));
  }
  writer->Finish();
  ASSERT_EQ(writer->written().size(), 3u);
  EXPECT_EQ(writer->written()[2], TempPath("seq-0003.png"));
  EXPECT_EQ(ReadBytes(path), "");
  for (const std::string& p : writer->written()) cli::ReadPng(p);
}

}  // namespace
}  // namespace test
}  // namespace kelo
