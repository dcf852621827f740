// kelo deblock and kelo enhance: the enhancement filters on every frame.
#include <cstring>
#include <vector>

#include "kimgp_csc.h"
#include "kimgp_enhance.h"
#include "tools/kelo/command.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/enhance_ops.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace cli {

bool IsDeblockable(const FormatInfo& f) {
  return !IsKeloOnly(f) && !IsTiled(f) && f.family == Family::kYuv;
}

Image BlockMeans(const Image& src) {
  Image out(src);
  const kimgp_img& m = out.img();
  for (int i = 0; i < out.planes(); ++i) {
    const int32_t bytes = out.RowBytes(i), rows = m.height[i];
    for (int32_t by = 0; by < rows; by += 8) {
      for (int32_t bx = 0; bx < bytes; bx += 8) {
        const int32_t bh = rows - by < 8 ? rows - by : 8, bw = bytes - bx < 8 ? bytes - bx : 8;
        uint32_t sum = 0;
        for (int32_t y = 0; y < bh; ++y) {
          for (int32_t x = 0; x < bw; ++x) sum += src.plane(i)[(by + y) * int64_t{m.stride[i]} + bx + x];
        }
        const uint32_t n = static_cast<uint32_t>(bw * bh);
        const auto mean = static_cast<uint8_t>((sum + n / 2) / n);
        for (int32_t y = 0; y < bh; ++y) {
          memset(out.plane(i) + (by + y) * int64_t{m.stride[i]} + bx, mean, static_cast<size_t>(bw));
        }
      }
    }
  }
  return out;
}

void DeblockImage(Image* im, uint32_t strength, bool luma_only) {
  if (!IsDeblockable(im->format())) {
    throw RunError(std::string("kimgp_dbf8x8: format ") + im->format().name +
                   " not supported (8-bit YUV only)");
  }
  kimgp_img m = im->img();
  if (luma_only) {
    kimgp_dbf8x8(m.plane[0], static_cast<int32_t>(strength), m.stride[0], m.width[0], m.height[0]);
    return;
  }
  for (int i = im->planes(); i < 4; ++i) m.plane[i] = nullptr;
  if (im->format().cs == KIMGP_CS_NV12 || im->format().cs == KIMGP_CS_NV21) m.plane[1] = nullptr;
  const int32_t status = kimgp_dbf8x8_yuv(&m, strength);
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_dbf8x8_yuv", status, im->format()));
}

