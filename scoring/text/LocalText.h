#pragma once

#include <cstddef>
#include <string>
#include <xercesc/util/XercesDefs.hpp>

namespace KelScoring_20 {

/// A name in the platform's local code page as wide text, for the length of a call. Up to its first zero byte, as the
/// parser's own conversion takes it.
class WidenedName {
 public:
  explicit WidenedName(const std::string& name);
  ~WidenedName();
  WidenedName(const WidenedName&) = delete;
  WidenedName& operator=(const WidenedName&) = delete;

  [[nodiscard]] const XMLCh* Text() const noexcept { return fConverted ? fConverted : fAscii; }

 private:
  static constexpr std::size_t kCapacity = 48;  // names of PMML are shorter

  XMLCh fAscii[kCapacity];      // nearly all names: they need neither code page nor memory
  XMLCh* fConverted = nullptr;  // any other name
};

/// Wide text in the platform's local code page; empty for a null text.
std::string WideToLocal(const XMLCh* text);

}  // namespace KelScoring_20
