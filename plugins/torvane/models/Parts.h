#pragma once

#include <cstddef>
#include <string_view>

#include "components/kelparsexml/PmmlMatrix.h"
#include "plugins/torvane/Expansion.h"
#include "plugins/torvane/Reading.h"

namespace Torvane {

/// What the readers of models that are made of many parts share.

/// The child of that name, which must be there, and be the only one.
[[nodiscard]] Element OnlyChild(const Element& element, std::string_view name);

/// Throws if an attribute tells another count of parts than there are: some may be lost. It needn't be there.
void CheckCount(const Element& element, std::string_view attribute, std::size_t count);

/// The matrix of a "Matrix" element, counted in what the document asks for.
[[nodiscard]] KelXML_1_3::PmmlMatrix ReadMatrix(const Element& matrix, Expansion& expansion);

/// The expression of a "DerivedField" that stands inside a part. Throws if there are none or two.
[[nodiscard]] Element OnlyExpression(const Element& derivedField);

}  // namespace Torvane
