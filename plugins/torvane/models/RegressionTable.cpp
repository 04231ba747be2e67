#include "plugins/torvane/models/RegressionTable.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <tuple>

namespace Torvane {

using KelTransformNS::Cell;

namespace {

// A run of predictors is a plain array while it takes no more than so many entries for each of them.
constexpr std::size_t kEntriesPerPredictor = 16;

int ReadExponent(const Element& element) {
  const double exponent = element.Number("exponent", 1.0);
  constexpr double kLargest = std::numeric_limits<int>::max();
  if (exponent != std::trunc(exponent) || std::abs(exponent) > kLargest) {
    throw element.AttributeError("exponent", "is no integer");
  }
  return static_cast<int>(exponent);
}

// The square is exact by multiplication, and 0 to the power of 0 is 1.
double Power(double x, int exponent) noexcept {
  if (exponent == 1) return x;
  return exponent == 2 ? x * x : std::pow(x, exponent);
}

template <typename Key>
double Lookup(const std::vector<std::pair<Key, double>>& list, Key key) noexcept {
  const auto found = std::lower_bound(list.begin(), list.end(), key,
                                      [](const auto& entry, Key wanted) { return entry.first < wanted; });
  return found != list.end() && found->first == key ? found->second : 0.0;
}

}  // namespace

RegressionTable::RegressionTable(const Element& element, FieldScope& scope)
    : fIntercept(RequiredFinite(element, "intercept")) {
  RefuseUnknownChildren(element, {"NumericPredictor", "CategoricalPredictor", "PredictorTerm"});
  for (Element child = element.Child("NumericPredictor"); child; child = child.Next("NumericPredictor")) {
    ReadNumericPredictor(child, scope);
  }
  ReadCategoricalPredictors(element, scope);
  for (Element child = element.Child("PredictorTerm"); child; child = child.Next("PredictorTerm")) {
    ReadTerm(child, scope);
  }
}

void RegressionTable::ReadNumericPredictor(const Element& element, FieldScope& scope) {
  RefuseUnknownChildren(element, {});
  const Field& field = scope.ResolveNumeric(element.Required("name"), element);
  fNumericTerms.push_back({RequiredFinite(element, "coefficient"), field.slot, ReadExponent(element)});
}

void RegressionTable::ReadCategoricalPredictors(const Element& table, FieldScope& scope) {
  std::set<std::tuple<std::uint32_t, std::uint32_t, double>> known;
  for (Element child = table.Child("CategoricalPredictor"); child; child = child.Next("CategoricalPredictor")) {
    RefuseUnknownChildren(child, {});
    const Field& field = scope.Resolve(child.Required("name"), child);
    const Cell category = ReadComparand(child, "value", child.Required("value"), field.dataType, scope.Pool());
    if (!known.emplace(field.slot, category.textId, category.number).second) {
      throw child.AttributeError("value", "has a coefficient already");
    }
    AddCategory(field.slot, category, RequiredFinite(child, "coefficient"));
  }
  for (CategoryTerm& term : fCategoryTerms) Seal(term);
}

void RegressionTable::AddCategory(std::uint32_t slot, const Cell& category, double coefficient) {
  const bool isText = category.state == Cell::kText;
  if (fCategoryTerms.empty() || fCategoryTerms.back().slot != slot) {
    CategoryTerm& term = fCategoryTerms.emplace_back();
    term.slot = slot;
    term.isText = isText;
  }
  CategoryTerm& term = fCategoryTerms.back();
  if (isText) {
    term.textList.emplace_back(category.textId, coefficient);
  } else {
    term.numberList.emplace_back(category.number, coefficient);
  }
}

void RegressionTable::Seal(CategoryTerm& term) {
  std::sort(term.numberList.begin(), term.numberList.end());
  std::sort(term.textList.begin(), term.textList.end());
  if (term.textList.empty()) return;
  const std::size_t range = std::size_t{1} + term.textList.back().first - term.textList.front().first;
  if (range > kEntriesPerPredictor * term.textList.size()) return;
  term.firstText = term.textList.front().first;
  term.byText.assign(range, 0.0);
  for (const auto& [id, coefficient] : term.textList) term.byText[id - term.firstText] = coefficient;
  term.textList = {};
}

void RegressionTable::ReadTerm(const Element& element, FieldScope& scope) {
  RefuseUnknownChildren(element, {"FieldRef"});
  ProductTerm term{RequiredFinite(element, "coefficient"), static_cast<std::uint32_t>(fProductSlots.size()), 0};
  for (Element child = element.Child("FieldRef"); child; child = child.Next("FieldRef")) {
    RefuseUnknownChildren(child, {});
    if (child.Attribute("mapMissingTo")) throw child.AttributeError("mapMissingTo", "is not supported in a term");
    fProductSlots.push_back(scope.ResolveNumeric(child.Required("field"), child).slot);
  }
  term.endSlot = static_cast<std::uint32_t>(fProductSlots.size());
  if (term.firstSlot == term.endSlot) throw element.Error("has no field");
  fProductTerms.push_back(term);
}

bool RegressionTable::IsTrivial() const noexcept {
  return fIntercept == 0.0 && fNumericTerms.empty() && fCategoryTerms.empty() && fProductTerms.empty();
}

bool RegressionTable::Evaluate(const Cell* frame, double& sum) const noexcept {
  double y = fIntercept;
  for (const NumericTerm& term : fNumericTerms) {
    const Cell& cell = frame[term.slot];
    if (cell.state != Cell::kNumber) return false;
    y += term.coefficient * Power(cell.number, term.exponent);
  }
  for (const CategoryTerm& term : fCategoryTerms) y += Coefficient(term, frame[term.slot]);
  for (const ProductTerm& term : fProductTerms) {
    double product = term.coefficient;
    for (std::uint32_t i = term.firstSlot; i < term.endSlot; ++i) {
      const Cell& cell = frame[fProductSlots[i]];
      if (cell.state != Cell::kNumber) return false;
      product *= cell.number;
    }
    y += product;
  }
  sum = y;
  return true;
}

double RegressionTable::Coefficient(const CategoryTerm& term, const Cell& cell) noexcept {
  if (!term.isText) return cell.state == Cell::kNumber ? Lookup(term.numberList, cell.number) : 0.0;
  if (cell.state != Cell::kText) return 0.0;
  if (term.byText.empty()) return Lookup(term.textList, cell.textId);
  const std::size_t offset = cell.textId - term.firstText;  // wraps around below the first, and is too large then
  return offset < term.byText.size() ? term.byText[offset] : 0.0;
}

}  // namespace Torvane
