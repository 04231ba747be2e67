#include "scoring/text/LocalText.h"

#include <memory>
#include <xercesc/util/XMLString.hpp>

namespace KelScoring_20 {
namespace {

using xercesc::XMLString;

/// False if a character is no ASCII or the name doesn't fit.
bool WidenAscii(const char* name, XMLCh* wide, std::size_t capacity) {
  for (std::size_t i = 0; i < capacity; ++i) {
    const auto c = static_cast<unsigned char>(name[i]);
    if (c >= 0x80) return false;
    wide[i] = c;
    if (c == 0) return true;
  }
  return false;
}

}  // namespace

WidenedName::WidenedName(const std::string& name) {
  if (WidenAscii(name.c_str(), fAscii, kCapacity)) return;
  fConverted = XMLString::transcode(name.c_str());
  if (!fConverted) fAscii[0] = 0;  // the code page has nothing for it
}

WidenedName::~WidenedName() {
  if (fConverted) XMLString::release(&fConverted);
}

std::string WideToLocal(const XMLCh* text) {
  if (!text) return std::string();
  const auto release = [](char* buffer) { XMLString::release(&buffer); };
  const std::unique_ptr<char, decltype(release)> converted(XMLString::transcode(text), release);
  return converted ? converted.get() : "";
}

}  // namespace KelScoring_20
