#include "plugins/torvane/models/GeneralRegressionReader.h"

#include <cmath>

namespace Torvane {
namespace {

constexpr std::uint32_t kNoCategory = ParameterReader::kNoCategory;

constexpr Word<int> kDistributions[] = {{"binomial", 0}, {"gamma", 0},   {"igauss", 0}, {"negbin", 0},
                                        {"normal", 0},   {"poisson", 0}, {"tweedie", 0}};

constexpr Word<Link> kLinkFunctions[] = {
    {"cloglog", Link::kCloglog}, {"identity", Link::kIdentity}, {"log", Link::kLog},
    {"logc", Link::kLogc},       {"logit", Link::kLogit},       {"loglog", Link::kLoglog},
    {"negbin", Link::kNegbin},   {"probit", Link::kProbit},     {"oddspower", Link::kOddspower},
    {"power", Link::kPower}};

constexpr Word<Link> kCumulativeLinks[] = {{"logit", Link::kLogit},
                                           {"probit", Link::kProbit},
                                           {"cloglog", Link::kCloglog},
                                           {"loglog", Link::kLoglog},
                                           {"cauchit", Link::kCauchit}};

// Whether an output's expression is exp(-1 * field), in one of the orders of writing it.
bool IsExpOfNegative(const Element& outputField, std::string_view field) {
  const Element exponential = outputField.Child("Apply");
  const Element product = exponential.Child("Apply");
  if (exponential.Attribute("function") != "exp" || product.Attribute("function") != "*") return false;
  const std::optional<double> factor = KelXML_1_3::ParsePmmlNumber(product.Child("Constant").Text());
  return factor == -1.0 && product.Child("FieldRef").Attribute("field") == field;
}

// What the prediction of a Cox regression is: its survival, but the cumulative hazard for producers whose documents
// have an output that makes the survival of it.
bool PredictsHazard(const Element& output) {
  for (Element field = output.Child("OutputField"); field; field = field.Next("OutputField")) {
    if (field.Attribute("feature").value_or("predictedValue") != "predictedValue" || field.Child("Apply")) continue;
    for (Element other = output.Child("OutputField"); other; other = other.Next("OutputField")) {
      if (IsExpOfNegative(other, field.Attribute("name").value_or(""))) return true;
    }
    return false;
  }
  return false;
}

}  // namespace

std::unique_ptr<ModelBody> GeneralRegressionModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return GeneralRegressionReader(model, scope, target).Read();
}

GeneralRegressionReader::GeneralRegressionReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model),
      fScope(scope),
      fTarget(target),
      fModel(std::make_unique<GeneralRegressionModel>()),
      fIsClassification(target.Function() == MiningFunction::kClassification),
      fKnowsCategories(!target.Categories().empty()) {}

std::unique_ptr<GeneralRegressionModel> GeneralRegressionReader::Read() {
  RefuseUnknownModelChildren(fElement, {"ParameterList", "FactorList", "CovariateList", "PPMatrix", "PCovMatrix",
                                        "ParamMatrix", "EventValues", "BaseCumHazardTables"});
  RefuseSecond(fElement,
               {"ParameterList", "FactorList", "CovariateList", "PPMatrix", "ParamMatrix", "BaseCumHazardTables"});
  ReadModelType();
  ReadLinks();
  ReadOffset();
  ReadTrials();
  fParameters.emplace(fElement, fScope, fModel->fSums, [this](const Element& cell) { return ReadCategory(cell); });
  ReadReference();
  ReadEquations();
  fModel->fSums.Finish();
  fModel->fCategoryCount = static_cast<std::uint32_t>(fTarget.Categories().size());
  return std::move(fModel);
}

