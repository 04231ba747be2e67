#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "components/kelparsexml/PmmlArray.h"
#include "tests/support/CaseName.h"

namespace {

using KelXML_1_3::ElementTree;
using KelXML_1_3::PmmlError;
using KelXML_1_3::ReadSparseArray;
using KelXML_1_3::SparseArray;

SparseArray Read(const std::string& text) {
  std::istringstream stream(text);
  const auto tree = ElementTree::Read(stream);
  return ReadSparseArray(tree->Root());
}

using Pairs = std::vector<std::pair<std::uint32_t, double>>;

Pairs Entries(const SparseArray& array) {
  Pairs entries;
  for (const SparseArray::Entry& entry : array.entries) entries.emplace_back(entry.place, entry.value);
  return entries;
}

TEST(PmmlSparseArray, IndicesInAnyOrder_GiveAscendingPlacesFromZero) {
  const SparseArray array = Read(
      "<REAL-SparseArray n='7' defaultValue='0.5'><Indices> 7 1\n3 </Indices>"
      "<REAL-Entries>-2 1e3 0.25</REAL-Entries></REAL-SparseArray>");
  EXPECT_EQ(Entries(array), (Pairs{{0, 1000.0}, {2, 0.25}, {6, -2.0}}));
  EXPECT_EQ(array.defaultValue, 0.5);
  EXPECT_EQ(array.length, 7U);
}

TEST(PmmlSparseArray, ArrayWithoutLists_IsDefaultsOnly) {
  const SparseArray array = Read("<INT-SparseArray><Extension/></INT-SparseArray>");
  EXPECT_TRUE(array.entries.empty());
  EXPECT_EQ(array.defaultValue, 0.0);
  EXPECT_FALSE(array.length.has_value());
}

TEST(PmmlSparseArray, ArrayOfIntegers_IsRead) {
  const SparseArray array =
      Read("<INT-SparseArray defaultValue='-1'><Indices>2</Indices><INT-Entries>5</INT-Entries></INT-SparseArray>");
  EXPECT_EQ(Entries(array), (Pairs{{1, 5.0}}));
  EXPECT_EQ(array.defaultValue, -1.0);
}

struct ErrorCase {
  const char* name;
  const char* text;
  const char* reason;
};

class SparseArrayErrorTest : public testing::TestWithParam<ErrorCase> {};

TEST_P(SparseArrayErrorTest, Array_IsRefusedWithAReason) {
  try {
    Read(GetParam().text);
    FAIL() << "not refused";
  } catch (const PmmlError& error) {
    EXPECT_NE(std::string(error.what()).find(GetParam().reason), std::string::npos) << error.what();
  }
}

#define REAL(n, indices, entries) \
  "<REAL-SparseArray " n "><Indices>" indices "</Indices><REAL-Entries>" entries "</REAL-Entries></REAL-SparseArray>"

INSTANTIATE_TEST_SUITE_P(
    Texts, SparseArrayErrorTest,
    testing::Values(ErrorCase{"more_indices", REAL("", "1 2", "5"), "2 indices for 1 values"},
                    ErrorCase{"more_values", REAL("", "", "5"), "0 indices for 1 values"},
                    ErrorCase{"index_zero", REAL("", "0", "5"), "no integer from 1 to 2147483647"},
                    ErrorCase{"index_beyond", REAL("n='3'", "4", "5"), "no integer from 1 to 3"},
                    ErrorCase{"index_in_nothing", REAL("n='0'", "1", "5"), "no integer from 1 to 0"},
                    ErrorCase{"fraction_as_index", REAL("", "1.5", "5"), "no integer from 1"},
                    ErrorCase{"nan_as_index", REAL("", "NaN", "5"), "no integer from 1"},
                    ErrorCase{"huge_index", REAL("", "1e300", "5"), "no integer from 1"},
                    ErrorCase{"index_twice", REAL("", "2 1 2", "5 6 7"), "index 2 stands there twice"},
                    ErrorCase{"text_as_value", REAL("", "1", "x"), "value 1, \"x\", is not a number"},
                    ErrorCase{"negative_length", REAL("n='-1'", "", ""), "is negative"},
                    ErrorCase{"fraction_among_integers",
                              "<INT-SparseArray><Indices>1</Indices><INT-Entries>0.5</INT-Entries></INT-SparseArray>",
                              "is no integer"},
                    ErrorCase{"entries_of_another_type",
                              "<INT-SparseArray><Indices>1</Indices><REAL-Entries>1</REAL-Entries></INT-SparseArray>",
                              "<REAL-Entries> line 1: is not supported"},
                    ErrorCase{"second_list", "<REAL-SparseArray><Indices/><Indices/></REAL-SparseArray>",
                              "is a second one"}),
    KelTest::CaseName());

}  // namespace
