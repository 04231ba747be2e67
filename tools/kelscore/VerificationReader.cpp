#include <algorithm>
#include <fstream>
#include <string_view>
#include <utility>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax2/Attributes.hpp>

#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/Verification.h"
#include "tools/kelscore/XmlPass.h"

namespace kelscore {
namespace {

/// Where an element stands, as far as it matters here.
enum class Place { kNowhere, kRoot, kModel, kVerification, kFields, kField, kTable, kRow, kCell };

std::string LocalName(const std::string& name) { return name.substr(name.rfind(':') + 1); }

/// What is wrong with the rows; the place is added where it is known.
struct Contradiction {
  std::string text;
};

/// Attributes of one element.
class AttributeReader {
 public:
  AttributeReader(const char* element, const xercesc::Attributes& attributes)
      : fElement(element), fAttributes(attributes) {}

  [[nodiscard]] std::optional<std::string> Find(const char* name) const {
    const XMLCh* value = fAttributes.getValue(WideName(name).Text());
    return value ? std::optional(ToUtf8(value)) : std::nullopt;
  }

  [[nodiscard]] std::string Text(const char* name) const {
    std::string text = Find(name).value_or("");
    if (text.empty()) throw Contradiction{fElement + " has no " + name};
    return text;
  }

  [[nodiscard]] std::optional<double> Share(const char* name) const {
    const std::optional<std::string> text = Find(name);
    if (!text) return std::nullopt;
    const std::optional<double> number = ReadNumber(*text);
    if (!number || *number < 0)
      throw Contradiction{fElement + ": " + name + " " + Quoted(*text) + " is no such number"};
    return number;
  }

 private:
  std::string fElement;
  const xercesc::Attributes& fAttributes;
};

/// Collects fields and rows of one model. Faults of the rows end the pass, as those of the XML do.
class VerificationHandler : public FaultHandler {
 public:
  explicit VerificationHandler(std::string modelElement) : fModelElement(std::move(modelElement)) {}

  void setDocumentLocator(const xercesc::Locator* const locator) override { fLocator = locator; }

  void startElement(const XMLCh*, const XMLCh*, const XMLCh* element, const xercesc::Attributes& attributes) override {
    if (Done()) return;
    const std::string name = LocalName(ToUtf8(element));
    fPlaces.push_back(PlaceOf(name));
    Try([&] { Begin(fPlaces.back(), name, attributes); });
  }

  void characters(const XMLCh* text, XMLSize_t size) override {
    if (!Done() && fPlaces.back() == Place::kCell) fText.append(text, size);
  }

  void endElement(const XMLCh*, const XMLCh*, const XMLCh*) override {
    if (Done()) return;
    const Place place = fPlaces.back();
    fPlaces.pop_back();
    Try([&] { End(place); });
  }

  [[nodiscard]] bool Done() const override { return fEnded || fContradiction || FaultHandler::Done(); }
  [[nodiscard]] const std::optional<std::string>& FoundContradiction() const { return fContradiction; }
  /// Nothing if the model has no rows.
  [[nodiscard]] std::optional<Verification> Result() && {
    return fFound ? std::optional(std::move(fVerification)) : std::nullopt;
  }

 private:
  [[nodiscard]] Place PlaceOf(const std::string& name) const {
    if (fPlaces.empty()) return Place::kRoot;
    const auto is = [&name](const char* wanted, Place place) { return name == wanted ? place : Place::kNowhere; };
    switch (fPlaces.back()) {
      case Place::kRoot:
        return is(fModelElement.c_str(), Place::kModel);
      case Place::kModel:
        return is("ModelVerification", Place::kVerification);
      case Place::kVerification:
        return name == "InlineTable" ? Place::kTable : is("VerificationFields", Place::kFields);
      case Place::kFields:
        return is("VerificationField", Place::kField);
      case Place::kTable:
        return is("row", Place::kRow);
      case Place::kRow:
        return Place::kCell;
      default:
        return Place::kNowhere;
    }
  }

  void Begin(Place place, const std::string& name, const xercesc::Attributes& attributes) {
    if (place == Place::kVerification) BeginVerification(attributes);
    if (place == Place::kField) AddField(AttributeReader("VerificationField", attributes));
    if (place == Place::kRow) fVerification.rows.push_back({Line(), {}});
    if (place == Place::kCell) BeginCell(name);
    const Place parent = fPlaces.size() < 2 ? Place::kNowhere : fPlaces[fPlaces.size() - 2];
    if (parent == Place::kVerification && name == "TableLocator")
      throw Contradiction{"a TableLocator names rows that are kept elsewhere; only an InlineTable can be read"};
    if (parent == Place::kCell) throw Contradiction{"column " + Quoted(fColumn) + " holds an element, not a value"};
  }

