#pragma once

#include <string>
#include <utility>
#include <vector>

#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// An element with attributes and no content, as variables carry their display format.
class KEL_EXPORT XMLElement {
 public:
  /// A new element; the caller owns it.
  static XMLElement* Create(const std::string& name);

  /// Appends an attribute; a name that is there gets the new value in place.
  void AddAttribute(const std::string& name, const std::string& value);
  [[nodiscard]] const std::string& GetName() const noexcept { return fName; }
  /// In the order of adding.
  [[nodiscard]] const std::vector<std::pair<std::string, std::string>>& GetAttributes() const noexcept {
    return fAttributes;
  }

 private:
  explicit XMLElement(std::string name);

  std::string fName;
  std::vector<std::pair<std::string, std::string>> fAttributes;
};

}  // namespace KelXML_1_3
