// The descriptor's layout is part of the interface: operations address it by
// word index. On 32-bit targets it is exactly 44 words with every field at its
// word; on 64-bit targets the pointers are native and the order is the same.
#include <cstddef>

#include "kimgp_img.h"

namespace kelo {
namespace {

[[maybe_unused]] constexpr size_t Word(size_t offset) { return offset / 4; }

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(kimgp_img) == 44 * 4, "44 words");
static_assert(Word(offsetof(kimgp_img, width)) == 0, "word 0");
static_assert(Word(offsetof(kimgp_img, height)) == 4, "word 4");
static_assert(Word(offsetof(kimgp_img, stride)) == 8, "word 8");
static_assert(Word(offsetof(kimgp_img, buf_height)) == 12, "word 12");
static_assert(Word(offsetof(kimgp_img, plane)) == 16, "word 16");
static_assert(Word(offsetof(kimgp_img, reserved)) == 20, "word 20");
static_assert(Word(offsetof(kimgp_img, cs)) == 24, "word 24");
static_assert(Word(offsetof(kimgp_img, x)) == 25, "word 25");
static_assert(Word(offsetof(kimgp_img, y)) == 26, "word 26");
static_assert(Word(offsetof(kimgp_img, reserved2)) == 27, "word 27");
static_assert(Word(offsetof(kimgp_img, std)) == 28, "word 28");
static_assert(Word(offsetof(kimgp_img, rsz_mode)) == 29, "word 29");
static_assert(Word(offsetof(kimgp_img, peak_nits)) == 30, "word 30");
static_assert(Word(offsetof(kimgp_img, reserved3)) == 31, "word 31");
#else
// 64-bit: four 8-byte pointers after 16 words, the rest shifted by 4 words.
static_assert(sizeof(kimgp_img) == 48 * 4, "44 words plus 4 for the pointers");
static_assert(offsetof(kimgp_img, plane) == 16 * 4, "pointers after 16 words");
static_assert(offsetof(kimgp_img, cs) == 28 * 4, "cs after the pointers");
static_assert(offsetof(kimgp_img, peak_nits) == 34 * 4, "order kept");
#endif

}  // namespace
}  // namespace kelo
