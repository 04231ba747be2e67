#include "components/keltransform/text/TextNormalization.h"

#include <cctype>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/text/Utf16.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

// How often a table is applied that is applied as long as it changes anything. Two rows can undo each other.
constexpr int kMaxRounds = 100;

std::string_view ColumnName(const Element& element, std::string_view attribute, std::string_view otherwise) {
  return LocalName(element.Attribute(attribute).value_or(otherwise));
}

Element FindCell(const Element& row, std::string_view column) {
  const Element cell = row.Child(column);
  RefuseUnknownChildren(cell, {});
  RefuseSecond(row, {column});
  return cell;
}

std::string_view RequiredCell(const Element& row, std::string_view column) {
  const Element cell = FindCell(row, column);
  if (!cell) throw row.Error("it has no column " + Quoted(column));
  return cell.Text();
}

bool ReadFlag(const Element& row, std::string_view column) {
  const Element cell = FindCell(row, column);
  if (!cell) return false;
  const std::string_view text = cell.Text();
  if (text == "true" || text == "1") return true;
  if (text.empty() || text == "false" || text == "0") return false;
  throw cell.Error(Quoted(text) + " is neither true nor false");
}

std::string LiteralReplacement(std::string_view text) {
  std::string replacement;
  for (const char character : text) {
    if (character == '$' || character == '\\') replacement += '\\';
    replacement += character;
  }
  return replacement;
}

Term WordsOf(std::string_view text, const RegularExpression& separator, bool isCaseSensitive, const Element& row) {
  std::u16string units;
  ToUtf16(text, units);
  WordList words;
  if (!words.Split(units, separator, isCaseSensitive) || words.Count() == 0) {
    throw row.Error(Quoted(text) + " has no words");
  }
  Term term;
  for (std::size_t index = 0; index < words.Count(); ++index) term.emplace_back(words[index]);
  return term;
}

// Rows may lack the column, but one that is named and that no row has is a mistake in the document.
void CheckRegexColumn(const Element& element, const Element& table) {
  const auto name = element.Attribute("regexField");
  if (!name || !table.Child("row")) return;
  for (Element row = table.Child("row"); row; row = row.Next("row")) {
    if (row.Child(LocalName(*name))) return;
  }
  throw element.AttributeError("regexField", "no row has this column");
}

}  // namespace

std::string LiteralPattern(std::string_view text) {
  std::string pattern;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80U && std::isalnum(byte) == 0) pattern += '\\';
    pattern += character;
  }
  return pattern;
}

TextNormalization::TextNormalization(const Element& element, const WordSettings& outer)
    : fSettings(ReadWordSettings(element, outer)), fIsRecursive(element.Boolean("recursive", false)) {
  if (fSettings.isTokenized) fSeparator = std::make_unique<RegularExpression>(fSettings.separator, true, element);
  RefuseUnknownChildren(element, {"InlineTable", "TableLocator"});
  RefuseSecond(element, {"InlineTable"});
  const Element locator = element.Child("TableLocator");
  if (locator) throw locator.Error("a table outside the document isn't supported");
  const Element table = element.RequiredChild("InlineTable");
  RefuseUnknownChildren(table, {"row"});
  for (Element row = table.Child("row"); row; row = row.Next("row")) ReadRow(row, element);
  CheckRegexColumn(element, table);
}

void TextNormalization::ReadRow(const Element& row, const Element& element) {
  const std::string_view from = RequiredCell(row, ColumnName(element, "inField", "string"));
  const std::string_view to = RequiredCell(row, ColumnName(element, "outField", "stem"));
  fRows.push_back(ReadReplacement(from, to, ReadFlag(row, ColumnName(element, "regexField", "regex")), row));
}

TextNormalization::Row TextNormalization::ReadReplacement(std::string_view from, std::string_view to, bool isExpression,
                                                          const Element& row) const {
  Row result;
  if (!isExpression && fSeparator) {
    result.words = WordsOf(from, *fSeparator, fSettings.isCaseSensitive, row);
    ToUtf16(to, result.replacement);
    return result;
  }
  const std::string pattern = isExpression ? std::string(from) : LiteralPattern(from);
  const std::string replacement = isExpression ? std::string(to) : LiteralReplacement(to);
  auto expression = std::make_unique<RegularExpression>(pattern, fSettings.isCaseSensitive, row);
  if (!expression->TakesReplacement(replacement)) {
    throw row.Error(Quoted(replacement) + " refers to a group that the pattern doesn't have");
  }
  ToUtf16(replacement, result.replacement);
  result.expression = std::move(expression);
  return result;
}

bool TextNormalization::Apply(std::u16string& text) const {
  if (!fIsRecursive) return ApplyOnce(text);
  thread_local std::u16string before;
  for (int round = 0; round < kMaxRounds; ++round) {
    before = text;
    if (!ApplyOnce(text)) return false;
    if (text == before) return true;
  }
  return false;
}

// The words are those of the text as it is, so they are split anew after each change.
bool TextNormalization::ApplyOnce(std::u16string& text) const {
  thread_local WordList words;
  bool isChanged = true;
  for (const Row& row : fRows) {
    if (row.expression) {
      if (!ReplaceMatches(row, text, isChanged)) return false;
      continue;
    }
    if (isChanged && !words.Split(text, *fSeparator, fSettings.isCaseSensitive)) return false;
    isChanged = false;
    if (!ReplaceWords(row, words, text, isChanged)) return false;
  }
  return true;
}

bool TextNormalization::ReplaceMatches(const Row& row, std::u16string& text, bool& isChanged) const {
  thread_local std::u16string result;
  const auto outcome = row.expression->Replace(text, row.replacement, result);
  if (outcome != RegularExpression::Outcome::kFound) return outcome == RegularExpression::Outcome::kNotFound;
  isChanged = true;
  text = result;
  return true;
}

bool TextNormalization::ReplaceWords(const Row& row, const WordList& words, std::u16string& text,
                                     bool& isChanged) const {
  thread_local std::u16string result;
  result.clear();
  std::size_t done = 0;
  for (std::size_t index = 0; index + row.words.size() <= words.Count();) {
    if (!DistanceAt(words, index, row.words, fSettings.maxDistance)) {
      ++index;
      continue;
    }
    result.append(text, done, words.Begin(index) - done).append(row.replacement);
    index += row.words.size();
    done = words.End(index - 1);
    if (result.size() > RegularExpression::kMaxUnits) return false;
  }
  if (done == 0) return true;
  isChanged = true;
  text.replace(0, done, result);
  return text.size() <= RegularExpression::kMaxUnits;
}

}  // namespace KelTransformNS
