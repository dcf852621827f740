#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "kcmn_media.h"

namespace kelo {
namespace test {
namespace {

// The code as containers store it: first character in the lowest byte.
int32_t Code(const std::string& s) {
  uint32_t v = 0;
  for (int i = 3; i >= 0; --i) v = v << 8 | static_cast<uint8_t>(s[i]);
  return static_cast<int32_t>(v);
}

struct Row {
  std::string code;
  int32_t type;
};

const std::vector<Row> kVideoRows = {
    {"mp4v", 102}, {"MP4V", 102}, {"XVID", 102}, {"xvid", 102}, {"DIVX", 102},
    {"divx", 102}, {"DX50", 102}, {"dx50", 102}, {"FMP4", 102}, {"M4S2", 102},
    {"m4s2", 102}, {"DIV4", 102}, {"div4", 102},
    {"H263", 103}, {"h263", 103}, {"d263", 103}, {"s263", 103},
    {"avc1", 104}, {"AVC1", 104}, {"avcC", 104}, {"h264", 104}, {"H264", 104},
    {"x264", 104}, {"X264", 104},
    {"wmv1", 105}, {"WMV1", 105}, {"wmv2", 106}, {"WMV2", 106},
    {"wmv3", 107}, {"WMV3", 107}, {"div3", 110}, {"DIV3", 110},
    {"FLV1", 111}, {"RV10", 113}, {"RV20", 114}, {"RV30", 115}, {"RV40", 116},
    {"MP43", 117}, {"mp43", 117}, {"wvc1", 118}, {"WVC1", 118}, {"vc-1", 118},
    {"VP80", 119}, {"hvc1", 120}, {"hev1", 120}, {"hvcC", 120}, {"smhC", 120},
    {"VP90", 121}, {"av01", 122}, {"av1C", 122},
};

const std::vector<Row> kAudioCodeRows = {
    {"mp4a", 306}, {"aac ", 306}, {"ac-3", 307}, {"samr", 309}, {"sawb", 310},
    {"sqcp", 311}, {"dqcp", 311}, {"evrc", 321}, {"fLaC", 322}, {"sipr", 331},
    {"cook", 332}, {"Opus", 334}, {"DSD ", 335}, {"ec-3", 337}, {"ac-4", 338},
};

struct TagRow {
  int32_t tag;
  int32_t type;
};

const std::vector<TagRow> kAudioTagRows = {
    {1, 300},    {6, 301},    {7, 302},      {80, 304},      {85, 305},
    {255, 306},  {8192, 307}, {8193, 308},   {352, 312},     {353, 312},
    {354, 313},  {355, 314},  {61868, 322},  {0x2674F, 323}, {17, 329},
    {2, 330},
};

const std::vector<Row> kSubtitleRows = {
    {"SSRT", 3000}, {"TX3G", 3006}, {"tx3g", 3006}, {"SBTL", 3006},
    {"sbtl", 3006}, {"SASS", 3007}, {"SSSA", 3008},
};

TEST(FourCc, CodeIsALittleEndianLoad) {
  EXPECT_EQ(Code("avc1"), 0x31637661);
  EXPECT_EQ(Code("smhC"), 0x43686D73);
  EXPECT_EQ(Code("SSRT"), 0x54525353);
  EXPECT_EQ(Code("SASS"), 0x53534153);
  EXPECT_EQ(Code("SSSA"), 0x41535353);
  EXPECT_EQ(Code("d263"), 0x33363264);
}

TEST(FourCc, EveryVideoRow) {
  for (const Row& r : kVideoRows) {
    EXPECT_EQ(kcmn_fcc2mt_vid(Code(r.code)), r.type) << r.code;
    EXPECT_EQ(kcmn_fcc2mt(Code(r.code)), r.type) << r.code;
    EXPECT_EQ(kcmn_fcc2mt_aud(Code(r.code)), 499) << r.code;
    EXPECT_EQ(kcmn_fcc2mt_sub(Code(r.code)), 3199) << r.code;
  }
}

TEST(FourCc, EveryAudioRow) {
  for (const Row& r : kAudioCodeRows) {
    EXPECT_EQ(kcmn_fcc2mt_aud(Code(r.code)), r.type) << r.code;
    EXPECT_EQ(kcmn_fcc2mt(Code(r.code)), r.type) << r.code;
    EXPECT_EQ(kcmn_fcc2mt_vid(Code(r.code)), 299) << r.code;
  }
  for (const TagRow& r : kAudioTagRows) {
    EXPECT_EQ(kcmn_fcc2mt_aud(r.tag), r.type) << r.tag;
    EXPECT_EQ(kcmn_fcc2mt(r.tag), r.type) << r.tag;
    EXPECT_EQ(kcmn_fcc2mt_vid(r.tag), 299) << r.tag;
  }
}

TEST(FourCc, EverySubtitleAndProtectedRow) {
  for (const Row& r : kSubtitleRows) {
    EXPECT_EQ(kcmn_fcc2mt_sub(Code(r.code)), r.type) << r.code;
    EXPECT_EQ(kcmn_fcc2mt(Code(r.code)), r.type) << r.code;
    EXPECT_EQ(kcmn_fcc2mt_drm(Code(r.code)), 1299) << r.code;
  }
  EXPECT_EQ(kcmn_fcc2mt_drm(Code("DIVX")), 1100);
  EXPECT_EQ(kcmn_fcc2mt_drm(Code("divx")), 1100);
  for (const char* other : {"DivX", "DX50", "xvid", "avc1", "SSRT"}) {
    EXPECT_EQ(kcmn_fcc2mt_drm(Code(other)), 1299) << other;
  }
  EXPECT_EQ(kcmn_fcc2mt_drm(0), 1299);
}

// Changing the case of any one letter of a listed code gives a code that is
// unknown to the family unless it is listed itself.
TEST(FourCc, CaseMatters) {
  auto check = [](const std::vector<Row>& rows, int32_t (*fn)(int32_t),
                  int32_t unknown) {
    std::set<std::string> listed;
    for (const Row& r : rows) listed.insert(r.code);
    for (const Row& r : rows) {
      for (int i = 0; i < 4; ++i) {
        std::string s = r.code;
        const unsigned char c = static_cast<unsigned char>(s[i]);
        if (!isalpha(c)) continue;
        s[i] = static_cast<char>(islower(c) ? toupper(c) : tolower(c));
        if (listed.count(s) != 0) continue;
        EXPECT_EQ(fn(Code(s)), unknown) << s;
      }
    }
  };
  check(kVideoRows, kcmn_fcc2mt_vid, 299);
  check(kAudioCodeRows, kcmn_fcc2mt_aud, 499);
  check(kSubtitleRows, kcmn_fcc2mt_sub, 3199);
  EXPECT_EQ(kcmn_fcc2mt_vid(Code("Avc1")), 299);
  EXPECT_EQ(kcmn_fcc2mt(Code("AAC ")), 3199);
  EXPECT_EQ(kcmn_fcc2mt(Code("opus")), 3199);
  EXPECT_EQ(kcmn_fcc2mt(Code("flac")), 3199);
  EXPECT_EQ(kcmn_fcc2mt(Code("flv1")), 3199);
  EXPECT_EQ(kcmn_fcc2mt(Code("vp80")), 3199);
  EXPECT_EQ(kcmn_fcc2mt(Code("AV01")), 3199);
  EXPECT_EQ(kcmn_fcc2mt(Code("hvc1") ^ 0x20), 3199);  // "Hvc1"
  // Trailing space matters: "aac" without it, or NUL-padded, is not AAC.
  EXPECT_EQ(kcmn_fcc2mt_aud(Code(std::string("aac\0", 4))), 499);
}

// The lower-case H.263 codes are exactly bits 0, 4 and 15 of the 16 codes
// from "d263" up; nothing else in or next to that range maps to H.263.
TEST(FourCc, H263RangeAndItsNeighbours) {
  const int32_t base = Code("d263");
  for (int k = -2; k <= 20; ++k) {
    const int32_t want = (k == 0 || k == 4 || k == 15) ? 103 : 299;
    EXPECT_EQ(kcmn_fcc2mt_vid(base + k), want) << "d263 + " << k;
  }
  EXPECT_EQ(kcmn_fcc2mt_vid(base + 16), 299);       // "t263"
  EXPECT_EQ(kcmn_fcc2mt(base + 1), 3199);
  EXPECT_EQ(kcmn_fcc2mt_vid(Code("D263")), 299);
  EXPECT_EQ(kcmn_fcc2mt_vid(Code("S263")), 299);
  // Codes far below the range must not wrap into it.
  EXPECT_EQ(kcmn_fcc2mt_vid(base - 0x10000), 299);
  EXPECT_EQ(kcmn_fcc2mt_vid(INT32_MIN), 299);
  EXPECT_EQ(kcmn_fcc2mt_vid(INT32_MAX), 299);
}

TEST(FourCc, NumericTagsExactly) {
  for (int32_t tag : {0, 3, 4, 5, 8, 81, 254, 256, 351, 356, 8194, 0xF1AD,
                      0x674F, 0x2674E, 0x26750, 0x1F1AC, -1, -85}) {
    EXPECT_EQ(kcmn_fcc2mt_aud(tag), 499) << tag;
  }
  // 0x2674F is matched whole: its low 16 bits are no tag, nor does a 16-bit
  // tag with the same low bits match it.
  EXPECT_EQ(kcmn_fcc2mt_aud(0x2674F), 323);
  EXPECT_EQ(kcmn_fcc2mt_aud(0x674F), 499);
}

TEST(FourCc, DispatcherOrder) {
  EXPECT_EQ(kcmn_fcc2mt(Code("avc1")), 104);
  EXPECT_EQ(kcmn_fcc2mt(85), 305);
  EXPECT_EQ(kcmn_fcc2mt(Code("tx3g")), 3006);
  // Video comes before the protected step: DIVX is MPEG-4 to the dispatcher.
  EXPECT_EQ(kcmn_fcc2mt(Code("DIVX")), 102);
  EXPECT_EQ(kcmn_fcc2mt(Code("divx")), 102);
  EXPECT_EQ(kcmn_fcc2mt_drm(Code("DIVX")), 1100);
  // Unknown in every family: 3199, never the other unknowns.
  EXPECT_EQ(kcmn_fcc2mt(0), 3199);
  EXPECT_EQ(kcmn_fcc2mt(Code("abcd")), 3199);
  EXPECT_EQ(kcmn_fcc2mt_vid(Code("abcd")), 299);
  EXPECT_EQ(kcmn_fcc2mt_aud(0), 499);
  EXPECT_EQ(kcmn_fcc2mt_sub(Code("abcd")), 3199);
}

// Every family's result is its own unknown or a value its table lists, and
// the dispatcher equals the first family that knows the code.
TEST(FourCc, DispatcherAgreesWithFamiliesEverywhere) {
  std::set<int32_t> video, audio, subtitle;
  for (const Row& r : kVideoRows) video.insert(r.type);
  for (const Row& r : kAudioCodeRows) audio.insert(r.type);
  for (const TagRow& r : kAudioTagRows) audio.insert(r.type);
  for (const Row& r : kSubtitleRows) subtitle.insert(r.type);
  std::vector<int32_t> codes;
  for (int32_t v = -300; v < 70000; ++v) codes.push_back(v);
  std::mt19937 rng(7);
  for (int i = 0; i < 200000; ++i) codes.push_back(static_cast<int32_t>(rng()));
  for (const Row& r : kVideoRows) codes.push_back(Code(r.code));
  for (const Row& r : kSubtitleRows) codes.push_back(Code(r.code));
  for (int32_t c : codes) {
    const int32_t a = kcmn_fcc2mt_aud(c), v = kcmn_fcc2mt_vid(c),
                  s = kcmn_fcc2mt_sub(c), d = kcmn_fcc2mt_drm(c);
    ASSERT_TRUE(a == 499 || audio.count(a)) << c;
    ASSERT_TRUE(v == 299 || video.count(v)) << c;
    ASSERT_TRUE(s == 3199 || subtitle.count(s)) << c;
    ASSERT_TRUE(d == 1299 || d == 1100) << c;
    const int32_t want = a != 499 ? a : v != 299 ? v : s != 3199 ? s : d != 1299 ? d : 3199;
    ASSERT_EQ(kcmn_fcc2mt(c), want) << c;
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
