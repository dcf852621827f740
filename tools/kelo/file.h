// A stdio file that reports every failure as a RunError naming the path.
#ifndef KELO_TOOLS_KELO_FILE_H_
#define KELO_TOOLS_KELO_FILE_H_

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

namespace kelo {
namespace cli {

class File {
 public:
  // Opens for reading; refuses directories.
  static File OpenRead(const std::string& path);
  // Creates or truncates for writing.
  static File OpenWrite(const std::string& path);

  File(File&& other) noexcept : f_(other.f_), path_(std::move(other.path_)) {
    other.f_ = nullptr;
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File();

  std::FILE* get() const { return f_; }
  const std::string& path() const { return path_; }
  // Size of a regular file, -1 for pipes and devices.
  int64_t Size() const;

  // Reads up to n bytes; returns how many were read (short only at the end
  // of the file; a read error throws).
  size_t Read(void* data, size_t n);
  void Write(const void* data, size_t n);
  void Write(const std::string& s) { Write(s.data(), s.size()); }
  // Skips n bytes forward.
  void SeekForward(int64_t n);
  // Flushes and closes, throwing when the data did not reach the file.
  void Close();

 private:
  File(std::FILE* f, std::string path) : f_(f), path_(std::move(path)) {}
  [[noreturn]] void Fail(const char* what) const;

  std::FILE* f_;
  std::string path_;
};

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_FILE_H_
