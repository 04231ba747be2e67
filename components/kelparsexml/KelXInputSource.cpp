#include "scoring/common/KelXInputSource.h"

#include <istream>

#include "components/kelparsexml/GatedStream.h"

namespace KelXML_1_3 {

KelXInputSource::KelXInputSource(std::istream& stream, int maxAttributes)
    : fStream(stream), fMaxAttributes(maxAttributes), fRefusal(std::make_shared<std::string>()) {}
KelXInputSource::~KelXInputSource() = default;

xercesc::BinInputStream* KelXInputSource::makeStream() const {
  return new GatedStream(fStream, fMaxAttributes, fRefusal);
}

const XMLCh* KelXInputSource::getEncoding() const { return nullptr; }

const std::string& KelXInputSource::Refusal() const noexcept { return *fRefusal; }

}  // namespace KelXML_1_3
