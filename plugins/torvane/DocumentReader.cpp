#include "plugins/torvane/DocumentReader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "components/kelparsexml/PmmlVersion.h"
#include "plugins/torvane/models/ModelRegistry.h"
#include "scoring/common/KelScoringConst.h"

namespace Torvane {

namespace Const = KelScoring_20::KelScoringConst;

namespace {

bool IsPatch(std::string_view text) {
  return text.size() > 1 && text[0] == '.' && text.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

// "3.2" gives 302; "4.4.1" gives 404: patches change no meaning.
int ReadVersion(const Element& root) {
  constexpr std::array<std::string_view, 8> kVersions = {"3.0", "3.1", "3.2", "4.0", "4.1", "4.2", "4.3", "4.4"};
  const std::string version = KelXML_1_3::FindPmmlVersion(root).value_or("");
  const std::string_view text = version;
  const auto found = std::find(kVersions.begin(), kVersions.end(), text.substr(0, 3));
  if (found == kVersions.end() || (text.size() > 3 && !IsPatch(text.substr(3)))) {
    throw root.AttributeError("version", "is not supported; versions 3.0 to 4.4 are");
  }
  return 100 * (text[0] - '0') + (text[2] - '0');
}

bool ReadsAllDerivedFields(const KelXML_1_3::KelSettings& settings) {
  bool needsAll = false;
  (void)settings.GetSettingValByName(Const::kSettingScoringNeedDerivedPredictor, needsAll);
  return needsAll;
}

Element FindModel(const Element& root, const std::string& modelType) {
  const Element model = root.Child(modelType);
  if (!model) throw root.Error("has no child <" + modelType + ">");
  return model;
}

}  // namespace

std::string ReadModelType(const KelXML_1_3::KelSettings& settings) {
  std::string modelType;
  (void)settings.GetSettingValByName(Const::kSettingScoringModelType, modelType);
  if (modelType.empty()) throw PmmlError("The document has no model of a kind that is known");
  if (FindKind(modelType) == nullptr) throw PmmlError("<" + modelType + "> is not supported");
  return modelType;
}

std::unique_ptr<TorvaneScorer> MakeScorer(const Element& root, const std::string& modelType,
                                          KelXML_1_3::KelSettings& settings, const KelXML_1_3::KelVarList& varList,
                                          KelXML_1_3::ElementStream* stream) {
  if (!root.Is("PMML")) throw root.Error("is the root, where <PMML> should be");
  auto pool = std::make_unique<KelTransformNS::TextPool>();
  const int version = ReadVersion(root);
  const Element model = FindModel(root, modelType);
  Expansion expansion;
  DeclaredCategories categories;
  const Document document{root,
                          version,
                          KelTransformNS::DataDictionary(root.Child("DataDictionary")),
                          *pool,
                          expansion,
                          categories,
                          ReadsAllDerivedFields(settings),
                          stream};
  auto compiled = CompiledModel::Build(model, document);
  RefuseSecond(root, {"DataDictionary", "TransformationDictionary"});  // now that a stream is at its end
  return std::make_unique<TorvaneScorer>(settings, varList, modelType, std::move(pool), std::move(compiled));
}

}  // namespace Torvane
