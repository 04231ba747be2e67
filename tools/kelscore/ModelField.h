#pragma once

#include <map>
#include <string>
#include <vector>

#include "scoring/common/KelVarList.h"

namespace kelscore {

/// How the text of a table becomes a value.
enum class FieldKind {
  kNumber,        ///< a number; any other text is a fault of the row
  kText,          ///< the text as it stands
  kNumberOrText,  ///< a number if the whole text is one, else the text
};

/// A field that a model can read from its input record.
struct ModelField {
  std::string name;
  FieldKind kind;
  bool needed;  ///< the model looks at it, so that a table without it is worth a word
};

/// Names of a document's data fields with their "dataType"; empty for a field that has none.
using DataTypes = std::map<std::string, std::string, std::less<>>;

/// The fields that a model with these variables reads from the host. Derived fields aren't among them: those that are
/// no data field, where the document's data fields are known.
[[nodiscard]] std::vector<ModelField> ModelFields(const KelXML_1_3::KelVarList& variables, const DataTypes& dataTypes);

/// The same for a model without variables: it gets every column of the table.
[[nodiscard]] std::vector<ModelField> FieldsOfTable(const std::vector<std::string>& header);

}  // namespace kelscore
