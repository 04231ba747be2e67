#include "components/kelparsexml/GatedStream.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <utility>

#include "scoring/common/KelDiagnostics.h"

namespace KelXML_1_3 {
namespace {
// Twice what the gate holds back at most, and some more than the parser asks for at a time.
constexpr std::size_t kBufferBytes = 2 * InputGate::kMaxHeldBack;
}  // namespace

GatedStream::GatedStream(std::istream& stream, int maxAttributes, std::shared_ptr<std::string> refusal)
    : fStream(stream),
      fGate(maxAttributes),
      fRefusal(std::move(refusal)),
      fBuffer(std::make_unique_for_overwrite<char16_t[]>(kBufferBytes / sizeof(char16_t))) {}

XMLSize_t GatedStream::readBytes(XMLByte* toFill, XMLSize_t maxToRead) {
  if (fNext == fAdmitted) Refill();
  const std::size_t count = std::min<std::size_t>(maxToRead, fAdmitted - fNext);
  std::memcpy(toFill, Bytes() + fNext, count);
  fNext += count;
  fPosition += count;
  return count;
}

// Moves what the gate held back to the front and reads on behind it. Once is enough: a gate that admits nothing of a
// full buffer has refused it.
void GatedStream::Refill() {
  if (fAtEnd) return;
  const std::size_t heldBack = fFilled - fAdmitted;
  std::memmove(Bytes(), Bytes() + fAdmitted, heldBack);
  fFilled = heldBack;
  Read();
  fNext = 0;
  fAdmitted = fGate.Admit(fBuffer.get(), fFilled, fAtEnd);
  if (fGate.Refused()) Refuse();
}

// A stream that is not good gives nothing and keeps its state. The mask of the host's stream may turn its end into an
// exception; the count of characters holds all the same.
void GatedStream::Read() {
  const std::size_t wanted = kBufferBytes - fFilled;
  std::size_t count = 0;
  if (fStream.good()) {
    try {
      fStream.read(reinterpret_cast<char*>(Bytes() + fFilled), static_cast<std::streamsize>(wanted));
    } catch (...) {
    }
    count = static_cast<std::size_t>(fStream.gcount());
  }
  fFilled += count;
  fAtEnd = count < wanted;
}

void GatedStream::Refuse() {
  fAtEnd = true;
  *fRefusal = fGate.Refusal();
  KelCommon_1_3::KelDiagnostics::Report(*fRefusal);
}

}  // namespace KelXML_1_3
