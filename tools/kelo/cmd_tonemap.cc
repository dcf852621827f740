// kelo tonemap: every 10-bit HDR frame through kimgp_hdr_to_sdr into 8-bit
// SDR.
#include <cstring>

#include "kimgp_hdr.h"
#include "tools/kelo/command.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"

namespace kelo {
namespace cli {
namespace {

struct ToneSettings {
  int32_t mode = KIMGP_HDR_MODE_HDR10;
  int32_t kind = 0;      // source word 29: 1 = measure
  int32_t nits = 1000;   // source word 30
};

ToneSettings ParseSettings(const Args& args) {
  ToneSettings t;
  const std::string mode = args.Get("mode", "hdr10");
  if (mode == "hdr10") {
    t.mode = KIMGP_HDR_MODE_HDR10;
  } else if (mode == "hdr10b") {
    t.mode = KIMGP_HDR_MODE_HDR10B;
  } else if (mode == "hlg") {
    t.mode = KIMGP_HDR_MODE_HLG;
  } else {
    throw UsageError("tonemap: --mode must be hdr10, hdr10b or hlg");
  }
  if (args.Has("peak") && args.Has("measure")) {
    throw UsageError("tonemap: give --peak or --measure, not both");
  }
  t.nits = static_cast<int32_t>(args.GetInt("peak", 1000, 1, 10000));
  if (args.Has("measure")) t.kind = 1;
  return t;
}

// The destination codes the tone mapper writes in full.
bool Writable(int32_t cs) {
  switch (cs) {
    case KIMGP_CS_RGB888:
    case KIMGP_CS_RGBA8888:
    case KIMGP_CS_ARGB8888:
    case KIMGP_CS_YUV420:
    case KIMGP_CS_YV12:
    case KIMGP_CS_NV12:
    case KIMGP_CS_NV21:
    case KIMGP_CS_YUV400:
      return true;
    default:
      return false;
  }
}

// kimgp_hdr_to_sdr of src into dst (tightly packed, as the tone mapper
// writes), on a copy of the source descriptor: it stores the chosen peak.
int32_t ToneMapInto(const Image& src, Image* dst, const ToneSettings& t) {
  kimgp_img s = src.img();
  s.rsz_mode = t.kind;
  s.peak_nits = t.nits;
  const int32_t status = kimgp_hdr_to_sdr(&s, dst->mutable_img(), t.mode);
  if (status != KIMGP_OK) {
    throw RunError("kimgp_hdr_to_sdr: status " + std::to_string(status));
  }
  return s.peak_nits;
}

int RunTonemap(const Args& given) {
  const Args args = given.WithAlias("from", "format");
  args.ExpectPositional(2, 2);
  const std::string in = args.positional()[0], out = args.positional()[1];
  const ToneSettings t = ParseSettings(args);
  const FileType out_type = OutputType(args, out);
  RefuseSameFile(args, in, out);
  const FormatInfo* to = args.GetFormat("to");
  if (to == nullptr) {
    to = LookupFormat(out_type == FileType::kY4m ? KIMGP_CS_YUV420 : KIMGP_CS_RGBA8888);
  }
  if (!Writable(to->cs)) {
    throw UsageError(std::string("tonemap: cannot write ") + to->name +
                     " (rgb888, rgba8888, argb8888, yuv420, yv12, nv12, nv21 or yuv400)");
  }
  std::unique_ptr<FrameReader> reader = OpenInput(args, in, "p010le");
  const StreamInfo& info = reader->info();
  if (info.format->cs != KIMGP_CS_P010LE && info.format->cs != KIMGP_CS_YUV420PLANAR16) {
    throw UsageError(std::string("tonemap: input must be 10-bit 4:2:0 (p010le, yuv420p16 or a "
                                 "420p10 Y4M), not ") +
                     info.format->name);
  }
  Image dst(*to, info.width, info.height);
  StreamInfo out_info = info;
  out_info.format = to;
  out_info.y4m_tags.clear();
  TransformFrames("tonemap", reader.get(), &dst, out, out_type, out_info,
                  [&t](const Image& src, Image* d) { ToneMapInto(src, d, t); });
  return 0;
}

// A 10-bit frame with a neutral ramp from black to full scale on top and
// colour bars below, as HDR content would carry them.
Image HdrPattern(int32_t w, int32_t h) {
  Image img(*LookupFormat(KIMGP_CS_P010LE), w, h);
  kimgp_img* d = img.mutable_img();
  // U, V of red, yellow, green, cyan, blue, magenta.
  const uint16_t bars[6][2] = {{400, 880}, {150, 560}, {250, 250}, {700, 300}, {880, 460}, {700, 760}};
  auto put = [](uint8_t* row, int32_t i, uint16_t v) {
    const uint16_t word = static_cast<uint16_t>(v << 6);
    std::memcpy(row + 2 * i, &word, 2);
  };
  for (int32_t y = 0; y < h; ++y) {
    uint8_t* row = d->plane[0] + static_cast<ptrdiff_t>(y) * d->stride[0];
    for (int32_t x = 0; x < w; ++x) {
      const bool top = y < h / 2;
      put(row, x, static_cast<uint16_t>(top ? 64 + (940 - 64) * x / (w > 1 ? w - 1 : 1) : 600));
    }
  }
  for (int32_t y = 0; y < d->height[1]; ++y) {
    uint8_t* row = d->plane[1] + static_cast<ptrdiff_t>(y) * d->stride[1];
    for (int32_t x = 0; x < d->width[1]; ++x) {
      const bool top = 2 * y < h / 2;
      const uint16_t* bar = bars[(2 * x * 6) / (w > 0 ? w : 1) % 6];
      put(row, 2 * x, top ? 512 : bar[0]);
      put(row, 2 * x + 1, top ? 512 : bar[1]);
    }
  }
  return img;
}

void TonemapDemo(DemoContext* ctx) {
  const Image src = HdrPattern(ctx->width(), ctx->height());
  const struct Case {
    ToneSettings t;
    const char* file;
    const char* what;
  } kCases[] = {
      {{KIMGP_HDR_MODE_HDR10, 0, 1000}, "tonemap-pq-1000-to-rgba8888.png",
       "10-bit ramp and bars as PQ (1000 nits) tone-mapped by kimgp_hdr_to_sdr"},
      {{KIMGP_HDR_MODE_HDR10, 0, 4000}, "tonemap-pq-4000-to-rgba8888.png",
       "the same frame as PQ mastered at 4000 nits"},
      {{KIMGP_HDR_MODE_HLG, 0, 1000}, "tonemap-hlg-to-rgba8888.png",
       "the same frame as HLG tone-mapped by kimgp_hdr_to_sdr"},
  };
  for (const Case& c : kCases) {
    Image dst(*LookupFormat(KIMGP_CS_RGBA8888), ctx->width(), ctx->height());
    ToneMapInto(src, &dst, c.t);
    ctx->Emit(c.file, dst, c.what);
  }
}

}  // namespace

Command TonemapCommand() {
  return {"tonemap",
          "tone-map 10-bit HDR frames (PQ, HLG) to 8-bit SDR",
          "tonemap IN OUT [--mode hdr10|hdr10b|hlg] [--peak NITS | --measure] [--to FORMAT]",
          "Tone-maps every frame of IN with kimgp_hdr_to_sdr and writes the\n"
          "frames to OUT (PNG, Y4M or raw, by extension or --out-type). IN is a\n"
          "10-bit 4:2:0 Y4M (420p10) or raw p010le / yuv420p16 frames (give\n"
          "--format and --size). --mode: hdr10 (PQ, default), hdr10b (PQ, the\n"
          "second matrix and weights) or hlg. --peak sets the mastering peak\n"
          "in nits (default 1000: up to 1500 maps from 1000 nits, above from\n"
          "4000); --measure measures each frame's luma instead. --to: rgba8888\n"
          "(default; yuv420 for Y4M output), rgb888, argb8888, yuv420, yv12,\n"
          "nv12, nv21 or yuv400.\n",
          FrameCommandOptions({{"mode", "MODE", "hdr10, hdr10b or hlg"},
                               {"peak", "NITS", "mastering peak luminance"},
                               {"measure", nullptr, "measure each frame's peak"},
                               {"to", "FORMAT", "colour space to write"},
                               {"from", "FORMAT", "format of raw input (same as --format)"}}),
          RunTonemap,
          TonemapDemo};
}

}  // namespace cli
}  // namespace kelo