namespace {

void CopyInto(const Image& src, Image* dst) {
  const int32_t status = CopyWithLibrary(src, dst);
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_cpy", status, src.format()));
}

int RunDeblock(const Args& args) {
  const auto strength = static_cast<uint32_t>(args.GetInt("strength", 8, 0, 15));
  const bool luma_only = args.Has("plane");
  const InOut io = FramePositionals(args);
  std::unique_ptr<FrameReader> reader = OpenInput(args, io.in, "yuv420");
  const StreamInfo& info = reader->info();
  RequireLibraryFormat(*info.format, "kimgp_dbf8x8");
  if (!IsDeblockable(*info.format)) {
    throw RunError(std::string("deblock: format ") + info.format->name +
                   " not supported (8-bit YUV only)");
  }
  Image dst(*info.format, info.width, info.height);
  TransformFrames("deblock", reader.get(), &dst, io.out, io.out_type, info,
                  [strength, luma_only](const Image& src, Image* d) {
                    CopyInto(src, d);
                    DeblockImage(d, strength, luma_only);
                  });
  return 0;
}

// The library's enhancement reads planes as contiguous rows.
Image Tight(const Image& src) {
  Image t(src.format(), src.width(), src.height());
  CopyInto(src, &t);
  return t;
}

void EnhanceInto(const Image& given, Image* dst, bool detail, int32_t gain) {
  const Image src = Tight(given);
  CopyInto(src, dst);
  if (detail) {
    const int32_t status = kimgp_vqe_de(&src.img(), dst->mutable_img(), 4);
    if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_vqe_de", status, src.format()));
  }
  if (gain >= 0) {
    uint8_t table[256];
    color_sat_lut(table, static_cast<int16_t>(gain));
    const kimgp_img& s = src.img();
    color_sat(table, s.width[1] * s.height[1], s.plane[1], s.plane[2], dst->plane(1),
              dst->plane(2));
  }
}

int RunEnhance(const Args& args) {
  const bool detail = args.Has("detail");
  const auto gain = static_cast<int32_t>(args.GetInt("saturation", -1, 0, 32767));
  if (!detail && gain < 0) throw UsageError("enhance: give --detail, --saturation GAIN or both");
  const InOut io = FramePositionals(args);
  std::unique_ptr<FrameReader> reader = OpenInput(args, io.in, "yuv420");
  const StreamInfo& info = reader->info();
  if (info.format->cs != KIMGP_CS_YUV420) {
    throw RunError(std::string("enhance: format ") + info.format->name +
                   " not supported (the library's enhancement takes yuv420 only)");
  }
  Image dst(*info.format, info.width, info.height);
  TransformFrames("enhance", reader.get(), &dst, io.out, io.out_type, info,
                  [detail, gain](const Image& src, Image* d) { EnhanceInto(src, d, detail, gain); });
  return 0;
}

// A YUV result shown in colour.
Image InColour(const Image& yuv) {
  Image rgba(*LookupFormat(KIMGP_CS_RGBA8888), yuv.width(), yuv.height());
  kimgp_img s = yuv.img();
  const int32_t status = kimgp_csc(&s, rgba.mutable_img());
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_csc", status, yuv.format()));
  return rgba;
}

void DeblockDemo(DemoContext* ctx) {
  const Image pattern = PatternImage(*LookupFormat(KIMGP_CS_YUV420), ctx->width(), ctx->height());
  Image blocky = BlockMeans(pattern);
  ctx->Emit("deblock-input-blocky.png", InColour(blocky),
            "pattern in yuv420 reduced to 8x8 block means, as a coarse block coder leaves it");
  DeblockImage(&blocky, 8, false);
  ctx->Emit("deblock-strength-8.png", InColour(blocky),
            "the blocky frame deblocked by kimgp_dbf8x8_yuv, strength 8");
}

void EnhanceDemo(DemoContext* ctx) {
  const Image pattern = PatternImage(*LookupFormat(KIMGP_CS_YUV420), ctx->width(), ctx->height());
  Image out(pattern.format(), pattern.width(), pattern.height());
  EnhanceInto(pattern, &out, true, -1);
  ctx->Emit("enhance-detail.png", InColour(out), "pattern in yuv420 sharpened by kimgp_vqe_de");
  EnhanceInto(pattern, &out, false, 1800);
  ctx->Emit("enhance-saturation-1800.png", InColour(out),
            "pattern in yuv420, chroma mapped by color_sat through color_sat_lut(1800)");
}

}  // namespace

Command DeblockCommand() {
  return {"deblock",
          "soften 8x8 block edges with kimgp_dbf8x8_yuv",
          "deblock [IN] OUT [--strength N] [--plane] [--format F --size WxH]",
          "Filters the 8x8 block edges of every frame of IN (or of the pattern,\n"
          "default format yuv420), horizontal edges then vertical ones, and\n"
          "writes the frames to OUT. Every plane goes through kimgp_dbf8x8_yuv\n"
          "on its own 8x8 grid; with --plane only the luma plane, through\n"
          "kimgp_dbf8x8, which limits the strength to 12. Steps up to the\n"
          "strength are corrected fully, steps from twice the strength are\n"
          "kept as edges. Takes 8-bit YUV; the interleaved chroma of nv12 and\n"
          "nv21 is left as it is.\n",
          FrameCommandOptions({{"strength", "N", "0 to 15 (default 8)"},
                               {"plane", nullptr, "the luma plane only, with kimgp_dbf8x8"}}),
          RunDeblock,
          DeblockDemo};
}

Command EnhanceCommand() {
  return {"enhance",
          "sharpen luma or change saturation of yuv420 frames",
          "enhance [IN] OUT [--detail] [--saturation GAIN] [--format F --size WxH]",
          "With --detail, sharpens the luma plane of every yuv420 frame of IN\n"
          "(or of the pattern) with kimgp_vqe_de. With --saturation GAIN,\n"
          "builds a chroma table with color_sat_lut (1024 is unity) and maps\n"
          "both chroma planes through it with color_sat. Note: the library's\n"
          "own saturation entry, kimgp_vqe_cs, does not use such a table: it\n"
          "sets every chroma sample to 0, which is why kelo does not call it.\n"
          "The table maps 2k to the gained k (values up to 127) and odd values\n"
          "to about 128 - gain / 8, as the library defines it.\n",
          FrameCommandOptions({{"detail", nullptr, "sharpen the luma plane"},
                               {"saturation", "GAIN", "chroma table gain, 0 to 32767"}}),
          RunEnhance,
          EnhanceDemo};
}

}  // namespace cli
}  // namespace kelo
