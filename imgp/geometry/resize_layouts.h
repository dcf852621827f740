// Sample layouts of the resize kernels.
//
// A layout says how one sample unit (the step of a kernel: a byte, a byte
// pair, a 5-6-5 pixel, a 3- or 4-byte pixel, a 16-bit word or word pair) is
// laid out in memory and split into the components that are filtered on
// their own. The scalar kernels are templates over these traits:
//
//   L::kBytes       bytes per unit
//   L::kComps       components per unit
//   L::kStrideUnit  bytes per unit of the kernel's stride arguments (2 for the
//                   5-6-5 kernels, whose strides are in pixels; else 1)
//   L::Unpack(p, c) reads the unit at p into c[0 .. kComps)
//   L::Pack(p, c)   writes c[0 .. kComps) as the unit at p (each in range)
//
// Map<L>(out, f, in...) applies f component by component to the units at
// in... and writes the result as the unit at out.
#ifndef KELO_IMGP_GEOMETRY_RESIZE_LAYOUTS_H_
#define KELO_IMGP_GEOMETRY_RESIZE_LAYOUTS_H_

#include <cstddef>
#include <cstdint>
#include <utility>

namespace kelo {
namespace rsz {

// N bytes, each its own component (8b, 8b8b, 8b8b8b, 8b8b8b8b).
template <int N>
struct ByteUnits {
  static constexpr int kBytes = N;
  static constexpr int kComps = N;
  static constexpr int kStrideUnit = 1;
  static void Unpack(const uint8_t* p, uint32_t* c) {
    for (int i = 0; i < N; ++i) c[i] = p[i];
  }
  static void Pack(uint8_t* p, const uint32_t* c) {
    for (int i = 0; i < N; ++i) p[i] = static_cast<uint8_t>(c[i]);
  }
};

// N little-endian 16-bit words (16b, 16b16b).
template <int N>
struct WordUnits {
  static constexpr int kBytes = 2 * N;
  static constexpr int kComps = N;
  static constexpr int kStrideUnit = 1;
  static void Unpack(const uint8_t* p, uint32_t* c) {
    for (int i = 0; i < N; ++i) c[i] = p[2 * i] | static_cast<uint32_t>(p[2 * i + 1]) << 8;
  }
  static void Pack(uint8_t* p, const uint32_t* c) {
    for (int i = 0; i < N; ++i) {
      p[2 * i] = static_cast<uint8_t>(c[i]);
      p[2 * i + 1] = static_cast<uint8_t>(c[i] >> 8);
    }
  }
};

// A little-endian 16-bit pixel with fields at bits 0-4, 5-10 and 11-15.
struct Rgb565Units {
  static constexpr int kBytes = 2;
  static constexpr int kComps = 3;
  static constexpr int kStrideUnit = 2;
  static void Unpack(const uint8_t* p, uint32_t* c) {
    const uint32_t v = p[0] | static_cast<uint32_t>(p[1]) << 8;
    c[0] = v & 0x1F;
    c[1] = (v >> 5) & 0x3F;
    c[2] = v >> 11;
  }
  static void Pack(uint8_t* p, const uint32_t* c) {
    const uint32_t v = c[0] | c[1] << 5 | c[2] << 11;
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
  }
};

using L8b = ByteUnits<1>;
using L8b8b = ByteUnits<2>;
using L8b8b8b = ByteUnits<3>;
using L8b8b8b8b = ByteUnits<4>;
using L5b6b5b = Rgb565Units;
using L16b = WordUnits<1>;
using L16b16b = WordUnits<2>;

template <class L, class F, size_t... K>
inline void MapComponents(uint8_t* out, F f, const uint32_t (*c)[L::kComps],
                          std::index_sequence<K...>) {
  uint32_t r[L::kComps];
  for (int i = 0; i < L::kComps; ++i) r[i] = f(c[K][i]...);
  L::Pack(out, r);
}

// out = f(in...) per component; f takes and returns uint32_t values.
template <class L, class F, class... P>
inline void Map(uint8_t* out, F f, const P*... in) {
  const uint8_t* ptrs[] = {in...};
  uint32_t c[sizeof...(P)][L::kComps];
  for (size_t k = 0; k < sizeof...(P); ++k) L::Unpack(ptrs[k], c[k]);
  MapComponents<L>(out, f, c, std::index_sequence_for<P...>{});
}

}  // namespace rsz
}  // namespace kelo

#endif  // KELO_IMGP_GEOMETRY_RESIZE_LAYOUTS_H_
