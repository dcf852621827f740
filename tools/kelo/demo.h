// What `kelo demo` hands to each command's demo function: where to write,
// the picture size, and Emit() to write a frame as a PNG and list it.
#ifndef KELO_TOOLS_KELO_DEMO_H_
#define KELO_TOOLS_KELO_DEMO_H_

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "tools/kelo/image.h"

namespace kelo {
namespace cli {

class DemoContext {
 public:
  DemoContext(std::string dir, int32_t w, int32_t h, std::FILE* out)
      : dir_(std::move(dir)), w_(w), h_(h), out_(out) {}

  int32_t width() const { return w_; }
  int32_t height() const { return h_; }

  // Writes `frame` as DIR/name (a .png name) and prints "DIR/name  what".
  void Emit(const std::string& name, const Image& frame,
            const std::string& what);
  const std::vector<std::string>& written() const { return written_; }

 private:
  std::string dir_;
  int32_t w_, h_;
  std::FILE* out_;
  std::vector<std::string> written_;
};

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_DEMO_H_
