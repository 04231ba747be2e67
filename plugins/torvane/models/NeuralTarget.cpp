#include "plugins/torvane/models/NeuralTarget.h"

#include <algorithm>
#include <cmath>

#include "plugins/torvane/models/Parts.h"

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::NormPoint;
using KelTransformNS::Outliers;

namespace {

// The points of the inverse: what was the result is the argument.
std::vector<NormPoint> ReadInversePoints(const Element& element) {
  std::vector<NormPoint> points;
  for (Element child = element.Child("LinearNorm"); child; child = child.Next("LinearNorm")) {
    RefuseUnknownChildren(child, {});
    points.push_back({RequiredFinite(child, "norm"), RequiredFinite(child, "orig")});
  }
  std::sort(points.begin(), points.end(), [](const NormPoint& a, const NormPoint& b) { return a.orig < b.orig; });
  return points;
}

// A function that rises all along, or falls, has an inverse that does the same.
bool IsMonotonic(const std::vector<NormPoint>& points) {
  const bool rises = points[0].norm < points[1].norm;
  const auto breaks = [rises](const NormPoint& a, const NormPoint& b) {
    return !(a.orig < b.orig) || !(rises ? a.norm < b.norm : a.norm > b.norm);
  };
  return std::adjacent_find(points.begin(), points.end(), breaks) == points.end();
}

bool Overflows(const NormPoint& first, const NormPoint& last) {
  return !std::isfinite(last.orig - first.orig) || !std::isfinite(last.norm - first.norm);
}

}  // namespace

NeuralTarget::NeuralTarget(const Element& model, const FieldScope& scope, const Target& target)
    : fSchema(scope.Schema()), fTargetName(target.Name()) {
  Declare(model.Child("LocalTransformations"));
  Declare(scope.GetDocument().root.Child("TransformationDictionary"));
}

void NeuralTarget::Declare(const Element& dictionary) {
  for (Element field = dictionary.Child("DerivedField"); field; field = field.Next("DerivedField")) {
    if (const auto name = field.Attribute("name")) fDerivedFields.emplace(*name, field);
  }
}

NeuralTarget::Chain NeuralTarget::Follow(Element derivedField) {
  Chain chain;
  for (std::size_t steps = 0; steps <= fDerivedFields.size(); ++steps) {
    const Element expression = OnlyExpression(derivedField);
    const bool isOfCategory = static_cast<bool>(chain.normDiscrete);
    if (expression.Is("NormDiscrete") && !isOfCategory && chain.normContinuous.empty()) {
      chain.normDiscrete = expression;
    } else if (expression.Is("NormContinuous") && !isOfCategory) {
      chain.normContinuous.push_back(expression);
    } else if (!expression.Is("FieldRef")) {
      throw expression.Error("can't be read backwards in a NeuralOutput");
    }
    if (!expression.Is("NormContinuous")) RefuseUnknownChildren(expression, {});
    const std::string_view field = expression.Required("field");
    const auto next = fDerivedFields.find(field);
    if (next == fDerivedFields.end()) {
      chain.isOfAnotherTarget = !IsTarget(field);
      if (!chain.isOfAnotherTarget || IsAnotherTarget(field)) return chain;
      throw expression.AttributeError("field", "isn't the target of the model");
    }
    derivedField = next->second;
  }
  throw derivedField.Error("is one of derived fields that depend on themselves");
}

// A model may leave its target out of the mining schema. The outputs then say which one it is.
bool NeuralTarget::IsTarget(std::string_view field) {
  if (fTargetName.empty()) fTargetName = field;
  return field == fTargetName;
}

bool NeuralTarget::IsAnotherTarget(std::string_view field) const {
  const MiningField* const other = fSchema.Find(field);
  return other != nullptr && other->usage == FieldUsage::kTarget;
}

void NeuralTarget::AddInverse(const Element& element, KelTransformNS::NormContinuousTable& table) {
  static constexpr Word<Outliers> kOutliers[] = {{"asIs", Outliers::kAsIs},
                                                 {"asMissingValues", Outliers::kAsMissingValues},
                                                 {"asExtremeValues", Outliers::kAsExtremeValues}};
  RefuseUnknownChildren(element, {"LinearNorm"});
  const std::vector<NormPoint> points = ReadInversePoints(element);
  if (points.size() < 2) throw element.Error("needs two LinearNorm at least");
  if (!IsMonotonic(points)) throw element.Error("neither rises nor falls all along, which can't be read backwards");
  if (Overflows(points.front(), points.back())) throw element.Error("has LinearNorm that lie too far apart");
  table.Append(points, ReadWord(element, "outliers", kOutliers, Outliers::kAsIs), Cell::Missing());
}

}  // namespace Torvane
