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

Json Head(const ModelDescription& description) {
  Json head = {{"file", description.file}, {"element", description.element}};
  AddText(head, "name", description.name);
  AddText(head, "identifier", description.id);
  AddText(head, "function", description.function);
  AddText(head, "algorithm", description.algorithm);
  AddText(head, "ensembleMethod", description.ensembleMethod);
  AddText(head, "scorer", description.scorer);
  AddText(head, "pmmlVersion", description.pmmlVersion);
  AddText(head, "application", description.application);
  AddText(head, "applicationVersion", description.applicationVersion);
  return head;
}

}  // namespace

std::string ToJson(const ModelDescription& description) {
  Json json = {{"model", Head(description)}};
  json["inputs"] = ToArray(description.inputs);
  json["targets"] = ToArray(description.targets);
  json["outputs"] = ToArray(description.outputs);
  json["derivedFields"] = description.derivedFields;
  // Names that are no UTF-8 come from documents of strangers; they mustn't end the run.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kelscore
