// Calls into the library on Images, with the descriptor adjustments the
// library's rules ask for and readable messages for its statuses.
#ifndef KELO_TOOLS_KELO_OPS_H_
#define KELO_TOOLS_KELO_OPS_H_

#include <cstdint>
#include <string>

#include "kimgp_img.h"
#include "tools/kelo/image.h"

namespace kelo {
namespace cli {

// Throws a RunError when f is a kelo-only format, which no library
// operation (named by `op`) takes.
void RequireLibraryFormat(const FormatInfo& f, const char* op);

// "kimgp_cpy: format rgba8888 not supported (status -3)" and the like.
std::string StatusMessage(const char* op, int32_t status,
                          const FormatInfo& f);

// The descriptor of a frame laid out by Layout() (width[0] x height[0] is
// the picture) as kimgp_cpy reads it. kimgp_cpy copies every
// code up to 99 other than yuv400 and nv12 as three byte planes of
// width[i] bytes, so an interleaved chroma plane (nv21) is described with
// its width in bytes and plane 2 as empty; tiled planes are copied whole
// (width = stride, height = buf_height), tiles and all.
kimgp_img CopyView(const kimgp_img& img);

// True when kimgp_cpy copies a plane of f as 16-bit samples (2xx codes,
// the nv12 chroma plane). It steps such rows by strides rounded down to
// even, so a destination with odd row padding would not get its rows where
// its descriptor puts them.
bool CopiesSixteenBitRows(const FormatInfo& f);

// The rotation code (KIMGP_ROT_*) of a --rotate value: 90l, 90r, 180, hori
// or vert. Anything else is a UsageError naming `command`.
uint32_t RotationCode(const std::string& value, const char* command);

// True for the quarter turns, which exchange width and height.
bool IsQuarterTurn(uint32_t code);

// kimgp_cpy from src into dst, which must have the same shape. Returns the
// library's status; nothing is called for kelo-only formats (see
// RequireLibraryFormat).
int32_t CopyWithLibrary(const Image& src, Image* dst);

// Throws a UsageError when a quarter turn of f would not be f again: the
// library moves planes as they are, so every plane must be subsampled alike
// in both directions.
void RequireQuarterTurnable(const FormatInfo& f, uint32_t code, const char* cmd);

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_OPS_H_
