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
      fFields.emplace(valueOf(kName), DataField{valueOf(kDataType), ""});
    } else if (kMiningField.Is(element)) {
      const auto field = fFields.find(valueOf(kName));
      if (field != fFields.end()) field->second.usageType = valueOf(kUsageType);
    }
  }
  void endElement(const XMLCh*, const XMLCh*, const XMLCh* element) override {
    fAtEnd = fAtEnd || kMiningSchema.Is(element);
  }
  [[nodiscard]] bool Done() const override { return fAtEnd || FaultHandler::Done(); }
  [[nodiscard]] DataFields& Fields() { return fFields; }

 private:
  const WideName kDataField{Const::kPmmlDataField};
  const WideName kDataType{Const::kPmmlDataType};
  const WideName kMiningField{Const::kPmmlMiningField};
  const WideName kMiningSchema{Const::kPmmlMiningSchema};
  const WideName kName{Const::kPmmlName};
  const WideName kUsageType{Const::kPmmlUsageType};

  DataFields fFields;
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
