#include "components/kelparsexml/PmmlMatrix.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "components/kelparsexml/PmmlArray.h"

namespace KelXML_1_3 {
namespace {

// A matrix can claim far more cells than the document writes. 32 MB is as much as such a one may take.
constexpr std::size_t kMostUnwrittenCells = std::size_t{1} << 22;

void CheckFinite(const Element& element, double number) {
  if (!std::isfinite(number)) throw element.Error("has a number that isn't finite");
}

class MatrixReader {
 public:
  explicit MatrixReader(const Element& matrix)
      : fMatrix(matrix), fDeclaredRows(ReadSize("nbRows")), fDeclaredColumns(ReadSize("nbCols")) {
    CheckContent();
  }

  PmmlMatrix Read() {
    const std::string_view kind = fMatrix.Attribute("kind").value_or("any");
    if (kind == "diagonal") {
      ReadDiagonal();
    } else if (kind == "symmetric") {
      ReadTriangle();
    } else if (kind != "any") {
      throw fMatrix.AttributeError("kind", "isn't one of: diagonal, symmetric, any");
    } else if (fMatrix.Child("Array")) {
      ReadRows();
    } else {
      ReadCells();
    }
    return {fColumns, std::move(fCells)};
  }

 private:
  [[nodiscard]] std::optional<std::size_t> ReadSize(const char* attribute) const {
    const std::optional<int> size = fMatrix.Integer(attribute);
    if (!size) return std::nullopt;
    if (*size < 1) throw fMatrix.AttributeError(attribute, "a matrix has one row and one column at least");
    return static_cast<std::size_t>(*size);
  }

  void CheckContent() const {
    for (Element child = fMatrix.FirstChild(); child; child = child.NextSibling()) {
      const bool isIgnorable = child.Is("Extension") || child.Name().starts_with("X-");
      if (!isIgnorable && !child.Is("Array") && !child.Is("MatCell")) {
        throw child.Error("is not supported in <Matrix>");
      }
    }
    if (fMatrix.Child("Array") && fMatrix.Child("MatCell")) throw fMatrix.Error("has both <Array> and <MatCell>");
  }

  [[nodiscard]] std::vector<double> ReadArray(const Element& array, std::optional<std::size_t> length) const {
    std::vector<double> numbers = ReadNumberArray(array);
    for (const double number : numbers) CheckFinite(array, number);
    if (length && numbers.size() != *length) {
      throw array.Error("has " + std::to_string(numbers.size()) + " numbers where the matrix needs " +
                        std::to_string(*length));
    }
    if (numbers.empty()) throw array.Error("is empty");
    return numbers;
  }

  [[nodiscard]] double ReadDefault(const char* attribute) const {
    const double number = fMatrix.Number(attribute, 0.0);
    if (!std::isfinite(number)) throw fMatrix.AttributeError(attribute, "isn't finite");
    return number;
  }

  void CheckSize(std::size_t rows, std::size_t columns) const {
    if (fDeclaredRows.value_or(rows) != rows) {
      throw fMatrix.AttributeError("nbRows", "the matrix has " + std::to_string(rows) + " rows");
    }
    if (fDeclaredColumns.value_or(columns) != columns) {
      throw fMatrix.AttributeError("nbCols", "the matrix has " + std::to_string(columns) + " columns");
    }
  }

  // All cells with the defaults that the element gives for them.
  void Fill(std::size_t rows, std::size_t columns) {
    if (rows > kMostUnwrittenCells / columns) throw fMatrix.Error("has too many cells that aren't written");
    CheckSize(rows, columns);
    fColumns = columns;
    fCells.assign(rows * columns, ReadDefault("offDiagDefault"));
    const double onDiagonal = ReadDefault("diagDefault");
    for (std::size_t i = 0; i < std::min(rows, columns); ++i) fCells[i * columns + i] = onDiagonal;
  }

  void ReadDiagonal() {
    RefuseCells();
    const Element array = fMatrix.Child("Array");
    if (!array) return FillDeclared();
    if (array.Next("Array")) throw array.Next("Array").Error("is a second array; a diagonal matrix has one");
    const std::vector<double> diagonal = ReadArray(array, std::nullopt);
    Fill(diagonal.size(), diagonal.size());
    for (std::size_t i = 0; i < diagonal.size(); ++i) fCells[i * fColumns + i] = diagonal[i];
  }

