// kelo anaglyph: side-by-side stereo pairs to red/cyan with kimgp_fpa.
#include <cstring>

#include "kimgp_csc.h"
#include "kimgp_frame.h"
#include "tools/kelo/command.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace cli {
namespace {

const FormatInfo& Rgb888() { return *LookupFormat(KIMGP_CS_RGB888); }

// The pair as tight rgb888 rows, which kimgp_fpa requires.
Image AsPair(const Image& src) {
  Image pair(Rgb888(), src.width(), src.height());
  if (src.format().cs == KIMGP_CS_RGB888) {
    for (int32_t y = 0; y < src.height(); ++y) {
      memcpy(pair.plane(0) + int64_t{y} * pair.stride(0), src.plane(0) + int64_t{y} * src.stride(0),
             static_cast<size_t>(src.RowBytes(0)));
    }
    return pair;
  }
  kimgp_img s = src.img();
  const int32_t status = kimgp_csc(&s, pair.mutable_img());
  if (status != KIMGP_OK) {
    throw RunError(std::string("anaglyph: kimgp_csc cannot turn ") + src.format().name +
                   " into rgb888 (status " + std::to_string(status) + ")");
  }
  return pair;
}

void PackInto(const Image& src, Image* dst, int32_t order) {
  const Image pair = AsPair(src);
  const int32_t status = kimgp_fpa(&pair.img(), dst->mutable_img(), order);
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_fpa", status, pair.format()));
}

int RunAnaglyph(const Args& args) {
  const auto order = static_cast<int32_t>(args.GetInt("order", 1, 1, 2));
  const InOut io = FramePositionals(args);
  std::unique_ptr<FrameReader> reader = OpenInput(args, io.in, "rgb888");
  const StreamInfo& info = reader->info();
  RequireLibraryFormat(*info.format, "kimgp_fpa");
  if (info.width % 2 != 0) {
    throw UsageError("anaglyph: a side-by-side pair is an even number of pixels wide, not " +
                     std::to_string(info.width));
  }
  StreamInfo out_info = info;
  out_info.format = &Rgb888();
  out_info.width = info.width / 2;
  out_info.y4m_tags.clear();
  Image dst(Rgb888(), out_info.width, info.height);
  TransformFrames("anaglyph", reader.get(), &dst, io.out, io.out_type, out_info,
                  [order](const Image& src, Image* d) { PackInto(src, d, order); });
  return 0;
}

// A stereo pair from the pattern: the right view sees it shifted left by a
// fortieth of its width, so the anaglyph shows red and cyan fringes.
void AnaglyphDemo(DemoContext* ctx) {
  const int32_t w = ctx->width(), h = ctx->height(), shift = w / 40 + 1;
  const Image view = PatternImage(Rgb888(), w, h);
  Image pair(Rgb888(), 2 * w, h);
  for (int32_t y = 0; y < h; ++y) {
    uint8_t* row = pair.plane(0) + int64_t{y} * pair.stride(0);
    const uint8_t* v = view.plane(0) + int64_t{y} * view.stride(0);
    memcpy(row, v, 3 * static_cast<size_t>(w));
    memcpy(row + 3 * w, v + 3 * shift, 3 * static_cast<size_t>(w - shift));
    memcpy(row + 6 * w - 3 * shift, v + 3 * (w - shift), 3 * static_cast<size_t>(shift));
  }
  Image dst(Rgb888(), w, h);
  PackInto(pair, &dst, 1);
  ctx->Emit("anaglyph-rgb888.png", dst,
            "a stereo pair made from the pattern packed red/cyan by kimgp_fpa");
}

}  // namespace

Command AnaglyphCommand() {
  return {"anaglyph",
          "pack side-by-side stereo pairs red/cyan with kimgp_fpa",
          "anaglyph [IN] OUT [--order 1|2] [--format F --size WxH]",
          "Takes every frame of IN (or of the pattern, default format rgb888)\n"
          "as a side-by-side stereo pair, the left view in the left half, and\n"
          "writes a red/cyan anaglyph of half the width with kimgp_fpa to OUT.\n"
          "--order 1 (default) takes red from the left view and green and\n"
          "blue from the right; --order 2 the other way round. Input in other\n"
          "formats is first converted to rgb888 with kimgp_csc.\n",
          FrameCommandOptions({{"order", "1|2", "which view gives red (default 1: left)"}}),
          RunAnaglyph,
          AnaglyphDemo};
}

}  // namespace cli
}  // namespace kelo
