// Making an element tree from a stream, in one SAX2 pass.

#include "components/kelparsexml/DocumentScan.h"
#include "components/kelparsexml/ElementTree.h"
#include "components/kelparsexml/ElementTreeBuilder.h"

namespace KelXML_1_3 {

std::unique_ptr<ElementTree> ElementTree::Read(std::istream& stream, std::string_view modelName) {
  ElementTreeBuilder builder(modelName);
  DocumentScan(stream, builder).ReadUntil([] { return false; });
  return builder.Finish();
}

}  // namespace KelXML_1_3
