#pragma once

#include <string>
#include <vector>

namespace CorpusTest {

/// A whole CSV file in memory: small test data only.
struct CsvTable {
  std::vector<std::string> header;
  std::vector<std::vector<std::string>> rows;

  /// Throws `std::runtime_error` for a file that can't be read, and for ragged rows.
  static CsvTable Read(const std::string& path);
  /// The column's position; throws if there is none.
  [[nodiscard]] std::size_t Column(const std::string& name) const;
};

}  // namespace CorpusTest
