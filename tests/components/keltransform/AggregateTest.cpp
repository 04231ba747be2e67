#include <gtest/gtest.h>
#include <limits>

#include "tests/components/keltransform/TransformTestSupport.h"
#include "tests/support/CaseName.h"
#include "tests/support/XmlPlatform.h"

namespace {

using namespace KelTransformTest;
using KelTest::CaseName;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();
const Value kNull;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The values of a group, as the members of one value.
Value Group(const std::vector<Value>& values) {
  Value group;
  group.MakeMembers();
  for (std::size_t index = 0; index < values.size(); ++index) {
    group[Numbered("m", static_cast<int>(index))] = values[index];
  }
  return group;
}

std::string Aggregate(const std::string& function, const std::string& field) {
  return "<Aggregate function=\"" + function + "\" field=\"" + field + "\"/>";
}

struct GroupCase {
  const char* name;
  const char* function;
  const char* field;
  const char* type;
  Value values;
  const char* expected;
};

void PrintTo(const GroupCase& row, std::ostream* stream) { *stream << row.function << " of " << row.field; }

class AggregateTest : public testing::TestWithParam<GroupCase> {};

TEST_P(AggregateTest, Aggregate_KnownAnswer) {
  const GroupCase& row = GetParam();
  EXPECT_EQ(Show(Evaluate(row.type, Aggregate(row.function, row.field), {{row.field, row.values}})), row.expected);
}

const Value kFour = Group({1.5, 4, kNull, 3.5});

INSTANTIATE_TEST_SUITE_P(
    All, AggregateTest,
    testing::Values(GroupCase{"count", "count", "x", "integer", kFour, "number 3"},
                    GroupCase{"sum", "sum", "x", "double", kFour, "number 9"},
                    GroupCase{"average", "average", "x", "double", kFour, "number 3"},
                    GroupCase{"min", "min", "x", "double", kFour, "number 1.5"},
                    GroupCase{"max", "max", "x", "double", kFour, "number 4"},
                    GroupCase{"in_order", "sum", "x", "double", Group({1e300, 1.0, -1e300}), "number 0"},
                    GroupCase{"one_value", "sum", "x", "double", 2.5, "number 2.5"},
                    GroupCase{"count_of_one_value", "count", "x", "integer", 2.5, "number 1"},
                    GroupCase{"count_of_texts", "count", "s", "integer", Group({"a", kNull, ""}), "number 2"},
                    GroupCase{"count_of_nothing", "count", "x", "integer", kNull, "number 0"},
                    GroupCase{"count_of_no_members", "count", "x", "integer", Group({}), "number 0"},
                    GroupCase{"sum_of_nothing", "sum", "x", "double", kNull, "null"},
                    GroupCase{"average_of_missing_ones", "average", "x", "double", Group({kNull, kNull}), "null"},
                    GroupCase{"an_invalid_one", "max", "x", "double", Group({1, "bad", 3}), "null"},
                    GroupCase{"count_of_an_invalid_one", "count", "x", "integer", Group({1, "bad"}), "null"},
                    GroupCase{"a_group_in_the_group", "sum", "x", "double", Group({1, Group({2})}), "null"},
                    GroupCase{"numbers_in_texts", "sum", "x", "double", Group({"1", " 2.5"}), "number 3.5"},
                    GroupCase{"declared_missing", "min", "marked", "integer", Group({-9, "N/A", 7}), "number 7"},
                    GroupCase{"no_sum", "sum", "x", "double", Group({kInfinity, -kInfinity}), "null"},
                    GroupCase{"sum_of_booleans", "sum", "b", "integer", Group({"true", "false", "true"}), "number 2"},
                    GroupCase{"average_of_integers", "average", "i", "string", Group({1, 2}), "text 1.5"},
                    GroupCase{"sum_of_integers_as_text", "sum", "i", "string", Group({1, 2}), "text 3"},
                    GroupCase{"latest_day", "max", "day", "date", Group({"2004-08-20", "2004-09-01", "1999-01-01"}),
                              "text 2004-09-01"}),
    CaseName());

// Several functions of one field, in calls and further down, in a text of its own and in the dictionary of another one.
TEST(AggregateTest, Aggregate_OfOneFieldInManyPlaces_ReadsItsValuesForEach) {
  const auto call = [](const std::string& left, const std::string& right) {
    return "<Apply function=\"/\">" + left + right + "</Apply>";
  };
  KelTransformation transformation;
  ASSERT_TRUE(
      AddPmml(transformation,
              Pmml(StandardFields(), Derived("mean", "double", call(Aggregate("sum", "x"), Aggregate("count", "x"))) +
                                         Derived("twice", "double", R"(<Apply function="+"><FieldRef field="mean"/>
                                                 <FieldRef field="mean"/></Apply>)") +
                                         Derived("plain", "double", R"(<FieldRef field="x"/>)")))
          .IsOK())
      << KelDiagnostics::Last();
  ASSERT_TRUE(
      AddDictionary(transformation, Derived("range", "double", call(Aggregate("max", "x"), Aggregate("min", "x"))))
          .IsOK())
      << KelDiagnostics::Last();
  const auto results = Compute(transformation, {{"x", kFour}}, {"mean", "twice", "range", "plain"});
  EXPECT_EQ(Show(results[0]), "number 3");
  EXPECT_EQ(Show(results[1]), "number 6");
  EXPECT_EQ(Show(results[2]), "number 2.6666666666666665");
  EXPECT_TRUE(results[3].IsNull());  // a group is no number
}

}  // namespace
