// Shared by the fuzz targets: the input as a writable, terminated text (the parsers take
// C strings and most cut them up in place).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace syscommon::fuzz {

inline std::string text_of(const uint8_t *data, std::size_t size) {
  return std::string(reinterpret_cast<const char *>(data), size).c_str();  // up to the first NUL
}

// Two texts from one input, split at its first NUL byte (the second empty without one).
inline std::pair<std::string, std::string> two_texts_of(const uint8_t *data, std::size_t size) {
  const std::string_view all(reinterpret_cast<const char *>(data), size);
  const std::size_t cut = all.find('\0');
  if (cut == std::string_view::npos) return {std::string(all), std::string()};
  return {std::string(all.substr(0, cut)), std::string(all.substr(cut + 1)).c_str()};
}

}  // namespace syscommon::fuzz
