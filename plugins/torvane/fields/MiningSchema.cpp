#include "plugins/torvane/fields/MiningSchema.h"

#include <cmath>
#include <limits>

#include "scoring/common/KelScoringConst.h"

namespace Torvane {
namespace {

namespace Const = KelScoring_20::KelScoringConst;

// Order, group, weights and supplementary fields play no part in a score; an expression may still refer to them.
constexpr Word<FieldUsage> kUsages[] = {
    {"active", FieldUsage::kActive},          {"predicted", FieldUsage::kTarget},      {"target", FieldUsage::kTarget},
    {"supplementary", FieldUsage::kUnused},   {"group", FieldUsage::kUnused},          {"order", FieldUsage::kUnused},
    {"frequencyWeight", FieldUsage::kUnused}, {"analysisWeight", FieldUsage::kUnused},
};
constexpr Word<OutlierTreatment> kOutliers[] = {
    {"asIs", OutlierTreatment::kAsIs},
    {"asMissingValues", OutlierTreatment::kAsMissing},
    {"asExtremeValues", OutlierTreatment::kAsExtreme},
};
constexpr Word<InvalidTreatment> kInvalids[] = {
    {"returnInvalid", InvalidTreatment::kReturnInvalid},
    {"asIs", InvalidTreatment::kAsIs},
    {"asMissing", InvalidTreatment::kAsMissing},
    {"asValue", InvalidTreatment::kAsValue},
};
// Only the last one does something; the others tell how a replacement was found.
constexpr Word<bool> kMissings[] = {
    {"asIs", false},     {"asMean", false},  {"asMode", false},
    {"asMedian", false}, {"asValue", false}, {"returnInvalid", true},
};

std::optional<std::string> Text(const std::optional<std::string_view>& text) {
  if (!text) return std::nullopt;
  return std::string(*text);
}

std::optional<KelTransformNS::OpType> ReadOpType(const Element& element) {
  const std::optional<std::string_view> text = element.Attribute("optype");
  if (!text) return std::nullopt;
  KelTransformNS::OpType opType;
  if (!KelTransformNS::ParseOpType(*text, opType)) {
    ThrowUnknownWord(element, "optype", "categorical, ordinal, continuous");
  }
  return opType;
}

// An infinite limit is none, but only on its own side.
std::optional<double> ReadLimit(const Element& element, std::string_view attribute, double none) {
  const std::optional<double> limit = element.Number(attribute);
  if (limit && !std::isfinite(*limit) && *limit != none) throw element.AttributeError(attribute, "limits no number");
  return limit;
}

void CheckOutliers(const MiningField& field) {
  if (field.outliers == OutlierTreatment::kAsIs) return;
  if (!field.lowValue && !field.highValue) {
    throw field.element.AttributeError("outliers", "needs lowValue or highValue");
  }
  if (field.lowValue && field.highValue && *field.lowValue > *field.highValue) {
    throw field.element.AttributeError("lowValue", "is above highValue");
  }
}

// The replacement of 4.4 was written with a prefix before, and then beside "asIs".
void ReadInvalidTreatment(const Element& element, MiningField& field) {
  field.invalidTreatment = ReadWord(element, "invalidValueTreatment", kInvalids, InvalidTreatment::kReturnInvalid);
  field.invalidReplacement = Text(element.Attribute("invalidValueReplacement"));
  if (!field.invalidReplacement) field.invalidReplacement = Text(element.Attribute("x-invalidValueReplacement"));
  if (field.invalidTreatment == InvalidTreatment::kAsIs && field.invalidReplacement) {
    field.invalidTreatment = InvalidTreatment::kAsValue;
  }
  if (field.invalidTreatment == InvalidTreatment::kAsValue && !field.invalidReplacement) {
    throw element.AttributeError("invalidValueTreatment", "needs invalidValueReplacement");
  }
}

MiningField ReadMiningField(const Element& element) {
  RefuseUnknownChildren(element, {});
  MiningField field;
  field.name = element.Required("name");
  field.usage = ReadWord(element, "usageType", kUsages, FieldUsage::kActive);
  field.opType = ReadOpType(element);
  field.outliers = ReadWord(element, "outliers", kOutliers, OutlierTreatment::kAsIs);
  field.lowValue = ReadLimit(element, "lowValue", -std::numeric_limits<double>::infinity());
  field.highValue = ReadLimit(element, "highValue", std::numeric_limits<double>::infinity());
  ReadInvalidTreatment(element, field);
  field.missingReplacement = Text(element.Attribute("missingValueReplacement"));
  field.missingReturnsInvalid = ReadWord(element, "missingValueTreatment", kMissings, false);
  field.element = element;
  CheckOutliers(field);
  return field;
}

// A predicted field there is a target that the library lists, not one that it computes.
void ReadDerivedFieldNames(const Element& extension, MiningSchema& schema) {
  if (extension.Attribute("extender") != Const::ExtenderId || extension.Attribute("name") != "DerivedFields") return;
  for (Element field = extension.Child("MiningField"); field; field = field.Next("MiningField")) {
    if (field.Attribute("usageType") != "predicted") schema.derivedInRecord.emplace(field.Required("name"));
  }
}

}  // namespace

const MiningField* MiningSchema::Find(std::string_view name) const {
  const auto found = positions.find(name);
  return found == positions.end() ? nullptr : &fields[found->second];
}

void LetPassInside(const MiningSchema& ensemble, MiningSchema& schema) {
  for (MiningField& field : schema.fields) {
    const MiningField* const outer = ensemble.Find(field.name);
    const bool passes = outer != nullptr && outer->invalidTreatment == InvalidTreatment::kAsIs;
    if (passes && field.invalidTreatment == InvalidTreatment::kReturnInvalid)
      field.invalidTreatment = InvalidTreatment::kAsIs;
  }
}

bool NeedsAnotherTreatment(const MiningField& field, const MiningField* outer) {
  const bool neverMissing = outer != nullptr && outer->missingReplacement && !outer->missingReturnsInvalid;
  const bool neverInvalid = outer != nullptr && outer->invalidTreatment != InvalidTreatment::kAsIs;
  const bool sameOutliers = outer != nullptr && field.outliers == outer->outliers &&
                            field.lowValue == outer->lowValue && field.highValue == outer->highValue;
  const bool treatsMissing = field.missingReplacement || field.missingReturnsInvalid;
  const bool treatsInvalid =
      field.invalidTreatment == InvalidTreatment::kAsMissing || field.invalidTreatment == InvalidTreatment::kAsValue;
  const bool treatsOutliers = field.outliers != OutlierTreatment::kAsIs;
  return (treatsMissing && !neverMissing) || (treatsInvalid && !neverInvalid) || (treatsOutliers && !sameOutliers);
}

MiningSchema ReadMiningSchema(const Element& element) {
  RefuseUnknownChildren(element, {"MiningField"});
  MiningSchema schema;
  for (Element child = element.FirstChild(); child; child = child.NextSibling()) {
    if (child.Is("Extension")) ReadDerivedFieldNames(child, schema);
    if (!child.Is("MiningField")) continue;
    if (!schema.positions.emplace(child.Required("name"), schema.fields.size()).second) {
      throw child.AttributeError("name", "stands there twice");
    }
    schema.fields.push_back(ReadMiningField(child));
  }
  return schema;
}

}  // namespace Torvane
