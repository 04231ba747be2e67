// What a document says is honoured, or known to be without influence on scores, or refused. These tests walk through
// documents of every kind of model: an element that nobody knows, put in anywhere, and an attribute whose text means
// nothing, must make the plug-in refuse the model by name. The exceptions are listed, each with what makes it harmless.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "fuzz/Markup.h"
#include "tests/plugins/torvane/ModelHarness.h"

namespace TorvaneTest {
namespace {

using KelFuzz::Markup;

constexpr char kBogus[] = "Bogus";

struct DocumentFile {
  std::string name;
  Markup root;
};

std::vector<DocumentFile> AllDocuments() {
  std::vector<DocumentFile> documents;
  for (const auto& entry : std::filesystem::directory_iterator(KEL_MODELS)) {
    std::ifstream file(entry.path(), std::ios::binary);
    auto root = KelFuzz::ReadMarkup({std::istreambuf_iterator<char>(file), {}});
    EXPECT_TRUE(root) << entry.path();
    if (root) documents.push_back({entry.path().filename().string(), std::move(*root)});
  }
  std::sort(documents.begin(), documents.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  return documents;
}

// A place that may hold anything: an element, or an attribute of an element ("*": of any).
struct Exception {
  const char* element;
  const char* attribute;
  const char* why;
};

// A document may use categories that its dictionary doesn't list. A number can't be one that is none.
constexpr char kCategory[] = "a category";

constexpr Exception kMayHoldAnything[] = {
    {"PMML", "", "models beside the one that is scored"},
    {"Header", "", "about the document"},
    {"ModelStats", "", "statistics; those that a clustering reads lie deeper"},
    {"UnivariateStats", "", "statistics"},
    {"DiscrStats", "", "statistics"},
    {"ContStats", "", "statistics"},
    {"Partition", "", "statistics"},
    {"PartitionFieldStats", "", "statistics"},
    {"KohonenMap", "", "where a cluster is drawn"},
    {"PCovMatrix", "", "covariances of parameters, of which no score tells"},
    {"PCovCell", "", "covariances of parameters"},
    {"row", "", "columns that nothing refers to"},
};

constexpr Exception kMayBeAnything[] = {
    {"PMML", "xmlns", "the attribute version decides"},
    // Names, and texts for people. A name that is referred to is missed there.
    {"Header", "copyright", "for people"},
    {"*", "modelName", "for people"},
    {"*", "algorithmName", "for people"},
    {"*", "displayValue", "a text"},
    {"*", "label", "for people"},
    {"*", "description", "for people"},
    {"*", "id", "a name"},
    {"DataField", "name", "a name"},
    {"DerivedField", "name", "a name"},
    {"OutputField", "name", "a name"},
    {"Cluster", "name", "a name"},
    {"Partition", "name", "a name"},
    {"MiningField", "name", "in a segment, a field that nothing refers to"},
    {"InstanceField", "field", "a column that isn't asked for"},
    {"InstanceField", "column", "a column that no row has: its cells are missing"},
    {"BayesInput", "fieldName", "beside a derived field of its own"},
    {"ClusteringField", "field", "that is no part of the centres"},
    {"OutputField", "segmentId", "a segment that isn't there tells nothing"},
    {"RegressionModel", "targetFieldName", "which of several targets it is"},
    {"GeneralRegressionModel", "targetVariableName", "the mining schema tells the target"},
    {"GeneralRegressionModel", "statusVariable", "what survival was trained with"},
    // Categories and other texts.
    {"Value", "value", "of a field of texts, or one that equals no number"},
    {"*", "value", kCategory},
    {"*", "score", kCategory},
    {"*", "targetCategory", kCategory},
    {"RuleSet", "defaultScore", kCategory},
    {"DiscretizeBin", "binValue", "a text"},
    {"Discretize", "defaultValue", "a text"},
    {"*", "mapMissingTo", "a text"},
    {"TextIndex", "wordSeparatorCharacterRE", "a pattern"},
    // Counts of what stands there anyway, and other information.
    {"DataDictionary", "numberOfFields", "a count"},
    {"NeuralNetwork", "numberOfLayers", "a count"},
    {"TrainingInstances", "recordCount", "a count"},
    {"TrainingInstances", "fieldCount", "a count"},
    {"Array", "n", "a count, in a set predicate: producers write wrong ones"},
    {"Array", "type", "whoever reads an array knows the type"},
    {"SupportVectors", "numberOfAttributes", "a count"},
    {"RuleSet", "recordCount", "a count"},
    {"RuleSet", "nbCorrect", "a count"},
    {"SimpleRule", "recordCount", "a count"},
    {"SimpleRule", "nbCorrect", "a count"},
    {"Node", "recordCount", "a count, where no distribution stands beside it"},
    {"Node", "defaultChild", "of a strategy that has none"},
    {"Cluster", "size", "a count"},
    {"MiningField", "importance", "information"},
    {"PCell", "df", "of a parameter, information"},
    {"PCovMatrix", "type", "covariances of parameters"},
    {"PCovCell", "pRow", "covariances of parameters"},
    {"PCovCell", "pCol", "covariances of parameters"},
    {"PCovCell", "value", "covariances of parameters"},
    {"KohonenMap", "coord1", "where a cluster is drawn"},
    {"KohonenMap", "coord2", "where a cluster is drawn"},
    {"KohonenMap", "coord3", "where a cluster is drawn"},
    {"UnivariateStats", "field", "statistics; without any the dictionary tells the values"},
};

// Tells whether what is accepted may be, and which exceptions nothing has needed.
class Exceptions {
 public:
  template <std::size_t kCount>
  explicit Exceptions(const Exception (&list)[kCount]) : fList(std::begin(list), std::end(list)) {}

  bool Has(const std::string& element, const std::string& attribute, const std::string& value) {
    const bool isNumber = KelXML_1_3::ParsePmmlNumber(value).has_value();
    bool isListed = false;
    for (const Exception& exception : fList) {
      const bool isElement = exception.element == element || std::string(exception.element) == "*";
      if (!isElement || exception.attribute != attribute || (exception.why == kCategory && isNumber)) continue;
      fNeeded.insert(&exception);
      isListed = true;
    }
    return isListed;
  }

  void ExpectAllNeeded() const {
    for (const Exception& exception : fList) {
      EXPECT_TRUE(fNeeded.contains(&exception)) << exception.element << " " << exception.attribute << " is refused";
    }
  }

 private:
  std::vector<Exception> fList;
  std::set<const Exception*> fNeeded;
};

bool Names(const std::string& reason, const std::string& element) {
  return reason.find(std::string(1, '<').append(element)) != std::string::npos;
}

// Whether the reason names the element, or one that stands in it.
bool NamesPartOf(const std::string& reason, const Markup& element) {
  return Names(reason, element.name) || std::any_of(element.children.begin(), element.children.end(),
                                                    [&](const Markup& child) { return Names(reason, child.name); });
}

TEST(NothingSilent, Documents_AreScored) {
  for (const DocumentFile& document : AllDocuments()) {
    const Scorer scorer = TryLoad(KelFuzz::WriteMarkup(document.root));
    EXPECT_NE(scorer.scorer, nullptr) << document.name << ": " << scorer.reason;
  }
}

TEST(NothingSilent, UnknownElementAnywhere_IsRefusedByName) {
  Exceptions exceptions(kMayHoldAnything);
  for (const DocumentFile& document : AllDocuments()) {
    for (std::size_t i = 0; i < 2 * KelFuzz::CountElements(document.root); ++i) {
      Markup root = document.root;
      Markup& parent = *KelFuzz::AllElements(root)[i / 2];
      parent.children.insert(i % 2 == 0 ? parent.children.begin() : parent.children.end(), Markup{kBogus, {}, {}, {}});
      const Scorer scorer = TryLoad(KelFuzz::WriteMarkup(root));
      if (scorer.scorer) {
        EXPECT_TRUE(exceptions.Has(parent.name, "", ""))
            << document.name << ": an unknown child of <" << parent.name << ">";
      } else {
        EXPECT_TRUE(NamesPartOf(scorer.reason, parent)) << document.name << ": " << scorer.reason;
      }
    }
  }
  exceptions.ExpectAllNeeded();
}

// What others refer to, or what the others are to match, is missed where they stand.
bool IsMissedElsewhere(const std::string& attribute, const std::string& value, const std::string& reason) {
  static const std::set<std::string> kReferences = {"value", "targetCategory", "column", "inField", "outField"};
  return reason.find(value) != std::string::npos || (kReferences.contains(attribute) && reason.starts_with("<"));
}

TEST(NothingSilent, AttributeWithoutMeaning_IsRefusedByName) {
  Exceptions exceptions(kMayBeAnything);
  for (DocumentFile& document : AllDocuments()) {
    for (Markup* element : KelFuzz::AllElements(document.root)) {
      for (auto& [attribute, value] : element->attributes) {
        const std::string original = value;
        value = kBogus;
        const Scorer scorer = TryLoad(KelFuzz::WriteMarkup(document.root));
        value = original;
        const std::string place = document.name + ": <" + element->name + " " + attribute + "=\"" + original + "\">";
        if (scorer.scorer) {
          EXPECT_TRUE(exceptions.Has(element->name, attribute, original)) << place;
        } else {
          EXPECT_TRUE(Names(scorer.reason, element->name) || IsMissedElsewhere(attribute, original, scorer.reason))
              << place << ": " << scorer.reason;
        }
      }
    }
  }
  exceptions.ExpectAllNeeded();
}

}  // namespace
}  // namespace TorvaneTest
