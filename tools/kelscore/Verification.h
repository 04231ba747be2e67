#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The rows by which a document's maker lets others verify its model (the PMML element "ModelVerification").

namespace kelscore {

/// A column of the rows. An expected number holds for results within a share of `precision` of it; results up to
/// `zeroThreshold` count as the zero that is expected.
struct VerificationField {
  std::string field;   ///< a data field, or an output of the model
  std::string column;  ///< without a prefix
  double precision = 1e-6;
  double zeroThreshold = 1e-16;
};

struct VerificationRow {
  std::uint64_t line = 0;                         ///< of the document
  std::vector<std::optional<std::string>> cells;  ///< beside the fields; nothing for no value
};

struct Verification {
  std::vector<VerificationField> fields;
  std::vector<VerificationRow> rows;
};

/// Reads the rows of the first child of the root that is called `modelElement`; nothing if it has none. Throws
/// `Failure` (input failed) with file and line for rows that contradict their own description. The XML platform must
/// be up.
[[nodiscard]] std::optional<Verification> ReadVerification(const std::string& path, const std::string& modelElement);

}  // namespace kelscore
