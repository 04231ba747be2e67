#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tools/kelscore/ByteSource.h"

namespace kelscore {

/// The path that stands for standard input or standard output.
inline constexpr std::string_view kStandardStream = "-";

/// A file or standard input, for reading. Closes what it opened.
class InputFile : public ByteSource {
 public:
  /// Throws `Failure` when the file can't be opened or is a directory.
  explicit InputFile(const std::string& path);
  ~InputFile() override;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  std::size_t Read(char* buffer, std::size_t size) override;
  [[nodiscard]] const std::string& Name() const override { return fName; }
  /// Whether the path leads to the file that is read, also when that is standard input.
  [[nodiscard]] bool IsSameFile(const std::string& path) const;

 private:
  std::string fName;
  int fDescriptor;
};

/// A file or standard output, for writing. It has no buffer: callers hand over large pieces.
class OutputFile {
 public:
  /// Creates the file, or empties it. Throws `Failure` when it can't be written.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Throws `Failure` when not everything could be written; without a message when the reader of a pipe has gone.
  void Write(std::string_view bytes);
  /// Writes may fail as late as here. Nothing may be written afterwards.
  void Close();
  [[nodiscard]] const std::string& Name() const { return fName; }

 private:
  std::string fName;
  int fDescriptor;
  bool fOwned;
};

/// Whether both paths lead to the same existing file.
[[nodiscard]] bool IsSameFile(const std::string& first, const std::string& second);

}  // namespace kelscore
