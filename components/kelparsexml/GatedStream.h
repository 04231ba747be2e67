#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <xercesc/util/BinInputStream.hpp>

#include "components/kelparsexml/InputGate.h"

namespace KelXML_1_3 {

/// What the parser reads a `KelXInputSource` through: blocks of the stream, as far as the gate lets them pass.
///
/// A refusal ends the input for good, is reported through `KelDiagnostics` and left in `refusal`.
class GatedStream : public xercesc::BinInputStream {
 public:
  GatedStream(std::istream& stream, int maxAttributes, std::shared_ptr<std::string> refusal);

  /// The bytes given out so far.
  [[nodiscard]] XMLFilePos curPos() const override { return fPosition; }
  /// Gives at least one byte before the end. The first call gives whole blocks, however small the pieces are that the
  /// stream delivers: the parser guesses the encoding from them.
  XMLSize_t readBytes(XMLByte* toFill, XMLSize_t maxToRead) override;
  [[nodiscard]] const XMLCh* getContentType() const override { return nullptr; }

 private:
  void Refill();
  void Read();
  void Refuse();
  [[nodiscard]] unsigned char* Bytes() const noexcept { return reinterpret_cast<unsigned char*>(fBuffer.get()); }

  std::istream& fStream;
  InputGate fGate;
  std::shared_ptr<std::string> fRefusal;
  // Allocated as 16-bit units, so that UTF-16 text is read in place. [fNext, fAdmitted) waits for the parser,
  // [fAdmitted, fFilled) for the gate.
  std::unique_ptr<char16_t[]> fBuffer;
  std::size_t fNext = 0;
  std::size_t fAdmitted = 0;
  std::size_t fFilled = 0;
  bool fAtEnd = false;
  XMLFilePos fPosition = 0;
};

}  // namespace KelXML_1_3
