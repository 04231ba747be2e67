#include <algorithm>
#include <array>
#include <cmath>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/NumberText.h"
#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

constexpr std::array<std::string_view, 3> kOutlierNames = {"asIs", "asMissingValues", "asExtremeValues"};

double ReadFinite(const Element& element, std::string_view attribute) {
  const double number = element.RequiredNumber(attribute);
  if (!std::isfinite(number)) throw element.AttributeError(attribute, "is no finite number");
  return number;
}

std::vector<NormPoint> ReadPoints(const Element& element) {
  RefuseUnknownChildren(element, {"LinearNorm"});
  std::vector<NormPoint> points;
  for (Element child = element.Child("LinearNorm"); child; child = child.Next("LinearNorm")) {
    RefuseUnknownChildren(child, {});
    points.push_back({ReadFinite(child, "orig"), ReadFinite(child, "norm")});
  }
  return points;
}

std::string Describe(double number) {
  NumberBuffer buffer;
  return std::string(ShortestText(number, buffer));
}

// Producers write points in descending order, too, when a scale is negative. A point that stands there twice does no
// harm; two values at one place leave the function undefined.
std::vector<NormPoint> Ascending(std::vector<NormPoint> points, const Element& element) {
  const auto isBefore = [](const NormPoint& left, const NormPoint& right) {
    return left.orig < right.orig || (left.orig == right.orig && left.norm < right.norm);
  };
  const auto isSame = [](const NormPoint& left, const NormPoint& right) {
    return left.orig == right.orig && left.norm == right.norm;
  };
  const auto clash = [](const NormPoint& left, const NormPoint& right) { return left.orig == right.orig; };
  std::sort(points.begin(), points.end(), isBefore);
  points.erase(std::unique(points.begin(), points.end(), isSame), points.end());
  const auto twice = std::adjacent_find(points.begin(), points.end(), clash);
  if (twice != points.end()) throw element.Error("two LinearNorm have the orig " + Describe(twice->orig));
  return points;
}

// Distances that overflow would make every input look like the first point.
void RefuseOverflow(const std::vector<NormPoint>& points, const Element& element) {
  for (std::size_t index = 1; index < points.size(); ++index) {
    const NormPoint& left = points[index - 1];
    const NormPoint& right = points[index];
    if (std::isfinite(right.orig - left.orig) && std::isfinite(right.norm - left.norm)) continue;
    throw element.Error("two LinearNorm lie too far apart");
  }
}

}  // namespace

CompiledValue CompileNormContinuous(const Element& element, ExpressionContext& context) {
  const CompiledValue input = CompileNumericField(element, context);
  const std::vector<NormPoint> points = Ascending(ReadPoints(element), element);
  if (points.size() < 2) throw element.Error("it needs two LinearNorm with different orig at least");
  RefuseOverflow(points, element);
  const Outliers outliers = ReadEnum(element, "outliers", kOutlierNames, Outliers::kAsIs);
  const Cell whenMissing = ReadOptionalLiteralOf(element, "mapMissingTo", DataType::kDouble, context.code.Pool());
  const std::uint32_t entry = context.code.Data().normContinuous.Append(points, outliers, whenMissing);
  return context.code.Emit(OpCode::kNormContinuous, {input.operand}, entry, DataType::kDouble);
}

}  // namespace KelTransformNS
