// kelo resize --dct [--pre 2|4]: frames through the DCT-domain downscaler.
#ifndef KELO_TOOLS_KELO_DCT_RESIZE_H_
#define KELO_TOOLS_KELO_DCT_RESIZE_H_

#include <string>

#include "tools/kelo/args.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/image.h"
#include "tools/kelo/input.h"

namespace kelo {
namespace cli {

// With --dct: resizes every frame of `reader` into `dst` with one context
// (kimgp_rsz_new_set_img is not needed: the frames carry their strides;
// kimgp_rsz_new_init once, kimgp_rsz_new or kimgp_rsz_new_rgba8888 per
// frame, kimgp_rsz_new_deinit) and writes them as TransformFrames does;
// returns true. Without --dct returns false (and refuses a lone --pre).
// With a null reader (the demo), adds the DCT-domain downscale of the
// pattern beside the ordinary one to `demo` instead.
bool DctResize(const Args* args, FrameReader* reader, Image* dst, const std::string& out,
               FileType type, const StreamInfo& out_info, DemoContext* demo);

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_DCT_RESIZE_H_
