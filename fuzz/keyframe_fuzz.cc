// Runs the key-frame rules of every media type and the access-unit walker of
// every format on the input.
//
// The rules see the input in a heap block of exactly the size the header
// asks callers for (size + KCMN_VKEYFRM_PAD, at least KCMN_VKEYFRM_MIN_READ),
// so AddressSanitizer reports any read past it; the MPEG-4, H.264 and HEVC
// scans, which promise to stay within size, get a block without padding.
// Every answer must be 0 or 1 and equal that of a plain byte loop written
// from the rules. The walker gets an exact copy and its units must lie inside
// the input, in order.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "kcmn_media.h"
#include "tests/support/keyframe_reference.h"
#include "tools/media/access_units.h"

namespace {


void Check(bool ok) {
  if (!ok) abort();
}

// Judges `size` bytes at `data` on a copy with exactly the documented extent.
void Judge(uint32_t type, const uint8_t* data, size_t size) {
  const size_t readable =
      std::max<size_t>(size + KCMN_VKEYFRM_PAD, KCMN_VKEYFRM_MIN_READ);
  std::unique_ptr<uint8_t[]> buf(new uint8_t[readable]());
  if (size > 0) memcpy(buf.get(), data, size);
  const int32_t n = static_cast<int32_t>(size);
  const int32_t got = kcmn_is_vkeyfrm(type, buf.get(), n);
  Check(got == kelo::test::ReferenceKeyframe(type, buf.get(), n));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  for (uint32_t type = 100; type <= 124; ++type) Judge(type, data, size);
  for (uint32_t type : {0u, 299u, 0xFFFFFFFFu}) Judge(type, data, size);
  for (uint32_t type : {KCMN_MT_VID_MPEG4, KCMN_MT_VID_H264, KCMN_MT_VID_HEVC}) {
    if (size == 0) break;
    std::unique_ptr<uint8_t[]> exact(new uint8_t[size]);
    memcpy(exact.get(), data, size);
    Check(kcmn_is_vkeyfrm(type, exact.get(), static_cast<int32_t>(size)) ==
          kelo::test::ReferenceKeyframe(type, exact.get(), static_cast<int32_t>(size)));
  }

  using kelo::media::Format;
  std::unique_ptr<uint8_t[]> copy(new uint8_t[std::max<size_t>(size, 1)]);
  if (size > 0) memcpy(copy.get(), data, size);
  for (Format f : {Format::kH264, Format::kHevc, Format::kMpeg4, Format::kH263,
                   Format::kIvf, Format::kFlv}) {
    const kelo::media::Walk walk = kelo::media::SplitAccessUnits(f, copy.get(), size);
    size_t next = 0;
    for (const kelo::media::AccessUnit& u : walk.units) {
      Check(u.offset >= next && u.offset <= size && u.size <= size - u.offset);
      next = u.offset + u.size;
      Judge(static_cast<uint32_t>(u.media_type), copy.get() + u.offset, u.size);
    }
  }
  kelo::media::DetectFormat("input", copy.get(), size);
  return 0;
}