void GeneralRegressionReader::ReadModelType() {
  static constexpr Word<ModelType> kTypes[] = {{"regression", ModelType::kLinear},
                                               {"generalLinear", ModelType::kLinear},
                                               {"multinomialLogistic", ModelType::kMultinomial},
                                               {"ordinalMultinomial", ModelType::kOrdinal},
                                               {"generalizedLinear", ModelType::kGeneralized},
                                               {"CoxRegression", ModelType::kCox}};
  fType = ReadRequiredWord(fElement, "modelType", kTypes);
  const bool predictsCategories = fType == ModelType::kMultinomial || fType == ModelType::kOrdinal;
  if (predictsCategories && !fIsClassification) throw fElement.AttributeError("modelType", "is for a classification");
  if (fIsClassification && !predictsCategories && fType != ModelType::kGeneralized) {
    throw fElement.AttributeError("modelType", "is for a regression");
  }
  if (fType != ModelType::kCox && fElement.Child("BaseCumHazardTables")) {
    throw fElement.Child("BaseCumHazardTables").Error("is for a CoxRegression");
  }
}

// The link function is that of a generalized linear model, the cumulative link that of an ordinal one. A cumulative
// link elsewhere says nothing of the model.
void GeneralRegressionReader::ReadLinks() {
  const Link cumulativeLink = ReadWord(fElement, "cumulativeLink", kCumulativeLinks, Link::kLogit);
  (void)ReadWord(fElement, "linkFunction", kLinkFunctions, Link::kIdentity);
  (void)ReadWord(fElement, "distribution", kDistributions, 0);
  if (fType == ModelType::kGeneralized) return ReadLinkFunction();
  CheckImpliedLink();
  if (fType != ModelType::kOrdinal) return;
  (void)fElement.Required("cumulativeLink");
  fModel->fLink = cumulativeLink;
}

void GeneralRegressionReader::ReadLinkFunction() {
  fModel->fLink = ReadRequiredWord(fElement, "linkFunction", kLinkFunctions);
  fModel->fLinkParameter = ReadLinkParameter();
}

// The other types of models imply their link. One that contradicts it leaves open which model is meant.
void GeneralRegressionReader::CheckImpliedLink() const {
  const std::optional<std::string_view> link = fElement.Attribute("linkFunction");
  if (!link) return;
  std::string_view implied = "identity";
  if (fType == ModelType::kMultinomial) implied = "logit";
  if (fType == ModelType::kOrdinal) implied = fElement.Required("cumulativeLink");
  if (fType == ModelType::kCox) implied = "log";
  if (*link != implied) throw fElement.AttributeError("linkFunction", "isn't the link of this modelType");
}

double GeneralRegressionReader::ReadLinkParameter() const {
  switch (fModel->fLink) {
    case Link::kOddspower:
    case Link::kPower:
      return RequiredFinite(fElement, "linkParameter");
    case Link::kNegbin: {
      const double dispersion = RequiredFinite(fElement, "distParameter");
      if (dispersion <= 0.0) throw fElement.AttributeError("distParameter", "isn't above 0");
      return dispersion;
    }
    default:
      return 0.0;
  }
}

void GeneralRegressionReader::ReadOffset() {
  fModel->fOffset = ReadQuantity("offsetVariable", "offsetValue", 0.0);
  const bool has = fModel->fOffset.slot != Quantity::kNoSlot || fModel->fOffset.number != 0.0;
  if (has && (fType == ModelType::kLinear || fType == ModelType::kCox)) {
    throw fElement.AttributeError("modelType", "has no offset");
  }
}

void GeneralRegressionReader::ReadTrials() {
  fModel->fTrials = ReadQuantity("trialsVariable", "trialsValue", 1.0);
  const Quantity& trials = fModel->fTrials;
  if (trials.slot == Quantity::kNoSlot && trials.number == 1.0) return;
  if (fElement.Attribute("distribution") != "binomial" || fType != ModelType::kGeneralized) {
    throw fElement.Error("has trials, which are for the distribution binomial of a generalizedLinear model");
  }
  if (fIsClassification) throw fElement.Error("has trials, which have no meaning for a classification");
  if (trials.slot == Quantity::kNoSlot && (trials.number < 1.0 || trials.number != std::trunc(trials.number))) {
    throw fElement.AttributeError("trialsValue", "is no number of trials");
  }
}

