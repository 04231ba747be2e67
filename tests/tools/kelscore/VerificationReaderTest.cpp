#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xercesc/util/PlatformUtils.hpp>

#include "tests/tools/kelscore/Program.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/Verification.h"

namespace kelscore {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class VerificationReaderTest : public testing::Test {
 protected:
  void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
  void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }

  // The document's line 1 ends in front of `inModel`.
  std::optional<Verification> Read(const std::string& inModel) {
    const std::string path = fFolder.Write(
        "model.pmml", "<PMML xmlns:d='urn:d'><DataDictionary/><TreeModel>\n" + inModel + "</TreeModel></PMML>");
    return ReadVerification(path, "TreeModel");
  }

  TestFolder fFolder;
};

constexpr char kFields[] =
    "<VerificationFields><VerificationField field='a'/><VerificationField field='b c' column='d:bc' precision='0.5' "
    "zeroThreshold='1e-3'/></VerificationFields>\n";

TEST_F(VerificationReaderTest, FieldsAndRows_AreReadByLocalNames) {
  const auto verification = Read(std::string("<Node/><ModelVerification recordCount='3' fieldCount='2'>"
                                             "<Extension><row/></Extension>") +
                                 kFields +
                                 "<InlineTable><row><d:a>1</d:a><bc>x&amp;\xC3\xA4</bc></row>\n"
                                 "<row><d:bc> y </d:bc></row>\n<row><a/></row></InlineTable></ModelVerification>");
  ASSERT_TRUE(verification.has_value());
  ASSERT_EQ(verification->fields.size(), 2U);
  EXPECT_EQ(verification->fields[0].field, "a");
  EXPECT_EQ(verification->fields[0].column, "a");
  EXPECT_EQ(verification->fields[0].precision, 1e-6);
  EXPECT_EQ(verification->fields[0].zeroThreshold, 1e-16);
  EXPECT_EQ(verification->fields[1].field, "b c");
  EXPECT_EQ(verification->fields[1].column, "bc");
  EXPECT_EQ(verification->fields[1].precision, 0.5);
  EXPECT_EQ(verification->fields[1].zeroThreshold, 1e-3);
  ASSERT_EQ(verification->rows.size(), 3U);
  EXPECT_THAT(verification->rows[0].cells, ElementsAre("1", "x&\xC3\xA4"));
  EXPECT_THAT(verification->rows[1].cells, ElementsAre(std::nullopt, " y "));
  EXPECT_THAT(verification->rows[2].cells, ElementsAre(std::nullopt, std::nullopt));
  EXPECT_EQ(verification->rows[0].line, 3U);
  EXPECT_EQ(verification->rows[2].line, 5U);
}

// Rows of a segment's model or of another model say nothing about this one.
TEST_F(VerificationReaderTest, RowsOfOtherModels_DontCount) {
  const std::string rows = std::string("<ModelVerification>") + kFields +
                           "<InlineTable><row><a>1</a></row></InlineTable></ModelVerification>";
  EXPECT_EQ(Read("").has_value(), false);
  EXPECT_EQ(Read("<Segmentation><Segment><TreeModel>" + rows + "</TreeModel></Segment></Segmentation>").has_value(),
            false);
  EXPECT_EQ(Read("</TreeModel><TreeModel>" + rows).has_value(), false);
  EXPECT_EQ(Read("</TreeModel><RegressionModel>" + rows + "</RegressionModel><TreeModel>").has_value(), false);
}

struct ContradictionCase {
  const char* attributes;
  const char* content;  // of "ModelVerification"; "@" stands for good fields
  const char* message;
};

const ContradictionCase kContradictions[] = {
    {"", "<InlineTable><row/></InlineTable>", "line 2: ModelVerification has no VerificationField"},
    {"", "@", "line 3: ModelVerification has no row in an InlineTable"},
    {"", "@<InlineTable/>", "ModelVerification has no row in an InlineTable"},
    {"", "@<TableLocator/>", "line 3: a TableLocator names rows that are kept elsewhere"},
    {"recordCount='2'", "@<InlineTable><row/></InlineTable>", "claims a recordCount of \"2\" and has 1 rows"},
    {"recordCount='one'", "@<InlineTable><row/></InlineTable>", "claims a recordCount of \"one\" and has 1 rows"},
    {"fieldCount='3'", "@<InlineTable><row/></InlineTable>", "claims a fieldCount of \"3\" and has 2 fields"},
    {"", "<VerificationFields><VerificationField column='a'/></VerificationFields>", "VerificationField has no field"},
    {"", "<VerificationFields><VerificationField field='a'/>\n<VerificationField field='a' column='b'/>",
     "line 3: VerificationField \"a\" stands twice"},
    {"", "<VerificationFields><VerificationField field='a'/><VerificationField field='b' column='x:a'/>",
     "two fields have the column \"a\""},
    {"", "<VerificationFields><VerificationField field='a' precision='-1'/>", "precision \"-1\" is no such number"},
    {"", "<VerificationFields><VerificationField field='a' precision='some'/>", "precision \"some\" is no such number"},
    {"", "<VerificationFields><VerificationField field='a' zeroThreshold='NaN'/>",
     "zeroThreshold \"NaN\" is no such number"},
    {"", "@<InlineTable><row><a>1</a>\n<x>2</x></row>", "line 4: no VerificationField has the column \"x\""},
    {"", "@<InlineTable><row><a>1</a><a>2</a></row>", "line 3: column \"a\" stands twice in a row"},
    {"", "@<InlineTable><row><a><b/></a></row>", "column \"a\" holds an element, not a value"},
    {"", "@<InlineTable><row/></InlineTable></ModelVerification><ModelVerification>", "a second ModelVerification"},
    {"", "@<InlineTable><row></InlineTable>", "line 3, column "},  // not well-formed
};

TEST_F(VerificationReaderTest, Contradictions_AreToldWithFileAndLine) {
  for (const ContradictionCase& c : kContradictions) {
    SCOPED_TRACE(c.message);
    std::string content = c.content;
    if (content[0] == '@') content.replace(0, 1, kFields);
    try {
      Read(std::string("<ModelVerification ") + c.attributes + ">" + content + "</ModelVerification>");
      ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Status(), kInputOutputFailed);
      EXPECT_THAT(failure.Message(), StartsWith(fFolder.PathOf("model.pmml") + ": line "));
      EXPECT_THAT(failure.Message(), HasSubstr(c.message));
    }
  }
}

}  // namespace
}  // namespace kelscore
