#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace KelFuzz {

/// An element of a document with all that it holds, to be changed.
struct Markup {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::string text;  ///< stands before the children, wherever it stood
  std::vector<Markup> children;
};

/// The root of a document; nothing if it is malformed, or nested so deep that recursion over it isn't safe. The XML
/// platform must be up.
std::optional<Markup> ReadMarkup(const std::string& document);

std::string WriteMarkup(const Markup& root);

/// Of the element and all that is in it.
std::size_t CountElements(const Markup& root);

/// The element and all that is in it, in document order. The pointers die with the next change of the tree.
std::vector<Markup*> AllElements(Markup& root);

}  // namespace KelFuzz
