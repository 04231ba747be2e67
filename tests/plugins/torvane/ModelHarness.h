#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include "scoring/common/IKelScore.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"

namespace TorvaneTest {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

/// The text of a small document. Its dictionary has the continuous fields "x" (double), "n" (integer) and "f" (float),
/// the text "s" (a, b, c), the boolean "b", the ordinal text "o" (low, mid, high), and the targets "y" (yes, no, maybe)
/// and "t" (double). A test says what it is about.
struct Document {
  std::string kind = "TreeModel";
  std::string function = "classification";
  std::string attributes = "";  ///< of the model
  std::string body = "";        ///< what stands behind the mining schema
  std::string version = "4.2";
  std::string schema = AllFields("");
  std::string dictionary = AllDeclarations();
  std::string transformations = "";  ///< between dictionary and model

  [[nodiscard]] std::string Text() const;

  static std::string AllDeclarations();
  /// A mining field for each field but the target that isn't of the function; "x" with `attributesOfX`.
  static std::string AllFields(const std::string& attributesOfX);
};

/// A regression document with t = 1 * `field`.
Document Identity(const std::string& field);

/// A scorer with the settings that it refers to.
struct Scorer {
  std::unique_ptr<KelXML_1_3::KelSettings> settings;
  std::unique_ptr<KelCommon_1_3::IKelScore> scorer;  // dies first
  std::string reason;                                ///< of a refusal

  /// Scores one record for the outputs that `Scorable` lists. Expects an OK status.
  [[nodiscard]] ValueRecord Score(std::initializer_list<std::pair<const char*, Value>> fields) const;
  [[nodiscard]] ValueRecord Score(const ValueRecord& in) const;
  /// The "prediction" of one record.
  [[nodiscard]] Value Predict(std::initializer_list<std::pair<const char*, Value>> fields) const;
};

/// Asks the plug-in's entry for streams for a scorer. The model kind comes from the text, as the prescan would find it.
Scorer TryLoad(const std::string& text, bool needsDerived = false);
/// The same, where a refusal is a failure of the test.
Scorer Load(const Document& document, bool needsDerived = false);
/// The reason of a refusal; a failure of the test if there is none.
std::string ReasonOf(const Document& document);

ValueRecord Record(std::initializer_list<std::pair<const char*, Value>> fields);
/// The value of a name, as text; "null" for null, and for a name that isn't there.
std::string Shown(const ValueRecord& record, const std::string& name);
/// The probability of a category.
double Probability(const ValueRecord& out, const std::string& category);
/// The number of a name. Fails the test if it is none.
double Number(const ValueRecord& record, const std::string& name);

}  // namespace TorvaneTest
