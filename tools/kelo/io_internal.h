// Pieces shared by the readers and writers of io_*.cc.
#ifndef KELO_TOOLS_KELO_IO_INTERNAL_H_
#define KELO_TOOLS_KELO_IO_INTERNAL_H_

#include <cstdint>
#include <memory>
#include <string>

#include "tools/kelo/file.h"
#include "tools/kelo/image.h"
#include "tools/kelo/io.h"

namespace kelo {
namespace cli {

// Reads one frame in raw file layout into *out; returns the bytes read,
// which is less than out->FileBytes() only at the end of the file.
int64_t ReadPayload(File* file, Image* out);
void WritePayload(File* file, const Image& frame);

// Makes *out a frame of the given shape unless it already is one.
void Reshape(const FormatInfo& f, int32_t w, int32_t h, Image* out);

std::unique_ptr<FrameWriter> CreateRawWriter(const std::string& path);
std::unique_ptr<FrameWriter> CreateY4mWriter(const std::string& path,
                                             const StreamInfo& like);
std::unique_ptr<FrameWriter> CreatePngWriter(const std::string& path);

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_IO_INTERNAL_H_
