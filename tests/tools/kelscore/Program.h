#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kelscore {

/// A folder of its own for one test, gone with it.
class TestFolder {
 public:
  TestFolder();
  ~TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  [[nodiscard]] std::string PathOf(const std::string& name) const { return (fPath / name).string(); }
  /// Writes a file and gives its path.
  std::string Write(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path fPath;
};

[[nodiscard]] std::string ReadFile(const std::string& path);

/// What a run of the program left behind.
struct Outcome {
  int status;  ///< the exit status; -1 if a signal ended it
  std::string out;
  std::string err;
};

/// Where standard output goes in a run, if not to `Outcome::out`.
enum class OutputKind { kCollected, kFullDisk, kClosedPipe };

/// Runs the built `kelscore` with these arguments and this standard input.
[[nodiscard]] Outcome RunKelscore(const std::vector<std::string>& arguments, const std::string& input = "",
                                  OutputKind outputKind = OutputKind::kCollected);
/// The same with standard input in the file "in" of a folder that stays.
[[nodiscard]] Outcome RunKelscore(const std::vector<std::string>& arguments, const std::string& input,
                                  const TestFolder& folder, OutputKind outputKind = OutputKind::kCollected);

/// The path of a file in `examples`.
[[nodiscard]] std::string Example(const std::string& name);

/// A table as rows of fields; only for tables without quotes.
[[nodiscard]] std::vector<std::vector<std::string>> Fields(const std::string& table);

}  // namespace kelscore
