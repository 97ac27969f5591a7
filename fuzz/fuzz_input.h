// Shared by the fuzz targets: the input as a writable, terminated text (the parsers take
// C strings and most cut them up in place), as an open file, or written where a reader
// looks for its file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/host.h"

namespace syscommon::fuzz {

// Up to the first NUL byte (the whole input without one).
inline std::string text_of(const uint8_t *data, std::size_t size) {
  const std::string_view all(reinterpret_cast<const char *>(data), size);
  return std::string(all.substr(0, all.find('\0')));
}

// Two texts from one input, split at its first NUL byte (the second empty without one).
inline std::pair<std::string, std::string> two_texts_of(const uint8_t *data, std::size_t size) {
  const std::string_view all(reinterpret_cast<const char *>(data), size);
  const std::size_t cut = all.find('\0');
  if (cut == std::string_view::npos) return {std::string(all), std::string()};
  const std::string_view rest = all.substr(cut + 1);
  return {std::string(all.substr(0, cut)), std::string(rest.substr(0, rest.find('\0')))};
}

// The input as a read-only stream in memory (the bytes are copied: the stream outlives
// the fuzzer's buffer). Empty input gives an empty stream.
class MemoryFile {
 public:
  MemoryFile(const uint8_t *data, std::size_t size)
      : bytes_(reinterpret_cast<const char *>(data), size), file_(open(bytes_)) {}
  std::FILE *get() const { return file_.get(); }
  void rewind() const {
    std::rewind(file_.get());
    if (bytes_.empty()) std::fgetc(file_.get());
  }

 private:
  struct Close {
    void operator()(std::FILE *f) const { std::fclose(f); }
  };
  static std::FILE *open(std::string &bytes) {
    // fmemopen refuses a zero size: an empty stream is a one-byte buffer read to its end.
    if (bytes.empty()) {
      std::FILE *f = fmemopen(bytes.data(), 1, "r");
      if (f != nullptr) std::fgetc(f);
      return f;
    }
    return fmemopen(bytes.data(), bytes.size(), "r");
  }
  std::string bytes_;
  std::unique_ptr<std::FILE, Close> file_;
};

// Replaces the file at the device path `path` (under the simulated root) with `text`.
inline void put_device_file(const char *path, std::string_view text) {
  std::FILE *f = std::fopen(syscommon::rooted(path).c_str(), "w");
  if (f == nullptr) __builtin_trap();  // the harness's own failure, not a finding in the library
  std::fwrite(text.data(), 1, text.size(), f);
  std::fclose(f);
}

}  // namespace syscommon::fuzz
