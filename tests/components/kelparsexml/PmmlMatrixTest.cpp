#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "components/kelparsexml/PmmlMatrix.h"
#include "tests/support/CaseName.h"

namespace {

using KelXML_1_3::ElementTree;
using KelXML_1_3::PmmlError;
using KelXML_1_3::PmmlMatrix;

PmmlMatrix Read(const std::string& attributes, const std::string& content) {
  std::istringstream stream("<Matrix " + attributes + ">" + content + "</Matrix>");
  const auto tree = ElementTree::Read(stream);
  return KelXML_1_3::ReadMatrix(tree->Root());
}

std::vector<std::vector<double>> Rows(const PmmlMatrix& matrix) {
  std::vector<std::vector<double>> rows(matrix.Rows());
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (std::size_t column = 0; column < matrix.Columns(); ++column) rows[row].push_back(matrix.At(row, column));
  }
  return rows;
}

struct MatrixCase {
  const char* name;
  const char* attributes;
  const char* content;
  std::vector<std::vector<double>> rows;
};

class MatrixTest : public testing::TestWithParam<MatrixCase> {};

TEST_P(MatrixTest, Element_GivesCells) {
  EXPECT_EQ(Rows(Read(GetParam().attributes, GetParam().content)), GetParam().rows);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, MatrixTest,
    testing::Values(
        MatrixCase{"rows",
                   "",
                   "<Extension/><Array type='real'>1 2 3</Array><X-note/><Array n='3'>4 5 -6e1</Array>",
                   {{1, 2, 3}, {4, 5, -60}}},
        MatrixCase{"one_column", "nbRows='2' nbCols='1'", "<Array>0.5</Array><Array>-0.5</Array>", {{0.5}, {-0.5}}},
        MatrixCase{"diagonal",
                   "kind='diagonal' offDiagDefault='0.5' diagDefault='9'",
                   "<Array>1 2 3</Array>",
                   {{1, 0.5, 0.5}, {0.5, 2, 0.5}, {0.5, 0.5, 3}}},
        MatrixCase{"diagonal_without_default", "kind='diagonal' nbRows='2'", "<Array>1 2</Array>", {{1, 0}, {0, 2}}},
        MatrixCase{"symmetric",
                   "kind='symmetric' nbRows='3' nbCols='3'",
                   "<Array>1</Array><Array>2 3</Array><Array>4 5 6</Array>",
                   {{1, 2, 4}, {2, 3, 5}, {4, 5, 6}}},
        MatrixCase{"cells",
                   "nbRows='2' nbCols='3' diagDefault='1' offDiagDefault='0.25'",
                   "<MatCell row='2' col='3'> 7 </MatCell><MatCell row='1' col='1'>-1</MatCell>",
                   {{-1, 0.25, 0.25}, {0.25, 1, 7}}},
        MatrixCase{"cells_tell_the_size",
                   "",
                   "<MatCell row='2' col='1'>7</MatCell><MatCell row='1' col='3'>8</MatCell>",
                   {{0, 0, 8}, {7, 0, 0}}},
        MatrixCase{"cells_tell_the_rows", "nbCols='2'", "<MatCell row='1' col='1'>7</MatCell>", {{7, 0}}},
        MatrixCase{"defaults_only", "kind='diagonal' nbRows='2' nbCols='2' diagDefault='3'", "", {{3, 0}, {0, 3}}}),
    KelTest::CaseName());

struct RefusalCase {
  const char* name;
  const char* attributes;
  const char* content;
  const char* reason;
};

class MatrixRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(MatrixRefusal, Element_IsRefusedWithAReason) {
  try {
    (void)Read(GetParam().attributes, GetParam().content);
    FAIL() << "no error";
  } catch (const PmmlError& error) {
    EXPECT_NE(std::string(error.what()).find(GetParam().reason), std::string::npos) << error.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Elements, MatrixRefusal,
    testing::Values(
        RefusalCase{"kind", "kind='square'", "<Array>1</Array>", "kind=\"square\""},
        RefusalCase{"nothing", "", "", "has no numbers"}, RefusalCase{"rows_only", "nbRows='2'", "", "has no numbers"},
        RefusalCase{"unknown_element", "", "<Cell/>", "<Cell> line 1"},
        RefusalCase{"arrays_and_cells", "", "<Array>1</Array><MatCell row='1' col='1'>1</MatCell>", "both"},
        RefusalCase{"uneven_rows", "", "<Array>1 2</Array><Array>1</Array>", "1 numbers where the matrix needs 2"},
        RefusalCase{"empty_row", "", "<Array/>", "is empty"},
        RefusalCase{"other_columns", "nbCols='3'", "<Array>1 2</Array>", "2 numbers where the matrix needs 3"},
        RefusalCase{"other_rows", "nbRows='2'", "<Array>1 2</Array>", "nbRows=\"2\""},
        RefusalCase{"no_rows", "nbRows='0'", "<Array>1 2</Array>", "nbRows=\"0\""},
        RefusalCase{"infinity", "", "<Array>1 INF</Array>", "isn't finite"},
        RefusalCase{"infinite_default", "nbRows='1' nbCols='1' diagDefault='INF'", "", "diagDefault=\"INF\""},
        RefusalCase{"second_diagonal", "kind='diagonal'", "<Array>1</Array><Array>1</Array>", "second array"},
        RefusalCase{"long_diagonal", "kind='diagonal' nbCols='3'", "<Array>1 2</Array>", "nbCols=\"3\""},
        RefusalCase{"cells_of_diagonal", "kind='diagonal'", "<MatCell row='1' col='1'>1</MatCell>", "not in <MatCell>"},
        RefusalCase{"no_square", "kind='symmetric' nbRows='2' nbCols='3'", "", "is a square"},
        RefusalCase{"full_rows_of_symmetric", "kind='symmetric'", "<Array>1 2</Array><Array>2 1</Array>",
                    "2 numbers where the matrix needs 1"},
        RefusalCase{"row_zero", "", "<MatCell row='0' col='1'>1</MatCell>", "row=\"0\""},
        RefusalCase{"column_outside", "nbCols='2'", "<MatCell row='1' col='3'>1</MatCell>", "col=\"3\""},
        RefusalCase{"no_column", "", "<MatCell row='1'>1</MatCell>", "\"col\" is missing"},
        RefusalCase{"no_number", "", "<MatCell row='1' col='1'>x</MatCell>", "holds no number"},
        RefusalCase{"no_finite_number", "", "<MatCell row='1' col='1'>NaN</MatCell>", "isn't finite"},
        RefusalCase{"cell_twice", "", "<MatCell row='1' col='1'>1</MatCell><MatCell row='1' col='1'>1</MatCell>",
                    "second cell"},
        RefusalCase{"claims_too_much", "nbRows='2000000000' nbCols='2000000000'", "", "too many cells"},
        RefusalCase{"far_cell", "", "<MatCell row='2000000000' col='2000000000'>1</MatCell>", "too many cells"}),
    KelTest::CaseName());

}  // namespace
