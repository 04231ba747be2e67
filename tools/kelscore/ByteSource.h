#pragma once

#include <cstddef>
#include <string>

namespace kelscore {

/// Where the bytes of a table come from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  /// Reads up to `size` bytes; 0 only at the end. Throws `Failure` when reading fails.
  virtual std::size_t Read(char* buffer, std::size_t size) = 0;
  /// What messages call the source.
  [[nodiscard]] virtual const std::string& Name() const = 0;
};

}  // namespace kelscore
