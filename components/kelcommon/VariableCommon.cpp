#include "components/kelcommon/VariableCommon.h"

#include <utility>

namespace KelXML_1_3 {

VariableCommon::VariableCommon(std::string name, std::string label, VariableRole role,
                               std::unique_ptr<BaseEncoder> encoder)
    : fName(std::move(name)), fLabel(std::move(label)), fRole(role), fEncoder(std::move(encoder)) {}

VariableCommon::VariableCommon(const VariableCommon& other)
    : fName(other.fName),
      fLabel(other.fLabel),
      fRole(other.fRole),
      fStorageType(other.fStorageType),
      fFormat(other.fFormat ? std::make_unique<XMLElement>(*other.fFormat) : nullptr),
      fEncoder(other.fEncoder->Clone()) {}

void VariableCommon::TakeFormat(XMLElement* format) {
  if (format != fFormat.get()) fFormat.reset(format);
}

}  // namespace KelXML_1_3
