#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <xercesc/util/PlatformUtils.hpp>

#include "tools/kelscore/PmmlDocument.h"

namespace kelscore {
namespace {

using testing::Optional;
using testing::StartsWith;

class PmmlDocumentTest : public testing::Test {
 protected:
  void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
  void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

TEST_F(PmmlDocumentTest, DictionaryAndFirstMiningSchema_GiveDataFields) {
  std::istringstream document(
      "<PMML version='4.0'><DataDictionary><DataField name='\xC3\xA4ge' optype='continuous' dataType='double'/>"
      "<DataField name='plain' optype='categorical'/></DataDictionary>"
      "<MiningModel><MiningSchema><MiningField name='plain' usageType='target'/><MiningField name='derived'/>"
      "</MiningSchema><MiningSchema><MiningField name='plain' usageType='active'/> & broken from here on");
  const DataFields fields = ReadDataFields(document);
  ASSERT_EQ(fields.size(), 2U);
  EXPECT_EQ(fields.at("\xC3\xA4ge").dataType, "double");
  EXPECT_EQ(fields.at("\xC3\xA4ge").usageType, "");
  EXPECT_EQ(fields.at("plain").dataType, "");
  EXPECT_EQ(fields.at("plain").usageType, "target");
}

TEST_F(PmmlDocumentTest, NoDocument_GivesNoDataFields) {
  for (const char* text : {"", "\x01\x02\x03", "<PMML>", "<a/>"}) {
    std::istringstream document(text);
    EXPECT_TRUE(ReadDataFields(document).empty()) << text;
  }
}

TEST_F(PmmlDocumentTest, XmlFault_HasLineAndColumn) {
  const struct {
    const char* text;
    const char* fault;
  } kCases[] = {
      {"<a>\n  <b>\n</a>", "line 3, column "}, {"<a>\n\n", "line 3, column "},
      {"<a/>\n<b/>", "line 2, column "},       {"", "line 1, column "},
      {"no markup", "line 1, column "},
  };
  for (const auto& c : kCases) {
    std::istringstream document(c.text);
    EXPECT_THAT(FindXmlFault(document), Optional(StartsWith(c.fault))) << c.text;
  }
  std::istringstream good("<?xml version='1.0'?><a xmlns='urn:x'><b c='d'/></a>");
  EXPECT_EQ(FindXmlFault(good), std::nullopt);
}

}  // namespace
}  // namespace kelscore
