#pragma once

#include <memory>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <xercesc/util/BinInputStream.hpp>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelXInputSource.h"

namespace KelTest {

/// ASCII text as UTF-16 or UTF-32: `unitBytes` is 2 or 4.
inline std::string Widen(std::string_view ascii, int unitBytes, bool isBig, bool withMark) {
  std::string wide;
  const auto put = [&](unsigned high, unsigned low) {
    std::string unit(static_cast<std::size_t>(unitBytes), '\0');
    unit[isBig ? unit.size() - 1 : 0] = static_cast<char>(low);
    unit[isBig ? unit.size() - 2 : 1] = static_cast<char>(high);
    wide += unit;
  };
  if (withMark) put(0xFE, 0xFF);
  for (const char c : ascii) put(0, static_cast<unsigned char>(c));
  return wide;
}

/// A stream buffer that delivers a few bytes at a time.
class PiecewiseBuffer : public std::streambuf {
 public:
  PiecewiseBuffer(std::string text, std::size_t piece) : fText(std::move(text)), fPiece(piece) {}

 protected:
  int_type underflow() override {
    if (fAt == fText.size()) return traits_type::eof();
    const std::size_t count = std::min(fPiece, fText.size() - fAt);
    setg(fText.data() + fAt, fText.data() + fAt, fText.data() + fAt + count);
    fAt += count;
    return traits_type::to_int_type(*gptr());
  }

 private:
  std::string fText;
  std::size_t fPiece;
  std::size_t fAt = 0;
};

/// What a parser gets to read of a document, and why not more.
struct Passed {
  std::string bytes;
  std::string refusal;
};

inline Passed PassThroughGate(std::istream& stream, std::size_t readSize = 48 * 1024) {
  KelCommon_1_3::KelDiagnostics::Clear();
  const KelXML_1_3::KelXInputSource source(stream);
  const std::unique_ptr<xercesc::BinInputStream> input(source.makeStream());
  Passed passed;
  std::string block(readSize, '\0');
  while (const XMLSize_t count = input->readBytes(reinterpret_cast<XMLByte*>(block.data()), readSize)) {
    passed.bytes.append(block, 0, count);
  }
  passed.refusal = source.Refusal();
  return passed;
}

inline Passed PassThroughGate(const std::string& document, std::size_t readSize = 48 * 1024) {
  std::istringstream stream(document);
  return PassThroughGate(stream, readSize);
}

}  // namespace KelTest
