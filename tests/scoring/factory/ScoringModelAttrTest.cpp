#include <gtest/gtest.h>
#include <memory>

#include "scoring/factory/ScoringModelAttr.h"

namespace KelScoring_20 {
namespace {

std::string FirstWord(std::istream& stream) {
  std::string word;
  stream >> word;
  return word;
}

TEST(ScoringModelAttr, FreshRecord_HoldsNothingAndNamesUtf8) {
  const ScoringModelAttr attr;
  EXPECT_EQ(attr.type, KelScoringConst::UnknownModel);
  EXPECT_EQ(attr.GetEncoding(), "UTF-8");
  EXPECT_EQ(attr.GetVersion() + attr.GetModelTypeName() + attr.GetAlgorithmName() + attr.GetMultipleModelMethod() +
                attr.GetModelID() + attr.GetApplicationName() + attr.GetApplicationVersion() + attr.modelName +
                attr.functionName,
            "");
  EXPECT_TRUE(attr.predictedFields.empty() && attr.activeFields.empty() && attr.derivedFields.empty());
  EXPECT_FALSE(attr.hasTransformations);
  EXPECT_EQ(attr.dictionaryStream, nullptr);
  EXPECT_EQ(attr.propensityStream, nullptr);
}

TEST(ScoringModelAttr, Assignment_CopiesEveryField) {
  ScoringModelAttr source;
  source.type = KelScoringConst::TreeModel;
  source.encoding = "encoding";
  source.version = "version";
  source.modelType = "modelType";
  source.modelName = "modelName";
  source.functionName = "functionName";
  source.algorithmName = "algorithmName";
  source.predictedFields = {"predicted"};
  source.activeFields = {"active"};
  source.derivedFields = {"derived"};
  source.hasTransformations = true;
  source.multipleModelMethod = "method";
  source.modelID = "id";
  source.SetApplicationName("name");
  source.SetApplicationVersion("7");

  ScoringModelAttr target;
  target = source;
  EXPECT_EQ(target.type, KelScoringConst::TreeModel);
  EXPECT_EQ(target.GetEncoding(), "encoding");
  EXPECT_EQ(target.GetVersion(), "version");
  EXPECT_EQ(target.GetModelTypeName(), "modelType");
  EXPECT_EQ(target.modelName, "modelName");
  EXPECT_EQ(target.functionName, "functionName");
  EXPECT_EQ(target.GetAlgorithmName(), "algorithmName");
  EXPECT_EQ(target.predictedFields, source.predictedFields);
  EXPECT_EQ(target.activeFields, source.activeFields);
  EXPECT_EQ(target.derivedFields, source.derivedFields);
  EXPECT_TRUE(target.hasTransformations);
  EXPECT_EQ(target.GetMultipleModelMethod(), "method");
  EXPECT_EQ(target.GetModelID(), "id");
  EXPECT_EQ(target.GetApplicationName(), "name");
  EXPECT_EQ(target.GetApplicationVersion(), "7");
}

TEST(ScoringModelAttr, Assignment_StreamsReadFromTheStartWhateverWasReadBefore) {
  ScoringModelAttr source;
  source.documentStream << "new text";
  FirstWord(source.documentStream);
  FirstWord(source.documentStream);
  ASSERT_TRUE(source.documentStream.eof());
  ScoringModelAttr target;
  target.documentStream << "an older and longer text";
  target.documentStream.setstate(std::ios::failbit);
  target = source;
  EXPECT_EQ(target.documentStream.str(), "new text");
  EXPECT_EQ(FirstWord(target.documentStream), "new");
  EXPECT_TRUE(source.documentStream.eof());
}

TEST(ScoringModelAttr, Assignment_OwnedStreamsAreTheTargetsOwn) {
  auto source = std::make_unique<ScoringModelAttr>();
  source->propensityStream = new std::stringstream("propensity");
  source->dictionaryStream = new std::stringstream("dictionary");
  ScoringModelAttr target;
  target.dictionaryStream = new std::stringstream("old");
  const std::stringstream* const kept = target.dictionaryStream;
  target = *source;
  EXPECT_EQ(target.dictionaryStream, kept);
  EXPECT_NE(target.propensityStream, source->propensityStream);
  source.reset();
  ASSERT_NE(target.propensityStream, nullptr);
  EXPECT_EQ(FirstWord(*target.propensityStream), "propensity");
  EXPECT_EQ(FirstWord(*target.dictionaryStream), "dictionary");

  const ScoringModelAttr& itself = target;
  target = itself;
  EXPECT_EQ(target.propensityStream->str(), "propensity");
  target = ScoringModelAttr();
  EXPECT_EQ(target.propensityStream, nullptr);
  EXPECT_EQ(target.dictionaryStream, nullptr);
}

}  // namespace
}  // namespace KelScoring_20