  void ReadTriangle() {
    RefuseCells();
    if (!fMatrix.Child("Array")) return FillDeclared();
    std::vector<std::vector<double>> rows;
    for (Element array = fMatrix.Child("Array"); array; array = array.Next("Array")) {
      rows.push_back(ReadArray(array, rows.size() + 1));
    }
    CheckSize(rows.size(), rows.size());
    fColumns = rows.size();
    fCells.resize(fColumns * fColumns);
    for (std::size_t row = 0; row < fColumns; ++row) {
      for (std::size_t column = 0; column <= row; ++column) {
        fCells[row * fColumns + column] = fCells[column * fColumns + row] = rows[row][column];
      }
    }
  }

  void ReadRows() {
    std::optional<std::size_t> length = fDeclaredColumns;
    std::size_t count = 0;
    for (Element array = fMatrix.Child("Array"); array; array = array.Next("Array")) {
      const std::vector<double> row = ReadArray(array, length);
      length = row.size();
      fCells.insert(fCells.end(), row.begin(), row.end());
      ++count;
    }
    CheckSize(count, *length);
    fColumns = *length;
  }

  // The largest indices tell the size where the matrix doesn't.
  void ReadCells() {
    if (!fMatrix.Child("MatCell")) return FillDeclared();
    std::size_t rows = 0;
    std::size_t columns = 0;
    for (Element cell = fMatrix.Child("MatCell"); cell; cell = cell.Next("MatCell")) {
      rows = std::max(rows, ReadIndex(cell, "row", fDeclaredRows));
      columns = std::max(columns, ReadIndex(cell, "col", fDeclaredColumns));
    }
    Fill(fDeclaredRows.value_or(rows), fDeclaredColumns.value_or(columns));
    std::vector<bool> isGiven(fCells.size());
    for (Element cell = fMatrix.Child("MatCell"); cell; cell = cell.Next("MatCell")) {
      const std::size_t index = (ReadIndex(cell, "row", rows) - 1) * fColumns + ReadIndex(cell, "col", columns) - 1;
      if (isGiven[index]) throw cell.Error("is a second cell of the same row and column");
      isGiven[index] = true;
      fCells[index] = ReadNumber(cell);
    }
  }

  [[nodiscard]] static std::size_t ReadIndex(const Element& cell, const char* attribute,
                                             std::optional<std::size_t> size) {
    (void)cell.Required(attribute);
    const int index = *cell.Integer(attribute);
    if (index < 1 || (size && static_cast<std::size_t>(index) > *size)) {
      throw cell.AttributeError(attribute, "is outside of the matrix");
    }
    return static_cast<std::size_t>(index);
  }

  [[nodiscard]] static double ReadNumber(const Element& cell) {
    const std::optional<double> number = ParsePmmlNumber(cell.Text());
    if (!number) throw cell.Error("holds no number");
    CheckFinite(cell, *number);
    return *number;
  }

  void RefuseCells() const {
    if (fMatrix.Child("MatCell")) throw fMatrix.AttributeError("kind", "has its numbers in arrays, not in <MatCell>");
  }

  // Nothing is written but the defaults.
  void FillDeclared() {
    if (!fDeclaredRows || !fDeclaredColumns) throw fMatrix.Error("has no numbers, and no nbRows and nbCols either");
    if (fMatrix.Attribute("kind").value_or("any") != "any" && fDeclaredRows != fDeclaredColumns) {
      throw fMatrix.AttributeError("nbCols", "isn't the number of rows, though the matrix is a square");
    }
    Fill(*fDeclaredRows, *fDeclaredColumns);
  }

  Element fMatrix;
  std::optional<std::size_t> fDeclaredRows;
  std::optional<std::size_t> fDeclaredColumns;
  std::size_t fColumns = 0;
  std::vector<double> fCells;
};

}  // namespace

PmmlMatrix ReadMatrix(const Element& matrix) {
  if (!matrix) throw PmmlError("a <Matrix> is missing");
  return MatrixReader(matrix).Read();
}

}  // namespace KelXML_1_3
