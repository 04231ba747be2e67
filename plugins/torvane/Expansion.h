#pragma once

#include <cstddef>

#include "components/kelparsexml/ElementTree.h"

namespace Torvane {

/// What a document asks for in few characters: the cells of a matrix that has defaults, the filled places of a vector,
/// categories that each model of an ensemble has anew. Counted for all models of a document together, so that a
/// small document can't take all memory.
class Expansion {
 public:
  static constexpr std::size_t kMostBytes = std::size_t{128} << 20U;

  /// Counts memory that `element` asks for. Throws `PmmlError`, which names the element, once it is too much.
  void Add(std::size_t bytes, const KelXML_1_3::Element& element) {
    fBytes += bytes;
    if (fBytes > kMostBytes) throw element.Error("asks for more memory than a document may that doesn't write it out");
  }

 private:
  std::size_t fBytes = 0;
};

}  // namespace Torvane