GeneralRegressionReader::Quantity GeneralRegressionReader::ReadQuantity(const char* variable, const char* value,
                                                                        double absent) {
  const std::optional<std::string_view> name = fElement.Attribute(variable);
  const std::optional<double> number = ReadFinite(fElement, value);
  if (name && number) throw fElement.AttributeError(value, std::string("stands beside ").append(variable));
  if (name) return {absent, fScope.ResolveNumeric(*name, fElement).slot};
  return {number.value_or(absent)};
}

std::uint32_t GeneralRegressionReader::ReadCategory(const Element& cell) {
  const std::optional<std::string_view> text = cell.Attribute("targetCategory");
  if (!text) return kNoCategory;
  if (!fIsClassification) return ReadOnlyCategory(cell, *text);
  if (!fKnowsCategories) return fTarget.AddCategory(cell, "targetCategory", *text);
  const std::optional<std::uint32_t> category = fTarget.FindCategory(*text);
  if (!category) throw cell.AttributeError("targetCategory", "isn't a category of the target");
  return *category;
}

// The one equation of a regression may carry the name of the category that it counts.
std::uint32_t GeneralRegressionReader::ReadOnlyCategory(const Element& cell, std::string_view text) {
  if (!fOnlyCategory) fOnlyCategory = text;
  if (*fOnlyCategory != text) throw cell.AttributeError("targetCategory", "is a second category; a regression has one");
  return 0;
}

void GeneralRegressionReader::ReadReference() {
  const std::optional<std::string_view> text = fElement.Attribute("targetReferenceCategory");
  if (!text || !fIsClassification) return;
  if (!fKnowsCategories) {
    fReference = fTarget.AddCategory(fElement, "targetReferenceCategory", *text);
    return;
  }
  fReference = fTarget.FindCategory(*text).value_or(kNoCategory);
  if (fReference == kNoCategory) {
    throw fElement.AttributeError("targetReferenceCategory", "isn't a category of the target");
  }
}

void GeneralRegressionReader::ReadEquations() {
  if (fParameters->Coefficients().empty() && fType != ModelType::kCox) {
    throw fElement.RequiredChild("ParamMatrix").Error("has no <PCell>");
  }
  if (fIsClassification) GroupByCategory();
  switch (fType) {
    case ModelType::kLinear:
      return ReadSingle();
    case ModelType::kGeneralized:
      return fIsClassification ? ReadBinary() : ReadSingle();
    case ModelType::kMultinomial:
      return ReadMultinomial();
    case ModelType::kOrdinal:
      return ReadOrdinal();
    case ModelType::kCox:
      return ReadCox();
  }
}

void GeneralRegressionReader::ReadSingle() {
  (void)fModel->fSums.StartSum();
  for (const Coefficient& coefficient : fParameters->Coefficients()) fParameters->AddTerm(coefficient, 0);
}

void GeneralRegressionReader::ReadBinary() {
  fModel->fForm = Form::kBinary;
  const std::uint32_t event = FindEvent();
  const std::uint32_t other = fReference != kNoCategory ? fReference : FindOther(event);
  if (event == other) throw fElement.AttributeError("targetReferenceCategory", "has parameters of its own");
  fModel->fEquations = {{event, fModel->fSums.StartSum()}, {other, Equation::kNoSum}};
  for (const Coefficient& coefficient : fParameters->Coefficients()) fParameters->AddTerm(coefficient, event);
}

// The category that the parameters are of. Where they name none it is the one that isn't the reference.
std::uint32_t GeneralRegressionReader::FindEvent() const {
  std::uint32_t event = kNoCategory;
  for (std::uint32_t category = 0; category < fOwn.size(); ++category) {
    if (!HasOwn(category)) continue;
    if (event != kNoCategory) throw fElement.Error("has parameters of two categories, of which one is predicted");
    event = category;
  }
  if (event != kNoCategory) return event;
  if (fReference == kNoCategory) {
    throw fElement.Error(
        "doesn't say of which category its parameters are: neither a targetCategory nor "
        "targetReferenceCategory is there");
  }
  return FindOther(fReference);
}

