#include <limits>
#include <nlohmann/json.hpp>

#include "tools/kelscore/DescriptionFormats.h"

namespace kelscore {
namespace {

using Json = nlohmann::ordered_json;

constexpr double kNoBound = std::numeric_limits<double>::max();

void AddText(Json& to, const char* key, const std::string& text) {
  if (!text.empty()) to[key] = text;
}

Json Bound(double bound) { return bound <= -kNoBound || bound >= kNoBound ? Json() : Json(bound); }

Json ToArray(const std::vector<LabelledValue>& values) {
  Json array = Json::array();
  for (const LabelledValue& value : values) {
    Json entry = {{"value", value.value}};
    AddText(entry, "label", value.label);
    array.push_back(std::move(entry));
  }
  return array;
}

Json ToObject(const FieldDescription& field) {
  Json object = {{"name", field.name}};
  AddText(object, "label", field.label);
  AddText(object, "dataType", field.dataType);
  object["level"] = field.level;
  if (field.range) object["range"] = {{"low", Bound(field.range->first)}, {"high", Bound(field.range->second)}};
  if (!field.range) {
    object["categoryCount"] = field.categoryCount;
    object["categories"] = ToArray(field.categories);
  }
  if (field.flagTrueValue) object["flagTrueValue"] = *field.flagTrueValue;
  if (!field.missingValues.empty()) object["missingValues"] = ToArray(field.missingValues);
  return object;
}

Json ToArray(const std::vector<FieldDescription>& fields) {
  Json array = Json::array();
  for (const FieldDescription& field : fields) array.push_back(ToObject(field));
  return array;
}

Json ToArray(const std::vector<OutputDescription>& outputs) {
  Json array = Json::array();
  for (const OutputDescription& output : outputs) array.push_back({{"name", output.name}, {"columns", output.columns}});
  return array;
}

Json ToObject(const DocumentDescription& described) {
  const ModelDocument& document = described.document;
  Json object = Json::object();
  AddText(object, "id", described.id);
  if (!described.key.empty()) object["key"] = described.key;
  object["file"] = document.path;
  AddText(object, "element", document.element);
  AddText(object, "name", document.name);
  AddText(object, "identifier", document.id);
  AddText(object, "function", document.function);
  AddText(object, "algorithm", document.algorithm);
  AddText(object, "ensembleMethod", document.ensembleMethod);
  AddText(object, "pmmlVersion", document.pmmlVersion);
  AddText(object, "application", document.application);
  AddText(object, "applicationVersion", document.applicationVersion);
  return object;
}

// One model under "model", or the members of a composite under "members".
void AddDocuments(const ModelDescription& description, Json& to) {
  if (!description.splitFields.empty()) to["splitFields"] = description.splitFields;
  for (const DocumentDescription& described : description.documents) {
    if (description.isComposite) {
      to["members"].push_back(ToObject(described));
    } else {
      to["model"] = ToObject(described);
      AddText(to["model"], "scorer", description.scorer);
    }
  }
}

}  // namespace

std::string ToJson(const ModelDescription& description) {
  Json json = Json::object();
  AddDocuments(description, json);
  json["inputs"] = ToArray(description.inputs);
  json["targets"] = ToArray(description.targets);
  json["outputs"] = ToArray(description.outputs);
  json["derivedFields"] = description.derivedFields;
  // Names that are no UTF-8 come from documents of strangers; they mustn't end the run.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kelscore
