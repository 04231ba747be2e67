#include <gtest/gtest.h>
#include <istream>
#include <random>
#include <stdexcept>
#include <string>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelXInputSource.h"
#include "tests/components/kelparsexml/SourceText.h"
#include "tests/support/CaseName.h"
#include "tests/support/TreeDocument.h"
#include "tests/support/XmlPlatform.h"

namespace {

using KelCommon_1_3::KelDiagnostics;
using KelTest::Passed;
using KelTest::PassThroughGate;
using KelTest::Widen;
using KelXML_1_3::KelXInputSource;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();

constexpr auto kOther = "its encoding is not UTF-8, UTF-16, US-ASCII, ISO-8859-x or windows-125x";
constexpr auto kContradicts = "the document's bytes are in another encoding";

std::string Declared(const std::string& encoding) {
  return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n<a/>\n";
}

struct EncodingCase {
  const char* name;
  std::string document;
  const char* refusal;  // null if the document passes
};

class EncodingTest : public testing::TestWithParam<EncodingCase> {};

TEST_P(EncodingTest, Document_PassesWholeOrNotAtAll) {
  const Passed passed = PassThroughGate(GetParam().document);
  if (GetParam().refusal == nullptr) {
    EXPECT_EQ(passed.bytes, GetParam().document);
    EXPECT_EQ(passed.refusal, "");
  } else {
    EXPECT_EQ(passed.bytes, "");
    EXPECT_EQ(passed.refusal.find("line 1: "), 0U);
    EXPECT_NE(passed.refusal.find(GetParam().refusal), std::string::npos) << passed.refusal;
    EXPECT_EQ(KelDiagnostics::Last(), passed.refusal);
  }
}

using namespace std::string_literals;

INSTANTIATE_TEST_SUITE_P(
    Encodings, EncodingTest,
    testing::Values(
        EncodingCase{"none_declared", "<?xml version='1.0'?><a/>", nullptr},
        EncodingCase{"mark_of_utf8", "\xEF\xBB\xBF" + Declared("UTF-8"), nullptr},
        EncodingCase{"utf8_lower_case", Declared("utf-8"), nullptr},
        EncodingCase{"us_ascii", Declared("US-ASCII"), nullptr}, EncodingCase{"latin", Declared("ISO-8859-1"), nullptr},
        EncodingCase{"latin9", Declared("iso-8859-15"), nullptr},
        EncodingCase{"windows", Declared("windows-1252"), nullptr},
        EncodingCase{"windows_code_page", Declared("CP1250"), nullptr},
        EncodingCase{"not_a_declaration", "<?xmlish encoding=\"UTF-32\"?><a/>", nullptr},
        EncodingCase{"not_the_first", " <?xml encoding=\"UTF-32\"?><a/>", nullptr},  // the parser objects
        // UTF-8 that calls itself UTF-16, as texts do that were converted on their way; the parser accepts it too.
        EncodingCase{"bytes_as_utf16", Declared("UTF-16"), nullptr},
        EncodingCase{"utf16_little", Widen("<a/>", 2, false, true), nullptr},
        EncodingCase{"utf16_big", Widen("<a/>", 2, true, true), nullptr},
        EncodingCase{"utf16_little_declared", Widen(Declared("UTF-16"), 2, false, false), nullptr},
        EncodingCase{"utf16_big_declared", Widen(Declared("UTF-16BE"), 2, true, false), nullptr},
        EncodingCase{"utf16_odd_byte", Widen("<a/>", 2, true, true) + "x", nullptr},
        EncodingCase{"utf16_undeclared", Widen("<a/>", 2, false, false), kOther},
        EncodingCase{"utf16_of_other_order", Widen(Declared("UTF-16LE"), 2, true, true), kContradicts},
        EncodingCase{"utf16_as_bytes", Widen(Declared("UTF-8"), 2, true, true), kContradicts},
        EncodingCase{"bytes_as_utf16_little", Declared("UTF-16LE"), kContradicts},
        EncodingCase{"utf32_little", Widen("<a/>", 4, false, true), kOther},
        EncodingCase{"utf32_big", Widen("<a/>", 4, true, true), kOther},
        EncodingCase{"ucs4_little", Widen(Declared("UTF-8"), 4, false, false), kOther},
        EncodingCase{"ucs4_big", Widen(Declared("UTF-8"), 4, true, false), kOther},
        EncodingCase{"ucs4_odd_order", "\0<\0\0\0?\0\0"s, kOther},
        EncodingCase{"ebcdic", "\x4C\x6F\xA7\x94\x93\x40", kOther}, EncodingCase{"utf7", Declared("UTF-7"), kOther},
        EncodingCase{"shift_jis", Declared("Shift_JIS"), kOther},
        EncodingCase{"ebcdic_declared", Declared("IBM1140"), kOther},
        EncodingCase{"ucs2_declared", Declared("ISO-10646-UCS-2"), kOther},
        EncodingCase{"latin_with_option", Declared("ISO-8859-1,swaplfnl"), kOther},
        EncodingCase{"second_encoding", "<?xml version='1.0' encoding='UTF-8' encoding='UTF-7'?><a/>", kOther},
        EncodingCase{"quoted_end", "<?xml version='1.0' encoding='?>'?><a/>", "the XML declaration is malformed"},
        EncodingCase{"no_blank", "<?xml version='1.0'encoding='UTF-8'?><a/>", "the XML declaration is malformed"},
        EncodingCase{"endless", "<?xml " + std::string(200'000, ' '), "the XML declaration is too long"}),
    KelTest::CaseName());

// Documents across the places where blocks of the stream end, with every split of a declaration and of other markup.
TEST(KelXInputSourceTest, ConstructsAcrossBlocks_PassOrBlankAsElsewhere) {
  constexpr std::size_t kBlock = 64 * 1024;
  const std::string type = "<!DOCTYPE PMML\nSYSTEM \"x\" >";
  const std::string blanked = "              \n            ";
  const std::string rest = "<PMML><![CDATA[>]]><!-- <a> --><b c='/'/></PMML>";
  for (std::size_t before = kBlock - type.size() - rest.size(); before <= kBlock; ++before) {
    const std::string blanks(before, ' ');
    const Passed passed = PassThroughGate(blanks + type + rest + blanks + blanks);
    ASSERT_EQ(passed.bytes, blanks + blanked + rest + blanks + blanks) << before;
    ASSERT_EQ(passed.refusal, "");
  }
}

TEST(KelXInputSourceTest, AnyPieces_SameBytes) {
  const std::string body = KelTest::TreeDocument(150'000).Text();
  const std::string document = "<!DOCTYPE a SYSTEM 'b'>" + body.substr(body.find('\n'));
  const std::string expected = std::string(23, ' ') + body.substr(body.find('\n'));
  for (const std::size_t piece : {1, 2, 3, 7, 100'000}) {
    for (const std::size_t readSize : {1, 5, 1000, 48 * 1024}) {
      KelTest::PiecewiseBuffer buffer(document, piece);
      std::istream stream(&buffer);
      EXPECT_TRUE(PassThroughGate(stream, readSize).bytes == expected) << piece << ", " << readSize;
    }
  }
}

TEST(KelXInputSourceTest, BytesBeforeAndPosition_Count) {
  std::istringstream stream("skipped<a/>");
  stream.ignore(7);
  const KelXInputSource source(stream);
  const std::unique_ptr<xercesc::BinInputStream> input(source.makeStream());
  XMLByte bytes[3];
  EXPECT_EQ(input->curPos(), 0U);
  ASSERT_EQ(input->readBytes(bytes, 3), 3U);
  EXPECT_EQ(std::string(bytes, bytes + 3), "<a/");
  EXPECT_EQ(input->curPos(), 3U);
  ASSERT_EQ(input->readBytes(bytes, 3), 1U);
  EXPECT_EQ(input->curPos(), 4U);
  EXPECT_EQ(input->readBytes(bytes, 3), 0U);
  EXPECT_EQ(input->curPos(), 4U);
}

TEST(KelXInputSourceTest, Refusal_NamesLineAndEndsInput) {
  KelDiagnostics::Clear();
  const Passed passed = PassThroughGate("\xEF\xBB\xBF<?xml version='1.0'?>\n\r\n<!DOCTYPE a\n[ <!ENTITY b 'c'> ]><a/>");
  EXPECT_EQ(passed.bytes, "\xEF\xBB\xBF<?xml version='1.0'?>\n\r\n");
  EXPECT_EQ(passed.refusal, "line 3: a document type declaration with an internal subset is not accepted");
  EXPECT_EQ(KelDiagnostics::Last(), passed.refusal);
}

TEST(KelXInputSourceTest, HonestDocument_LeavesEarlierReason) {
  std::istringstream stream("<a/>");
  KelDiagnostics::Report("earlier");
  const KelXInputSource source(stream);
  const std::unique_ptr<xercesc::BinInputStream> input(source.makeStream());
  XMLByte bytes[10];
  EXPECT_EQ(input->readBytes(bytes, 10), 4U);
  EXPECT_EQ(source.Refusal(), "");
  EXPECT_EQ(KelDiagnostics::Last(), "earlier");
}

TEST(KelXInputSourceTest, EncodingSetBySomeone_HasNoEffect) {
  std::istringstream stream("<a/>");
  KelXInputSource source(stream);
  source.setEncoding(u"UTF-32");
  EXPECT_EQ(source.getEncoding(), nullptr);
}

// One byte 'x' of a value, so many times, without a text of that size.
class LongAttribute : public std::streambuf {
 public:
  explicit LongAttribute(std::size_t bytes) : fLeft(bytes), fChunk(1 << 16, 'x') {}

 protected:
  int_type underflow() override {
    if (fParts == 0) return Give("<a b=\"", 1);
    if (fLeft > 0) return Give(fChunk.substr(0, std::min(fLeft, fChunk.size())), 1);
    return fParts == 1 ? Give("\"/>", 2) : traits_type::eof();
  }

 private:
  int_type Give(const std::string& text, int parts) {
    if (fParts == 1 && parts == 1) fLeft -= text.size();
    fParts = parts;
    fGiven = text;
    setg(fGiven.data(), fGiven.data(), fGiven.data() + fGiven.size());
    return traits_type::to_int_type(fGiven[0]);
  }

  std::size_t fLeft;
  std::string fChunk;
  std::string fGiven;
  int fParts = 0;
};

TEST(KelXInputSourceTest, LongAttribute_PassesUpTo64MiBOfTag) {
  constexpr std::size_t kAround = sizeof("<a b=\"\"/") - 1;  // the tag up to its '>'
  constexpr std::size_t kMost = (std::size_t{64} << 20) - kAround;
  struct {
    std::size_t length;
    bool passes;
  } const kCases[] = {{50'000'000, true}, {kMost, true}, {kMost + 1, false}, {70'000'000, false}};
  for (const auto& row : kCases) {
    LongAttribute buffer(row.length);
    std::istream stream(&buffer);
    const Passed passed = PassThroughGate(stream);
    EXPECT_EQ(passed.refusal, row.passes ? "" : "line 1: a tag is longer than 64 MiB");
    EXPECT_EQ(passed.bytes.ends_with("\"/>"), row.passes) << row.length;
    EXPECT_LE(passed.bytes.size(), row.length + kAround + 1);
  }
}

class ThrowingBuffer : public std::streambuf {
 protected:
  int_type underflow() override { throw std::runtime_error("the device is gone"); }
};

TEST(KelXInputSourceTest, StreamWithExceptionMask_NothingIsThrown) {
  std::istringstream text("<a/>");
  text.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
  EXPECT_EQ(PassThroughGate(text).bytes, "<a/>");

  ThrowingBuffer buffer;
  for (const auto mask : {std::ios::goodbit, std::ios::badbit}) {
    std::istream broken(&buffer);
    broken.exceptions(mask);
    EXPECT_EQ(PassThroughGate(broken).bytes, "");
    EXPECT_TRUE(broken.bad());
  }
}

TEST(KelXInputSourceTest, StreamThatIsNotGood_GivesNothingAndKeepsState) {
  for (const auto state : {std::ios::badbit, std::ios::failbit, std::ios::eofbit}) {
    std::istringstream stream("<a/>");
    stream.setstate(state);
    EXPECT_EQ(PassThroughGate(stream).bytes, "");
    EXPECT_EQ(stream.rdstate(), state);
  }
}

}  // namespace