std::uint32_t GeneralRegressionReader::FindOther(std::uint32_t category) const {
  if (fOwn.size() != 2) {
    throw fElement.Error("doesn't say which two of its " + std::to_string(fOwn.size()) + " categories it tells apart");
  }
  return 1 - category;
}

void GeneralRegressionReader::ReadMultinomial() {
  fModel->fForm = Form::kMultinomial;
  const std::uint32_t reference = FindReference();
  AddShared();
  const bool isForAll = !fShared.empty() || !fVaried.empty();
  for (std::uint32_t category = 0; category < fOwn.size(); ++category) {
    if (category == reference) {
      fModel->fEquations.push_back({category, Equation::kNoSum});
    } else if (HasOwn(category) || isForAll) {
      AddOwnTerms(category);
    }
  }
}

std::uint32_t GeneralRegressionReader::FindReference() const {
  if (fReference != kNoCategory) {
    if (HasOwn(fReference)) throw fElement.AttributeError("targetReferenceCategory", "has parameters of its own");
    return fReference;
  }
  std::uint32_t reference = kNoCategory;
  for (std::uint32_t category = 0; category < fOwn.size(); ++category) {
    if (HasOwn(category)) continue;
    if (reference != kNoCategory)
      throw fElement.Error("needs targetReferenceCategory: several categories have no cell");
    reference = category;
  }
  if (reference == kNoCategory) throw fElement.Error("has no reference category: each one has cells");
  return reference;
}

void GeneralRegressionReader::ReadOrdinal() {
  fModel->fForm = Form::kCumulative;
  if (fOwn.size() < 2) throw fElement.Error("needs the values of its ordinal target in their order");
  const auto last = static_cast<std::uint32_t>(fOwn.size() - 1);
  if (HasOwn(last)) throw fElement.Error("has parameters of the last value of its target, which has none");
  if (fReference != kNoCategory && fReference != last) {
    throw fElement.AttributeError("targetReferenceCategory", "isn't the last value of the target");
  }
  AddShared();
  for (std::uint32_t category = 0; category < last; ++category) {
    if (!HasOwn(category)) {
      throw fElement.Error("has no parameter of the category " + Quoted(fTarget.Categories()[category].text));
    }
    AddOwnTerms(category);
  }
  fModel->fEquations.push_back({last, Equation::kNoSum});
}

void GeneralRegressionReader::ReadCox() {
  fModel->fForm = Form::kCox;
  fModel->fBaseline = CoxBaseline(fElement, fScope);
  fModel->fPredictsHazard = PredictsHazard(fElement.Child("Output"));
  ReadSingle();
  for (const Coefficient& coefficient : fParameters->Coefficients()) {
    fModel->fReferenceSum += coefficient.beta * fParameters->ReferencePoint(coefficient.parameter);
  }
}

// Coefficients of all categories, which are added up once for all of them where that can be.
void GeneralRegressionReader::AddShared() {
  if (fShared.empty()) return;
  fModel->fSharedSum = fModel->fSums.StartSum();
  for (const Coefficient& coefficient : fShared) fParameters->AddTerm(coefficient, kNoCategory);
}

void GeneralRegressionReader::AddOwnTerms(std::uint32_t category) {
  fModel->fEquations.push_back({category, fModel->fSums.StartSum()});
  for (const Coefficient& coefficient : fOwn[category]) fParameters->AddTerm(coefficient, category);
  // A coefficient of all categories becomes a term of each where its parameter differs between them.
  fScope.GetDocument().expansion.Add(fVaried.size() * ParameterSums::kTermBytes, fElement);
  for (const Coefficient& coefficient : fVaried) fParameters->AddTerm(coefficient, category);
}

void GeneralRegressionReader::GroupByCategory() {
  fOwn.resize(fTarget.Categories().size());
  for (const Coefficient& coefficient : fParameters->Coefficients()) {
    if (coefficient.category != kNoCategory) {
      fOwn[coefficient.category].push_back(coefficient);
    } else if (fParameters->IsByCategory(coefficient.parameter)) {
      fVaried.push_back(coefficient);
    } else {
      fShared.push_back(coefficient);
    }
  }
}

}  // namespace Torvane
