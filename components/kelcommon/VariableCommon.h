#pragma once

#include <memory>
#include <string>

#include "components/kelcommon/Encoders.h"
#include "scoring/common/IKelVariable.h"
#include "scoring/common/XMLElement.h"

namespace KelXML_1_3 {

/// What variables of all kinds hold. A copy is deep.
struct VariableCommon {
  VariableCommon(std::string name, std::string label, VariableRole role, std::unique_ptr<BaseEncoder> encoder);
  VariableCommon(const VariableCommon& other);
  VariableCommon& operator=(const VariableCommon&) = delete;

  /// Takes `format` over and destroys an earlier one; the one that is there may come again.
  void TakeFormat(XMLElement* format);

  std::string fName;
  std::string fLabel;
  VariableRole fRole;
  int fStorageType = 0;
  std::unique_ptr<XMLElement> fFormat;
  std::unique_ptr<BaseEncoder> fEncoder;  // never null
};

}  // namespace KelXML_1_3
