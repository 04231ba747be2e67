#include "plugins/torvane/models/RegressionReader.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <unordered_set>

namespace Torvane {
namespace {

// From this version on the text of the standard says that one table speaks for both of two categories, and what is
// wrong for more.
constexpr int kClarifiedVersion = 403;

constexpr Word<int> kModelTypes[] = {
    {"linearRegression", 0}, {"stepwisePolynomialRegression", 1}, {"logisticRegression", 2}};  // without influence

}  // namespace

std::unique_ptr<ModelBody> RegressionModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return RegressionReader(model, scope, target).Read();
}

RegressionReader::RegressionReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model), fScope(scope), fTarget(target), fModel(std::make_unique<RegressionModel>()) {}

std::unique_ptr<RegressionModel> RegressionReader::Read() {
  static constexpr Word<Method> kMethods[] = {
      {"none", Method::kNone},     {"simplemax", Method::kSimplemax}, {"softmax", Method::kSoftmax},
      {"logit", Method::kLogit},   {"probit", Method::kProbit},       {"cloglog", Method::kCloglog},
      {"loglog", Method::kLoglog}, {"cauchit", Method::kCauchit},     {"exp", Method::kExp},
  };
  RefuseUnknownModelChildren(fElement, {"RegressionTable"});
  (void)ReadWord(fElement, "modelType", kModelTypes, 0);
  fMethod = ReadWord(fElement, "normalizationMethod", kMethods, Method::kNone);
  fModel->fLink = LinkOf(fMethod);
  fModel->fIsClassification = fTarget.Function() == MiningFunction::kClassification;
  ReadTables();
  if (fModel->fIsClassification) {
    ReadClassification();
  } else {
    ReadRegression();
  }
  return std::move(fModel);
}

// For a single number softmax is the logistic function.
Link RegressionReader::LinkOf(Method method) noexcept {
  switch (method) {
    case Method::kSoftmax:
    case Method::kLogit:
      return Link::kLogit;
    case Method::kProbit:
      return Link::kProbit;
    case Method::kCloglog:
      return Link::kCloglog;
    case Method::kLoglog:
      return Link::kLoglog;
    case Method::kCauchit:
      return Link::kCauchit;
    case Method::kExp:
      return Link::kLog;
    case Method::kNone:
    case Method::kSimplemax:
      break;
  }
  return Link::kIdentity;
}

void RegressionReader::ReadTables() {
  std::unordered_set<std::uint32_t> known;
  for (Element table = fElement.RequiredChild("RegressionTable"); table; table = table.Next("RegressionTable")) {
    fModel->fTables.emplace_back(table, fScope);
    if (!fModel->fIsClassification) continue;
    const std::uint32_t category = fTarget.AddCategory(table, "targetCategory", table.Required("targetCategory"));
    if (!known.insert(category).second) throw table.AttributeError("targetCategory", "has a table already");
    fModel->fCategories.push_back(category);
  }
}

void RegressionReader::ReadRegression() {
  const Element second = fElement.Child("RegressionTable").Next("RegressionTable");
  if (second) throw second.Error("is a second table; a regression has one");
  if (fMethod == Method::kSimplemax) {
    throw fElement.AttributeError("normalizationMethod", "has no meaning for a regression");
  }
}

void RegressionReader::ReadClassification() {
  RegressionModel& model = *fModel;
  if (model.fTables.size() < 2) throw fElement.Error("needs a RegressionTable for each of two categories or more");
  model.fWinningOrder.resize(model.fTables.size());
  std::iota(model.fWinningOrder.begin(), model.fWinningOrder.end(), 0U);
  model.fCombination = ChooseCombination();
  if (model.fCombination == Combination::kCumulative) SortByCategory();
  if (model.fCombination == Combination::kBinary) model.fBinaryTable = model.fTables[0].IsTrivial() ? 1 : 0;
  std::vector<bool> isTold(fTarget.Categories().size());
  for (const std::uint32_t category : model.fCategories) isTold[category] = true;
  for (std::uint32_t i = 0; i < isTold.size(); ++i) {
    if (!isTold[i]) model.fUntold.push_back(i);
  }
}

// Cumulative probabilities follow the order of the target's values, whatever order the tables stand in.
void RegressionReader::SortByCategory() {
  RegressionModel& model = *fModel;
  std::vector<std::uint32_t> order = model.fWinningOrder;
  std::sort(order.begin(), order.end(),
            [&](std::uint32_t a, std::uint32_t b) { return model.fCategories[a] < model.fCategories[b]; });
  std::vector<RegressionTable> tables;
  std::vector<std::uint32_t> categories;
  for (std::uint32_t place = 0; place < order.size(); ++place) {
    tables.push_back(std::move(model.fTables[order[place]]));
    categories.push_back(model.fCategories[order[place]]);
    model.fWinningOrder[order[place]] = place;
  }
  model.fTables = std::move(tables);
  model.fCategories = std::move(categories);
}

RegressionReader::Combination RegressionReader::ChooseCombination() const {
  switch (fMethod) {
    case Method::kSoftmax:
      return Combination::kSoftmax;
    case Method::kSimplemax:
      return Combination::kEachShared;
    case Method::kExp:
      if (fScope.GetDocument().version < kClarifiedVersion) return Combination::kEach;
      throw fElement.AttributeError("normalizationMethod", "gives no probabilities");
    default:
      break;
  }
  const std::vector<RegressionTable>& tables = fModel->fTables;
  if (tables.size() == 2 && (tables[0].IsTrivial() || tables[1].IsTrivial())) return Combination::kBinary;
  if (!fTarget.IsOrdinal()) return ChooseForMany();
  CheckCumulative();
  return Combination::kCumulative;
}

// Only the y of the last value plays no part, so a table that says nothing can't stand for another one.
void RegressionReader::CheckCumulative() const {
  const std::vector<std::uint32_t>& categories = fModel->fCategories;
  if (categories.size() < fTarget.Categories().size()) {
    throw fElement.Error("needs a RegressionTable for each value of its ordinal target");
  }
  Element table = fElement.Child("RegressionTable");
  for (std::size_t i = 0; i < categories.size(); ++i, table = table.Next("RegressionTable")) {
    if (fModel->fTables[i].IsTrivial() && categories[i] + 1 < categories.size()) {
      throw table.Error("is empty, which only that of the last value of an ordinal target may be");
    }
  }
}

// For categories without an order the older text applies F to each table. The later one knows one table for two
// categories, and for more the remainder for "none" only; a "logit" then means one table against the rest, whose shares
// are taken.
RegressionReader::Combination RegressionReader::ChooseForMany() const {
  const bool isClarified = fScope.GetDocument().version >= kClarifiedVersion;
  if (isClarified && fModel->fTables.size() == 2) {
    throw fElement.Error("needs an empty RegressionTable for one of its two categories");
  }
  if (fMethod == Method::kNone) {
    return isClarified || fModel->fTables.back().IsTrivial() ? Combination::kRemainder : Combination::kEach;
  }
  if (!isClarified) return Combination::kEach;
  if (fMethod == Method::kLogit) return Combination::kEachShared;
  throw fElement.AttributeError("normalizationMethod", "is for an ordinal target or two categories");
}

}  // namespace Torvane
