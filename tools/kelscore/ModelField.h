#pragma once

#include <map>
#include <string>
#include <vector>

#include "scoring/common/KelVarList.h"

namespace kelscore {

/// How the text of a table becomes a value.
enum class FieldKind {
  kNumber,        ///< a number or a marker; any other text is a fault of the row
  kText,          ///< the text as it stands
  kNumberOrText,  ///< a number if the whole text is one, else the text
};

/// A field that a model can read from its input record.
struct ModelField {
  std::string name;
  FieldKind kind;
  bool needed;                            ///< the model looks at it, so that a table without it is worth a word
  std::vector<std::string> markers = {};  ///< texts that may stand for a number: the model knows what they mean
};

/// What a document declares of a data field. A text is empty where the document has none.
struct DataField {
  std::string dataType;
  std::string usageType;                  ///< in the model's mining schema
  std::vector<std::string> markers = {};  ///< the values that it declares as missing or invalid
};

/// The data fields of a document by name.
using DataFields = std::map<std::string, DataField, std::less<>>;

/// Whether a mining schema says so; later versions of PMML have another word for it than earlier ones.
[[nodiscard]] bool IsTarget(const DataField& field);

/// What a variable is to a model. The variable list counts every field of a mining schema as an input that isn't
/// "predicted"; later versions of PMML call that "target", and there are fields that no model looks at.
[[nodiscard]] KelXML_1_3::VariableRole RoleOf(const KelXML_1_3::IKelVariable& variable, const DataFields& dataFields);

/// Whether the host gives the variable, as far as the document's data fields are known: derived fields stand in
/// variable lists, too.
[[nodiscard]] bool ComesFromHost(const KelXML_1_3::IKelVariable& variable, const DataFields& dataFields);

/// The fields that a model with these variables reads from the host.
[[nodiscard]] std::vector<ModelField> ModelFields(const KelXML_1_3::KelVarList& variables,
                                                  const DataFields& dataFields);

/// The same for a model without variables: it gets every column of the table.
[[nodiscard]] std::vector<ModelField> FieldsOfTable(const std::vector<std::string>& header);

}  // namespace kelscore
