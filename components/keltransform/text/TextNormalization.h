#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "components/keltransform/text/Words.h"

namespace KelTransformNS {

/// A "TextIndexNormalization": a table of words, or of regular expressions, and what replaces each. Immutable.
class TextNormalization {
 public:
  /// What the element doesn't say is as in `outer`. Throws `PmmlError`.
  TextNormalization(const KelXML_1_3::Element& element, const WordSettings& outer);

  /// Replaces in the text, row after row. False if that is given up: a search takes too long, a table that is applied
  /// over and over finds no end, or the text grows too long.
  [[nodiscard]] bool Apply(std::u16string& text) const;

 private:
  // Words of a text that is taken apart are compared word by word; everything else is a regular expression.
  struct Row {
    std::unique_ptr<const RegularExpression> expression;
    Term words;
    std::u16string replacement;
  };

  void ReadRow(const KelXML_1_3::Element& row, const KelXML_1_3::Element& element);
  [[nodiscard]] Row ReadReplacement(std::string_view from, std::string_view to, bool isExpression,
                                    const KelXML_1_3::Element& row) const;
  [[nodiscard]] bool ApplyOnce(std::u16string& text) const;
  [[nodiscard]] bool ReplaceMatches(const Row& row, std::u16string& text, bool& isChanged) const;
  [[nodiscard]] bool ReplaceWords(const Row& row, const WordList& words, std::u16string& text, bool& isChanged) const;

  WordSettings fSettings;
  std::unique_ptr<const RegularExpression> fSeparator;  // null if the text isn't taken apart
  bool fIsRecursive;
  std::vector<Row> fRows;
};

/// A pattern that matches nothing but the text.
[[nodiscard]] std::string LiteralPattern(std::string_view text);

}  // namespace KelTransformNS
