#include "scoring/common/XMLElement.h"

#include <algorithm>

namespace KelXML_1_3 {

XMLElement* XMLElement::Create(const std::string& name) { return new XMLElement(name); }

XMLElement::XMLElement(std::string name) : fName(std::move(name)) {}

void XMLElement::AddAttribute(const std::string& name, const std::string& value) {
  const auto attribute =
      std::find_if(fAttributes.begin(), fAttributes.end(), [&name](const auto& each) { return each.first == name; });
  if (attribute != fAttributes.end()) {
    attribute->second = value;
  } else {
    fAttributes.emplace_back(name, value);
  }
}

}  // namespace KelXML_1_3