  void BeginVerification(const xercesc::Attributes& attributes) {
    if (fFound) throw Contradiction{"a second ModelVerification"};
    fFound = true;
    const AttributeReader reader("ModelVerification", attributes);
    fRecordCount = reader.Find("recordCount");
    fFieldCount = reader.Find("fieldCount");
  }

  void AddField(const AttributeReader& attributes) {
    VerificationField field;
    field.field = attributes.Text("field");
    field.column = LocalName(attributes.Find("column").value_or(field.field));
    field.precision = attributes.Share("precision").value_or(field.precision);
    field.zeroThreshold = attributes.Share("zeroThreshold").value_or(field.zeroThreshold);
    for (const VerificationField& known : fVerification.fields) {
      if (known.field == field.field) throw Contradiction{"VerificationField " + Quoted(field.field) + " stands twice"};
      if (known.column == field.column) throw Contradiction{"two fields have the column " + Quoted(field.column)};
    }
    fVerification.fields.push_back(std::move(field));
  }

  void BeginCell(const std::string& name) {
    fColumn = name;
    fText.clear();
  }

  void End(Place place) {
    if (place == Place::kCell) EndCell();
    if (place == Place::kRow) Cells().resize(fVerification.fields.size());
    if (place == Place::kVerification) EndVerification();
    if (place == Place::kModel) fEnded = true;
  }

  void EndCell() {
    const std::vector<VerificationField>& fields = fVerification.fields;
    const auto field = std::find_if(fields.begin(), fields.end(),
                                    [this](const VerificationField& known) { return known.column == fColumn; });
    if (field == fields.end()) throw Contradiction{"no VerificationField has the column " + Quoted(fColumn)};
    Cells().resize(fields.size());
    std::optional<std::string>& cell = Cells()[static_cast<std::size_t>(field - fields.begin())];
    if (cell) throw Contradiction{"column " + Quoted(fColumn) + " stands twice in a row"};
    if (!fText.empty()) cell = ToUtf8(fText.c_str());
  }

  void EndVerification() {
    if (fVerification.fields.empty()) throw Contradiction{"ModelVerification has no VerificationField"};
    if (fVerification.rows.empty()) throw Contradiction{"ModelVerification has no row in an InlineTable"};
    CheckCount("recordCount", fRecordCount, fVerification.rows.size(), "rows");
    CheckCount("fieldCount", fFieldCount, fVerification.fields.size(), "fields");
  }

  // What is no number contradicts any count.
  static void CheckCount(const char* name, const std::optional<std::string>& claimed, std::size_t counted,
                         const char* things) {
    if (!claimed || ReadNumber(*claimed) == static_cast<double>(counted)) return;
    throw Contradiction{std::string("ModelVerification claims a ") + name + " of " + Quoted(*claimed) + " and has " +
                        std::to_string(counted) + " " + things};
  }

  // Nothing may be thrown through the parser.
  template <typename Work>
  void Try(const Work& work) {
    try {
      work();
    } catch (const Contradiction& contradiction) {
      fContradiction = "line " + std::to_string(Line()) + ": " + contradiction.text;
    }
  }

  [[nodiscard]] std::uint64_t Line() const { return fLocator ? fLocator->getLineNumber() : 0; }
  [[nodiscard]] std::vector<std::optional<std::string>>& Cells() { return fVerification.rows.back().cells; }

  std::string fModelElement;
  const xercesc::Locator* fLocator = nullptr;
  std::vector<Place> fPlaces;
  Verification fVerification;
  std::optional<std::string> fRecordCount;
  std::optional<std::string> fFieldCount;
  std::string fColumn;
  std::basic_string<XMLCh> fText;  // of a cell; comes in pieces
  std::optional<std::string> fContradiction;
  bool fFound = false;
  bool fEnded = false;
};

}  // namespace

std::optional<Verification> ReadVerification(const std::string& path, const std::string& modelElement) {
  std::ifstream document(path, std::ios::binary);
  VerificationHandler handler(modelElement);
  std::optional<std::string> fault = ReadXml(document, handler);
  if (handler.FoundContradiction()) fault = handler.FoundContradiction();
  if (fault) throw Failure(kInputOutputFailed, path + ": " + *fault);
  return std::move(handler).Result();
}

}  // namespace kelscore
