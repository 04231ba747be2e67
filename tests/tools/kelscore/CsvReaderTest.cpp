#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/kelscore/TextSource.h"
#include "tools/kelscore/CsvReader.h"
#include "tools/kelscore/Failure.h"

namespace kelscore {
namespace {

using testing::HasSubstr;
using Table = std::vector<std::vector<std::string>>;

std::vector<std::string> Fields(const RowView& row) {
  std::vector<std::string> fields;
  for (std::size_t i = 0; i < row.FieldCount(); ++i) fields.emplace_back(row.Field(i));
  return fields;
}

/// Header and rows; `lines` gets the line in which each row starts.
Table ReadAll(CsvReader& reader, std::vector<std::uint64_t>& lines) {
  Table table{reader.ReadHeader()};
  RowBatch batch;
  while (reader.Read(batch)) {
    for (std::size_t i = 0; i < batch.RowCount(); ++i) {
      table.push_back(Fields(batch.Row(i)));
      lines.push_back(batch.LineOf(i));
    }
  }
  return table;
}

struct TableCase {
  const char* name;
  std::string text;
  Table expected;
  std::vector<std::uint64_t> lines;
  char delimiter = ',';
};

const TableCase kTableCases[] = {
    {"plain", "a,b\n1,2\n3,4\n", {{"a", "b"}, {"1", "2"}, {"3", "4"}}, {2, 3}},
    {"no line break at the end", "a,b\n1,2", {{"a", "b"}, {"1", "2"}}, {2}},
    {"trailing delimiter at the end", "a,b\n1,", {{"a", "b"}, {"1", ""}}, {2}},
    {"CRLF", "a,b\r\n1,2\r\n3,4\r\n", {{"a", "b"}, {"1", "2"}, {"3", "4"}}, {2, 3}},
    {"CR alone", "a,b\r1,2\r3,4\r", {{"a", "b"}, {"1", "2"}, {"3", "4"}}, {2, 3}},
    {"blank lines are no rows, and count as lines", "a\n\n\n1\n\n2\n", {{"a"}, {"1"}, {"2"}}, {4, 6}},
    {"blank lines with CRLF", "a\r\n\r\n1\r\n", {{"a"}, {"1"}}, {3}},
    {"an empty field in quotes is a row", "a\n\"\"\n1\n", {{"a"}, {""}, {"1"}}, {2, 3}},
    {"byte order mark",
     "\xEF\xBB\xBF"
     "a,b\n1,2\n",
     {{"a", "b"}, {"1", "2"}},
     {2}},
    {"byte order mark before a quote", "\xEF\xBB\xBF\"a\",b\n1,2\n", {{"a", "b"}, {"1", "2"}}, {2}},
    {"blanks belong to fields", " a , b\n 1 ,\t2 \n", {{" a ", " b"}, {" 1 ", "\t2 "}}, {2}},
    {"delimiter, quote and line breaks in quotes",
     "a,b\n\"1,2\",\"say \"\"hi\"\"\"\n\"x\ny\r\nz\",3\n4,5\n",
     {{"a", "b"}, {"1,2", "say \"hi\""}, {"x\ny\r\nz", "3"}, {"4", "5"}},
     {2, 3, 6}},
    {"quoted header", "\"a\nb\",c\n1,2\n", {{"a\nb", "c"}, {"1", "2"}}, {3}},
    {"other delimiter", "a;b\n1,5;2\n", {{"a", "b"}, {"1,5", "2"}}, {2}, ';'},
    {"ragged rows come as they are", "a,b\n1\n1,2,3\n", {{"a", "b"}, {"1"}, {"1", "2", "3"}}, {2, 3}},
    {"header only", "a,b\n", {{"a", "b"}}, {}},
    {"header without line break", "a,b", {{"a", "b"}}, {}},
    {"several columns without a name", ",a,\n1,2,3\n", {{"", "a", ""}, {"1", "2", "3"}}, {2}},
    {"a zero byte is a byte", std::string("a\n1\0002\n", 6), {{"a"}, {std::string("1\0002", 3)}}, {2}},
};

TEST(CsvReader, AnyTable_GivesTheSameRowsHoweverItIsCut) {
  for (const TableCase& c : kTableCases) {
    for (const std::size_t pieceSize : {std::size_t{1}, std::size_t{2}, std::size_t{5}, std::string::npos}) {
      SCOPED_TRACE(std::string(c.name) + ", pieces of " + std::to_string(pieceSize));
      TextSource source(c.text, pieceSize);
      CsvReader reader(source, c.delimiter);
      std::vector<std::uint64_t> lines;
      EXPECT_EQ(ReadAll(reader, lines), c.expected);
      EXPECT_EQ(lines, c.lines);
    }
  }
}

struct FaultCase {
  const char* name;
  std::string text;
  std::size_t goodRows;
  const char* message;
};

const FaultCase kFaultCases[] = {
    {"empty", "", 0, "data.csv: is empty"},
    {"only blank lines", "\n\r\n\n", 0, "data.csv: is empty"},
    {"duplicate name", "a,b,a\n1,2,3\n", 0, "column \"a\" stands twice"},
    {"UTF-16",
     "\xFF\xFE"
     "a",
     0, "UTF-16"},
    {"quote inside a field", "a,b\n1,2\n3,5\"\n", 1, "starts in line 3 has a stray quote"},
    {"text behind a closing quote", "a,b\n\"1\"x,2\n", 0, "starts in line 2 has a stray quote"},
    {"blank behind a closing quote", "a,b\n1,2\n1,2\n\"1\" ,2\n", 2, "starts in line 4 has a stray quote"},
    {"open quote", "a,b\n1,2\n3,\"4\n5,6\n", 1, "starts in line 3 has a quote that is never closed"},
};

TEST(CsvReader, BrokenTable_GivesTheRowsBeforeAndNamesTheLine) {
  for (const FaultCase& c : kFaultCases) {
    SCOPED_TRACE(c.name);
    TextSource source(c.text);
    CsvReader reader(source, ',');
    std::size_t rows = 0;
    try {
      reader.ReadHeader();
      RowBatch batch;
      while (reader.Read(batch)) rows += batch.RowCount();
      ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
      EXPECT_THAT(failure.Message(), HasSubstr(c.message));
      EXPECT_EQ(failure.Status(), kInputOutputFailed);
    }
    EXPECT_EQ(rows, c.goodRows);
  }
}

/// An endless field after a short header.
class EndlessSource : public ByteSource {
 public:
  explicit EndlessSource(char filler) : fFiller(filler) {}
  std::size_t Read(char* buffer, std::size_t size) override {
    std::fill_n(buffer, size, fFiller);
    if (fFirst) std::copy_n("a\n\"", 3, buffer);
    fFirst = false;
    return size;
  }
  [[nodiscard]] const std::string& Name() const override { return fName; }

