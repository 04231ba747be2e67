#include "fuzz/ModelTrial.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <memory>
#include <sstream>
#include <string_view>
#include <vector>

#include "fuzz/Markup.h"
#include "fuzz/Random.h"
#include "scoring/common/IKelScore.h"
#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"

extern "C" KelScoring_20::IKelScoreParser* GetScoreParser();

namespace KelFuzz {
namespace {

using KelCommon_1_3::IKelScore;
using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelMV;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

constexpr std::size_t kMostFields = 60;
constexpr std::size_t kMostWords = 200;
constexpr int kMixedRecords = 40;
// Codes that the plug-in tells: a derived field isn't in the record, there is no memory.
constexpr long kDerivedFieldMissing = 270001;

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "A model breaks its contract: %s\n", what.c_str());
  std::abort();
}

std::string Shown(const ValueRecord& record) {
  std::string text;
  for (int i = 0; i < record.Size(); ++i) {
    const Value& value = record.At(i);
    text.append(record.NameAt(i)).append("=");
    if (value.Members() != nullptr) {
      text.append("{").append(Shown(*value.Members())).append("}; ");
    } else {
      text.append(value.IsNull() ? "null" : value.GetString()).append("; ");
    }
  }
  return text;
}

// The model element that comes first.
std::string FindKind(const std::string& document) {
  std::string first = "TreeModel";
  std::size_t position = std::string::npos;
  for (const char* kind :
       {"AssociationModel", "ClusteringModel", "GeneralRegressionModel", "MiningModel", "NaiveBayesModel",
        "NearestNeighborModel", "NeuralNetwork", "RegressionModel", "RuleSetModel", "Scorecard", "SequenceModel",
        "SupportVectorMachineModel", "TextModel", "TimeSeriesModel", "TreeModel"}) {
    const std::size_t found = document.find(std::string(1, '<').append(kind));
    if (found >= position) continue;
    position = found;
    first = kind;
  }
  return first;
}

// What the document tells of its fields: their names and the words that may be values.
struct Vocabulary {
  std::vector<std::string> fields;
  std::vector<std::string> words;

  explicit Vocabulary(const std::string& document) {
    std::optional<Markup> root = ReadMarkup(document);
    if (!root) return;
    for (const Markup* element : AllElements(*root)) Take(*element);
  }

 private:
  void Take(const Markup& element) {
    const bool isField = element.name == "DataField" || element.name == "MiningField" || element.name == "DerivedField";
    for (const auto& [name, value] : element.attributes) {
      if (isField && name == "name") AddTo(fields, value, kMostFields);
      if (name == "value" || name == "category" || name == "score") AddTo(words, value, kMostWords);
    }
    if (element.children.empty() && !element.text.empty()) AddTo(words, element.text.substr(0, 40), kMostWords);
  }

