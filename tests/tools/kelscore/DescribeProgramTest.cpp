#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/tools/kelscore/Program.h"

namespace kelscore {
namespace {

using nlohmann::json;
using testing::HasSubstr;

json Names(const json& entries) {
  json names = json::array();
  for (const json& entry : entries) names.push_back(entry["name"]);
  return names;
}

TEST(KelscoreDescribe, TreeAsJson_HasEveryPart) {
  const Outcome run = RunKelscore({"describe", Example("tree/churn.pmml"), "--format", "json"});
  ASSERT_EQ(run.status, 0) << run.err;
  const json description = json::parse(run.out);
  const json& model = description["model"];
  EXPECT_EQ(model["element"], "TreeModel");
  EXPECT_EQ(model["name"], "Churn");
  EXPECT_EQ(model["function"], "classification");
  EXPECT_EQ(model["algorithm"], "drawn by hand");
  EXPECT_EQ(model["pmmlVersion"], "4.0");
  EXPECT_EQ(model["application"], "KelScoring examples");

  EXPECT_EQ(Names(description["inputs"]), json({"tenure", "contract", "charges", "complaints"}));
  EXPECT_EQ(description["inputs"][0], json::parse(R"({"name": "tenure", "label": "Months as a customer",
      "dataType": "integer", "level": "continuous", "range": {"low": 0.0, "high": null}})"));
  EXPECT_EQ(description["inputs"][1], json::parse(R"({"name": "contract", "dataType": "string",
      "level": "categorical", "categoryCount": 2, "categories": [{"value": "monthly", "label": "Ends any month"},
      {"value": "yearly", "label": "Runs for a year"}]})"));

  ASSERT_EQ(Names(description["targets"]), json({"churn"}));
  EXPECT_EQ(description["targets"][0]["level"], "flag");
  EXPECT_EQ(description["targets"][0]["flagTrueValue"], "yes");

  const json outputs = Names(description["outputs"]);
  for (const char* name :
       {"prediction", "probability", "probcategory", "rawpropensity", "adjustedpropensity", "Risk", "Leaf"})
    EXPECT_NE(std::find(outputs.begin(), outputs.end(), name), outputs.end()) << name;
  const json& columns = description["outputs"];
  const auto byCategory =
      std::find_if(columns.begin(), columns.end(), [](const json& output) { return output["name"] == "probcategory"; });
  ASSERT_NE(byCategory, columns.end());
  EXPECT_EQ((*byCategory)["columns"], json({"probcategory.no", "probcategory.yes"}));
  EXPECT_EQ(description["derivedFields"], json({"standing"}));
}

TEST(KelscoreDescribe, RegressionAsText_ReadsAlignedAndWhole) {
  const Outcome run = RunKelscore({"describe", Example("regression/rent.pmml")});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("\nInputs\n"
                                 "  area (Square metres)      double   continuous   0 or more\n"
                                 "  built (Year of building)  integer  continuous\n"
                                 "  district                  string   categorical  Centre, North, South\n"
                                 "  balcony                   string   categorical  no, yes\n"
                                 "  floor                     integer  continuous\n"
                                 "\nTarget\n"
                                 "  rent (Rent per month)  double  continuous\n"
                                 "\nOutputs\n"));
  EXPECT_THAT(run.out, HasSubstr("\nDerived fields\n  base\n  size\n  hasBalcony\n  era\n  demand\n  storey\n"));
}

TEST(KelscoreDescribe, Composites_TellMembersAndMergedFields) {
  const Outcome ensemble =
      RunKelscore({"describe", "--settings", Example("ensemble/ensemble.xml"), "--format", "json"});
  ASSERT_EQ(ensemble.status, 0) << ensemble.err;
  const json members = json::parse(ensemble.out)["members"];
  ASSERT_EQ(members.size(), 2U);
  EXPECT_EQ(members[0]["id"], "tree");
  EXPECT_EQ(members[0]["element"], "TreeModel");
  EXPECT_EQ(members[1]["id"], "logit");
  EXPECT_EQ(members[1]["element"], "RegressionModel");

  const Outcome split =
      RunKelscore({"describe", "--split-field", "town", "--split-member", "Lakeside=" + Example("split/lakeside.pmml"),
                   "--split-member", "Hilltop=" + Example("split/hilltop.pmml"), "--format", "json"});
  ASSERT_EQ(split.status, 0) << split.err;
  const json description = json::parse(split.out);
  EXPECT_EQ(description["splitFields"], json({"town"}));
  EXPECT_EQ(description["members"][1]["key"], json({"Hilltop"}));
  EXPECT_EQ(Names(description["inputs"]), json({"area", "view", "garden"}));
}

}  // namespace
}  // namespace kelscore