 private:
  std::string fName = "endless";
  char fFiller;
  bool fFirst = true;
};

TEST(CsvReader, EndlessRow_FailsInBoundedMemory) {
  for (const char filler : {'x', '\n', ','}) {
    EndlessSource source(filler);
    CsvReader reader(source, ',');
    reader.ReadHeader();
    RowBatch batch;
    EXPECT_THROW(reader.Read(batch), Failure);
    EXPECT_LT(reader.BytesRead(), 2 * CsvReader::kMaxRowBytes);
  }
}

TEST(CsvReader, ManyBatches_NumberRowsThroughAndKeepLines) {
  std::string text = "a,b\n";
  constexpr std::uint64_t kRows = 50'000;
  for (std::uint64_t i = 1; i <= kRows; ++i) text += std::to_string(i) + (i % 100 == 0 ? ",\"x\ny\"\n" : ",plain\n");
  TextSource source(text, 4096);
  CsvReader reader(source, ',');
  RowBatch batch;
  std::uint64_t rows = 0;
  int batches = 0;
  for (; reader.Read(batch); ++batches) {
    ASSERT_EQ(batch.FirstRowNumber(), rows + 1);
    for (std::size_t i = 0; i < batch.RowCount(); ++i) {
      ++rows;
      ASSERT_EQ(batch.Row(i).Field(0), std::to_string(rows));
      ASSERT_EQ(batch.LineOf(i), 1 + rows + (rows - 1) / 100);
      ASSERT_EQ(batch.IsPlain(i), rows % 100 != 0);
    }
  }
  EXPECT_EQ(rows, kRows);
  EXPECT_GT(batches, 3);
  EXPECT_EQ(reader.BytesRead(), text.size());
}

}  // namespace
}  // namespace kelscore
