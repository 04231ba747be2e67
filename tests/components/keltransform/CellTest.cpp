#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "components/keltransform/Cell.h"
#include "components/keltransform/DateTime.h"
#include "components/keltransform/FrameStorage.h"
#include "components/keltransform/NumberText.h"
#include "tests/support/CaseName.h"

namespace {

using namespace KelTransformNS;
using KelCommon_1_3::Value;
using KelTest::CaseName;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr Cell::State kMissing = Cell::kMissing;
constexpr Cell::State kInvalid = Cell::kInvalid;
constexpr Cell::State kNumber = Cell::kNumber;

struct ReadCase {
  const char* name;
  DataType type;
  Value value;
  Cell::State state;
  double number = 0.0;
};

void PrintTo(const ReadCase& row, std::ostream* stream) { *stream << row.name; }

class ReadCellTest : public testing::TestWithParam<ReadCase> {};

TEST_P(ReadCellTest, ReadCell_OfValue_GivesStateAndNumber) {
  const TextPool pool;
  const Cell cell = ReadCell(GetParam().value, GetParam().type, pool);
  EXPECT_EQ(cell.state, GetParam().state);
  EXPECT_DOUBLE_EQ(cell.number, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    All, ReadCellTest,
    testing::Values(
        ReadCase{"null", DataType::kDouble, Value(), kMissing},
        ReadCase{"nan", DataType::kDouble, Value(std::nan("")), kMissing},
        ReadCase{"nan_integer", DataType::kInteger, Value(std::nan("")), kMissing},
        ReadCase{"nan_text", DataType::kDouble, Value("NaN"), kMissing},
        ReadCase{"missing_mark", DataType::kDouble, Value(KelCommon_1_3::KelMV::gMissingValue), kMissing},
        ReadCase{"missing_mark_string", DataType::kString, Value(KelCommon_1_3::KelMV::gMissingValue), kMissing},
        ReadCase{"number", DataType::kDouble, Value(2.5), kNumber, 2.5},
        ReadCase{"infinity", DataType::kDouble, Value(kInfinity), kNumber, kInfinity},
        ReadCase{"text_infinity", DataType::kDouble, Value("-INF"), kNumber, -kInfinity},
        ReadCase{"text_with_spaces", DataType::kDouble, Value(" +2.5E1\n"), kNumber, 25},
        ReadCase{"text_with_rest", DataType::kDouble, Value("2.5x"), kInvalid},
        ReadCase{"decimal_comma", DataType::kDouble, Value("2,5"), kInvalid},
        ReadCase{"empty_text", DataType::kDouble, Value(""), kInvalid},
        ReadCase{"float_rounds", DataType::kFloat, Value(0.1), kNumber, static_cast<double>(0.1F)},
        ReadCase{"integer_text", DataType::kInteger, Value("12.0"), kNumber, 12},
        ReadCase{"integer_fraction", DataType::kInteger, Value(12.5), kInvalid},
        ReadCase{"integer_infinity", DataType::kInteger, Value(kInfinity), kInvalid},
        ReadCase{"boolean_true", DataType::kBoolean, Value("true"), kNumber, 1},
        ReadCase{"boolean_one", DataType::kBoolean, Value("1"), kNumber, 1},
        ReadCase{"boolean_capital", DataType::kBoolean, Value("True"), kInvalid},
        ReadCase{"boolean_two", DataType::kBoolean, Value(2), kInvalid},
        ReadCase{"date", DataType::kDate, Value("1970-01-02"), kNumber, 1},
        ReadCase{"date_number", DataType::kDate, Value(-3), kNumber, -3},
        ReadCase{"date_zone_is_dropped", DataType::kDate, Value("1970-01-02+14:00"), kNumber, 1},
        ReadCase{"date_of_moment", DataType::kDate, Value("1970-01-02T23:59:59"), kNumber, 1},
        ReadCase{"date_number_fraction", DataType::kDate, Value(0.5), kInvalid},
        ReadCase{"date_no_leap_year", DataType::kDate, Value("1900-02-29"), kInvalid},
        ReadCase{"date_leap_century", DataType::kDate, Value("2000-02-29"), kNumber, 11016},
        ReadCase{"date_month_13", DataType::kDate, Value("2000-13-01"), kInvalid},
        ReadCase{"date_short", DataType::kDate, Value("2000-1-1"), kInvalid},
        ReadCase{"date_rest", DataType::kDate, Value("2000-01-01x"), kInvalid},
        ReadCase{"date_of_time", DataType::kDate, Value("12:00:00"), kInvalid},
        ReadCase{"date_before_era", DataType::kDateDaysSince0, Value("-0001-12-31"), kNumber, -1},
        ReadCase{"days_since_0", DataType::kDateDaysSince0, Value("0000-01-01"), kNumber, 0},
        ReadCase{"days_since_1960", DataType::kDateDaysSince1960, Value("2003-04-01"), kNumber, 15796},
        ReadCase{"days_since_1970", DataType::kDateDaysSince1970, Value("1970-01-01"), kNumber, 0},
        ReadCase{"days_since_1980", DataType::kDateDaysSince1980, Value("1979-12-31"), kNumber, -1},
        ReadCase{"days_number", DataType::kDateDaysSince1980, Value("77"), kNumber, 77},
        ReadCase{"time", DataType::kTime, Value("05:23:30"), kNumber, 19410},
        ReadCase{"time_fraction", DataType::kTimeSeconds, Value("00:00:01.25Z"), kNumber, 1.25},
        ReadCase{"time_end_of_day", DataType::kTime, Value("24:00:00"), kNumber, 0},
        ReadCase{"time_after_end_of_day", DataType::kTime, Value("24:00:01"), kInvalid},
        ReadCase{"time_minute_60", DataType::kTime, Value("10:60:00"), kInvalid},
        ReadCase{"time_without_seconds", DataType::kTime, Value("10:00"), kInvalid},
        ReadCase{"time_point_without_digits", DataType::kTime, Value("10:00:00."), kInvalid},
        ReadCase{"time_negative_number", DataType::kTime, Value(-1), kInvalid},
        ReadCase{"moment", DataType::kDateTimeSecondsSince1960, Value("1960-01-03T03:30:03"), kNumber, 185403},
        ReadCase{"moment_of_date", DataType::kDateTime, Value("1970-01-02"), kNumber, 86400},
        ReadCase{"moment_zone_west", DataType::kDateTime, Value("1970-01-01T23:00:00-02:00"), kNumber, 90000},
        ReadCase{"moment_zone_east", DataType::kDateTime, Value("1970-01-01T01:00:00+02:30"), kNumber, -5400},
        ReadCase{"moment_bad_zone", DataType::kDateTime, Value("1970-01-01T01:00:00+2"), kInvalid},
        ReadCase{"moment_lacks_time", DataType::kDateTime, Value("1970-01-01T"), kInvalid}),
    CaseName());

TEST(CellTest, ReadCell_TextField_KnowsTheDocumentsTexts) {
  TextPool pool;
  const std::uint32_t half = pool.Intern("0.5");
  const Value known("0.5");
  const Value unknown("0.50");
  EXPECT_EQ(ReadCell(known, DataType::kString, pool).textId, half);
  EXPECT_EQ(ReadCell(known, DataType::kString, pool).text, &known.Text());
  EXPECT_EQ(ReadCell(unknown, DataType::kString, pool).textId, TextPool::kUnknown);
  EXPECT_EQ(*ReadCell(unknown, DataType::kString, pool).text, "0.50");
  EXPECT_EQ(ReadCell(Value(0.5), DataType::kString, pool).textId, half);
  EXPECT_EQ(ReadCell(Value(0.5), DataType::kString, pool).text, nullptr);
}

TEST(CellTest, WriteCell_OfReadCell_GivesTheValueInTheTypesForm) {
  const struct {
    DataType type;
    Value value;
    Value expected;
  } cases[] = {
      {DataType::kDouble, 0.1, 0.1},
      {DataType::kDouble, "abc", Value()},
      {DataType::kDouble, Value(), Value()},
      {DataType::kString, "some text that is too long to lie in the value",
       "some text that is too long to lie in the value"},
      {DataType::kString, -1.5e300, "-1.5e+300"},
      {DataType::kBoolean, 0, "false"},
      {DataType::kBoolean, "1", "true"},
      {DataType::kDate, "-0044-03-15", "-0044-03-15"},
      {DataType::kDate, 1e12, Value()},  // no date that could be written
      {DataType::kTime, "23:59:59.9999999", "23:59:59.999999"},
      {DataType::kTime, "00:00:00.5", "00:00:00.5"},
      {DataType::kDateTime, "2004-08-20T10:00:00.125+02:00", "2004-08-20T08:00:00.125"},
      {DataType::kDateTime, 86399.9999999, "1970-01-02T00:00:00"},
      {DataType::kDateDaysSince1970, "1970-02-01", 31},
      {DataType::kTimeSeconds, "00:01:00", 60},
  };
  const TextPool pool;
  for (const auto& row : cases) {
    Value written("before");
    WriteCell(ReadCell(row.value, row.type, pool), row.type, written);
    EXPECT_EQ(written, row.expected) << DataTypeName(row.type) << ' ' << written.GetString();
  }
}

// A number in a text field is the category that the number's own text names, so both must be written alike.
TEST(CellTest, ShortestText_OfAnyNumber_IsThatOfARecordsNumber) {
  const double numbers[] = {0.0,     1.0,    -1.0,   20.0, 100000.0,  1e15,  123456789012345678.0,
                            1e16,    1e21,   1e300,  0.1,  1.0 / 3,   1e-4,  1e-5,
                            1.5e-5,  9e-6,   5e-324, -2.5, kInfinity, 1e-10, 123.456,
                            9999.99, 2e9 + 1};
  NumberBuffer buffer;
  for (const double number : numbers) EXPECT_EQ(ShortestText(number, buffer), Value(number).GetString());
  EXPECT_EQ(ShortestText(-0.0, buffer), "0");
}

// A calendar that counts day by day, as slowly as it is plain.
TEST(CellTest, Dates_OfEightCenturies_FollowTheCalendar) {
  int year = 1600;
  int month = 1;
  int day = 1;
  MomentBuffer buffer;
  for (double days = -135140; year < 2401; ++days) {
    char text[40];
    std::snprintf(text, sizeof(text), "%04d-%02d-%02d", year, month, day);
    ASSERT_EQ(FormatDate(days, buffer), text);
    ASSERT_EQ(ParseMoment(text)->days, days) << text;
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    const int lengths[] = {31, isLeap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (++day <= lengths[month - 1]) continue;
    day = 1;
    if (++month <= 12) continue;
    month = 1;
    ++year;
  }
}

TEST(CellTest, DataTypes_EveryName_IsReadBack) {
  for (int code = 0; code <= static_cast<int>(DataType::kDateTimeSecondsSince1980); ++code) {
    const auto type = static_cast<DataType>(code);
    DataType read{};
    EXPECT_TRUE(ParseDataType(DataTypeName(type), read)) << DataTypeName(type);
    EXPECT_EQ(read, type);
    EXPECT_TRUE(ParseDataType("xs:" + std::string(DataTypeName(type)), read));
    EXPECT_EQ(read, type);
  }
  DataType untouched = DataType::kTime;
  EXPECT_FALSE(ParseDataType("Double", untouched));
  EXPECT_EQ(untouched, DataType::kTime);
}

TEST(TextPoolTest, Intern_ManyTexts_KeepsNumbersAndAddresses) {
  TextPool pool;
  const std::string* const first = &pool.Text(pool.Intern("0"));
  for (std::uint32_t id = 0; id < 20000; ++id) EXPECT_EQ(pool.Intern(std::to_string(id)), id);
  for (std::uint32_t id = 0; id < 20000; ++id) {
    EXPECT_EQ(pool.Find(std::to_string(id)), id);
    EXPECT_EQ(pool.Text(id), std::to_string(id));
  }
  EXPECT_EQ(pool.Size(), 20000U);
  EXPECT_EQ(&pool.Text(0), first);
  EXPECT_EQ(pool.Find("20000"), TextPool::kUnknown);
  EXPECT_EQ(pool.Find(""), TextPool::kUnknown);
}

TEST(FrameStorageTest, LargeFrames_InsideEachOther_KeepTheirCells) {
  const FrameStorage outer(1000);
  for (const Cell& cell : outer.Cells()) EXPECT_TRUE(cell.IsMissing());
  outer.Cells()[999] = Cell::Number(1);
  for (int round = 0; round < 2; ++round) {
    const FrameStorage inner(5000);
    EXPECT_TRUE(inner.Cells()[4999].IsMissing());
    inner.Cells()[4999] = Cell::Number(2);
    inner.Cells()[999] = Cell::Number(3);
  }
  EXPECT_EQ(outer.Cells()[999].number, 1);
  EXPECT_EQ(FrameStorage(3).Cells().size(), 3U);
}

}  // namespace