  static void AddTo(std::vector<std::string>& texts, const std::string& text, std::size_t most) {
    if (texts.size() < most && std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(text);
  }
};

std::vector<Value> ValuesOfEveryKind() {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  std::vector<Value> values = {Value::NULL_VALUE};
  for (const double number : {kNaN,
                              KelMV::gMissingValue,
                              kInfinity,
                              -kInfinity,
                              0.0,
                              -0.0,
                              std::numeric_limits<double>::max(),
                              5e-324,
                              2.3e-308,
                              1e300,
                              -1e300,
                              1e-300,
                              1.0,
                              -1.0,
                              2.0,
                              3.0,
                              10.0,
                              100.0,
                              0.5,
                              -2.5,
                              1.0 / 3.0,
                              2147483647.0,
                              -2147483648.0,
                              4294967296.0,
                              9007199254740993.0,
                              1.8446744073709552e19,
                              3.4e38}) {
    values.emplace_back(number);
  }
  for (const char* text :
       {"1", "-2.5", "0", "1e400", "nan", "INF", " 7 ", "", " ", "true", "false", "2020-02-29", "2020-02-30T25:00:00",
        "23:59:60", "nothing that the document knows", "\xFF\xFE", "\xE4", "\xF0\x9F\x8D\x80", "a b c a b c"}) {
    values.emplace_back(text);
  }
  values.emplace_back(std::string(5'000, 'a'));
  values.emplace_back(std::string("a\0b", 3));
  values.emplace_back()["member"] = 1.0;
  values.emplace_back().MakeMembers();
  return values;
}

// The records that a model gets, all with the same fields.
std::vector<ValueRecord> MakeRecords(const Vocabulary& vocabulary, Random& random) {
  const std::vector<Value> values = ValuesOfEveryKind();
  ValueRecord empty;
  for (const std::string& field : vocabulary.fields) empty.Add(field, Value::NULL_VALUE);
  std::vector<ValueRecord> records;
  for (const Value& value : values) {
    ValueRecord& record = records.emplace_back(empty);
    for (int i = 0; i < record.Size(); ++i) record[i] = value;
  }
  for (int count = 0; count < kMixedRecords; ++count) {
    ValueRecord& record = records.emplace_back(empty);
    for (int i = 0; i < record.Size(); ++i) {
      if (random.OneIn(2) && !vocabulary.words.empty()) {
        record[i] = random.Pick(vocabulary.words);
      } else if (random.OneIn(2)) {
        record[i] = static_cast<double>(random.Below(2'000)) / 100.0 - 10.0;
      } else {
        record[i] = random.Pick(values);
      }
    }
  }
  return records;
}

// The same names and values from the last to the first, with fields that no model knows between them.
ValueRecord TurnedAround(const ValueRecord& record) {
  ValueRecord turned;
  for (int i = record.Size() - 1; i >= 0; --i) {
    turned.Add(record.NameAt(i), record.At(i));
    if (i % 3 == 0) turned.Add("a field that no model knows " + std::to_string(i), Value(1.0));
  }
  return turned;
}

class Trial {
 public:
  explicit Trial(const std::string& document) : fDocument(document), fRandom(document.size()) {
    fSettings.AddSetting("scoring_modelType", FindKind(document), true);
    if (document.size() % 8 == 0) fSettings.AddSetting("scoring_needDerivedPredictor", true, true);
  }

  bool Load() {
    KelDiagnostics::Clear();
    std::istringstream stream(fDocument);
    const std::unique_ptr<KelScoring_20::IKelScoreParser> parser(GetScoreParser());
    fScorer.reset(parser->CreateScorer(fSettings, fVarList, stream));
    if (!fScorer && KelDiagnostics::Last().empty()) Fail("it is refused without a reason");
    return fScorer != nullptr;
  }

  std::size_t ScoreAll() {
    const Vocabulary vocabulary(fDocument);
    const std::vector<ValueRecord> records = MakeRecords(vocabulary, fRandom);
    ValueRecord all;
    if (!fScorer->Scorable(all).IsOK() || all.Size() == 0) Fail("it tells no outputs");
    ValueRecord some = ChooseSome(all);
    std::vector<ValueRecord> results;
    for (const ValueRecord& record : records) {
      Score(record, all);
      CheckPrediction(record, all);
      results.push_back(all);
    }
    for (std::size_t i = records.size(); i-- > 0;) {
      Score(records[i], some);
      Compare(records[i], results[i], some, "differs with other outputs, and after other records");
    }
    for (std::size_t i = 0; i < records.size(); i += 3) {
      Score(TurnedAround(records[i]), some);
      Compare(records[i], results[i], some, "differs with another order of fields");
    }
    ScoreIncomplete(records, all);
    return fRecordCount;
  }

 private:
  // Every second output or so, from the last to the first, and one that the model doesn't know.
  ValueRecord ChooseSome(const ValueRecord& all) {
    ValueRecord some;
    for (int i = all.Size() - 1; i >= 0; --i) {
      if (fRandom.OneIn(2)) some.Add(all.NameAt(i), Value::NULL_VALUE);
    }
    some.Add("an output that no model knows", Value("untouched"));
    return some;
  }

  void Score(const ValueRecord& in, ValueRecord& out) {
    ++fRecordCount;
    try {
      const KelCommon_1_3::KelStatus status = fScorer->Score(in, out);
      const bool isKnown = status.IsOK() || status.GetErrorCode() == kDerivedFieldMissing;
      if (!isKnown) Fail("status " + std::to_string(status.GetErrorCode()) + " for " + Shown(in));
    } catch (const std::exception& error) {
      Fail(std::string("it throws ") + error.what() + " for " + Shown(in));
    }
  }

  void ScoreIncomplete(const std::vector<ValueRecord>& records, ValueRecord& all) {
    Score(ValueRecord(), all);
    for (std::size_t start = 0; start < 2; ++start) {
      for (std::size_t i = start; i < records.size(); i += 5) {
        ValueRecord half;
        for (int field = static_cast<int>(start); field < records[i].Size(); field += 2) {
          half.Add(records[i].NameAt(field), records[i].At(field));
        }
        Score(half, all);
      }
    }
  }

  static void CheckPrediction(const ValueRecord& in, const ValueRecord& out) {
    const Value& prediction = out.At(out.IndexOf("prediction"));
    const bool isNaN = prediction.GetType() == Value::kNumber && std::isnan(prediction.GetReal());
    if (isNaN) Fail("its prediction is NaN for " + Shown(in));
  }

  static void Compare(const ValueRecord& in, const ValueRecord& all, const ValueRecord& some, const char* what) {
    for (int i = 0; i < some.Size(); ++i) {
      const int position = all.IndexOf(some.NameAt(i));
      const bool isSame = position < 0 ? some.At(i) == Value("untouched") : some.At(i) == all.At(position);
      if (isSame) continue;
      Fail(some.NameAt(i) + " " + what + "\nfor " + Shown(in) + "\nall: " + Shown(all) + "\nsome: " + Shown(some));
    }
  }

  const std::string& fDocument;
  Random fRandom;
  KelXML_1_3::KelSettings fSettings;
  KelXML_1_3::KelVarList fVarList;
  std::unique_ptr<IKelScore> fScorer;  // dies before what it refers to
  std::size_t fRecordCount = 0;
};

}  // namespace

TrialResult TryModel(const std::string& document) {
  Trial trial(document);
  TrialResult result;
  result.isLoaded = trial.Load();
  if (result.isLoaded) result.recordCount = trial.ScoreAll();
  return result;
}

}  // namespace KelFuzz
