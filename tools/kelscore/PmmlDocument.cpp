#include "tools/kelscore/PmmlDocument.h"

#include <utility>
#include <xercesc/sax2/Attributes.hpp>

#include "scoring/common/KelScoringConst.h"
#include "tools/kelscore/XmlPass.h"

namespace kelscore {
namespace {

namespace Const = KelScoring_20::KelScoringConst;

/// Collects the data fields up to the end of the first mining schema.
class DataFieldsHandler : public FaultHandler {
 public:
  void startElement(const XMLCh*, const XMLCh*, const XMLCh* element, const xercesc::Attributes& attributes) override {
    const auto valueOf = [&attributes](const WideName& name) { return ToUtf8(attributes.getValue(name.Text())); };
    if (kDataField.Is(element)) {
      fDataField = fFields.emplace(valueOf(kName), DataField{valueOf(kDataType), ""}).first;
    } else if (kValue.Is(element) && fDataField != fFields.end()) {
      const std::string property = valueOf(kProperty);
      if (property == "missing" || property == "invalid")
        fDataField->second.markers.push_back(valueOf(kValueAttribute));
    } else if (kMiningField.Is(element)) {
      const auto field = fFields.find(valueOf(kName));
      if (field != fFields.end()) field->second.usageType = valueOf(kUsageType);
    }
  }
  void endElement(const XMLCh*, const XMLCh*, const XMLCh* element) override {
    fAtEnd = fAtEnd || kMiningSchema.Is(element);
    if (kDataField.Is(element)) fDataField = fFields.end();
  }
  [[nodiscard]] bool Done() const override { return fAtEnd || FaultHandler::Done(); }
  [[nodiscard]] DataFields& Fields() { return fFields; }

 private:
  const WideName kDataField{Const::kPmmlDataField};
  const WideName kDataType{Const::kPmmlDataType};
  const WideName kMiningField{Const::kPmmlMiningField};
  const WideName kMiningSchema{Const::kPmmlMiningSchema};
  const WideName kName{Const::kPmmlName};
  const WideName kProperty{Const::kPmmlProperty};
  const WideName kValue{Const::kPmmlValueElement};
  const WideName kValueAttribute{Const::kPmmlValue};
  const WideName kUsageType{Const::kPmmlUsageType};

  DataFields fFields;
  DataFields::iterator fDataField = fFields.end();  // the one that is being read
  bool fAtEnd = false;
};

}  // namespace

DataFields ReadDataFields(std::istream& document) {
  DataFieldsHandler handler;
  static_cast<void>(ReadXml(document, handler));  // what stands before a fault counts
  return std::move(handler.Fields());
}

std::optional<std::string> FindXmlFault(std::istream& document) {
  FaultHandler handler;
  return ReadXml(document, handler);
}

}  // namespace kelscore
