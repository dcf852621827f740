#include "tools/kelo/file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "tools/kelo/error.h"

namespace kelo {
namespace cli {

File File::OpenRead(const std::string& path) {
  struct stat st;
  if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
    throw RunError("cannot read " + path + ": it is a directory");
  }
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (f == nullptr) {
    throw RunError("cannot open " + path + ": " + std::strerror(errno));
  }
  return File(f, path);
}

File File::OpenWrite(const std::string& path) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) {
    throw RunError("cannot create " + path + ": " + std::strerror(errno));
  }
  return File(f, path);
}

File::~File() {
  if (f_ != nullptr) std::fclose(f_);
}

void File::Fail(const char* what) const {
  const int e = errno;
  throw RunError(std::string("cannot ") + what + " " + path_ + ": " +
                 (e != 0 ? std::strerror(e) : "I/O error"));
}

int64_t File::Size() const {
  struct stat st;
  if (fstat(fileno(f_), &st) != 0 || !S_ISREG(st.st_mode)) return -1;
  return static_cast<int64_t>(st.st_size);
}

size_t File::Read(void* data, size_t n) {
  errno = 0;
  const size_t got = std::fread(data, 1, n, f_);
  if (got < n && std::ferror(f_)) Fail("read");
  return got;
}

void File::Write(const void* data, size_t n) {
  errno = 0;
  if (n > 0 && std::fwrite(data, 1, n, f_) != n) Fail("write");
}

void File::SeekForward(int64_t n) {
  errno = 0;
  if (fseeko(f_, static_cast<off_t>(n), SEEK_CUR) != 0) Fail("seek in");
}

void File::Close() {
  if (f_ == nullptr) return;
  errno = 0;
  const bool flushed = std::fflush(f_) == 0 && !std::ferror(f_);
  const int e = errno;
  const bool closed = std::fclose(f_) == 0;
  f_ = nullptr;
  if (!flushed || !closed) {
    errno = e;
    Fail("write");
  }
}

}  // namespace cli
}  // namespace kelo
