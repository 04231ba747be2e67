#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/kelscore/ModelDocument.h"

namespace kelscore {

class LoadedModel;

/// A value of a field with its label; the label is empty where there is none.
struct LabelledValue {
  std::string value;
  std::string label;
};

/// What a host should know about one field.
struct FieldDescription {
  std::string name;
  std::string label;     ///< empty when it is the name
  std::string dataType;  ///< as the document has it, else what the variable list knows: integer, real, string, ...
  std::string level;     ///< continuous, categorical, ordinal or flag
  std::optional<std::pair<double, double>> range;  ///< extreme finite doubles: no bound on that side
  std::vector<LabelledValue> categories;
  int categoryCount = 0;  ///< may be larger than the list
  std::vector<LabelledValue> missingValues;
  std::optional<std::string> flagTrueValue;
};

struct OutputDescription {
  std::string name;
  std::vector<std::string> columns;  ///< that `score` writes for it, as far as they are known without a record
};

/// One document: a single model, or a member with its identifier or key.
struct DocumentDescription {
  std::string id;
  std::vector<std::string> key;
  ModelDocument document;
};

/// What `describe` tells, whatever the format.
struct ModelDescription {
  std::string scorer;                          ///< what the plug-in calls the model, or its first member
  std::vector<DocumentDescription> documents;  ///< one for a single model
  bool isComposite = false;
  std::vector<std::string> splitFields;
  std::vector<FieldDescription> inputs;
  std::vector<FieldDescription> targets;
  std::vector<OutputDescription> outputs;
  std::vector<std::string> derivedFields;
};

[[nodiscard]] ModelDescription Describe(const LoadedModel& model);

}  // namespace kelscore
