#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelscore {

/// One row of a batch. Lives as long as the batch stays unchanged.
class RowView {
 public:
  RowView(const char* text, std::size_t begin, std::span<const std::uint32_t> ends)
      : fText(text), fBegin(begin), fEnds(ends) {}

  [[nodiscard]] std::size_t FieldCount() const { return fEnds.size(); }
  [[nodiscard]] std::string_view Field(std::size_t index) const {
    const std::size_t begin = index == 0 ? fBegin : fEnds[index - 1] + 1U;
    return {fText + begin, fEnds[index] - begin};
  }
  /// All fields with delimiters between them, without any quotes.
  [[nodiscard]] std::string_view Joined() const { return {fText + fBegin, fEnds.back() - fBegin}; }

 private:
  const char* fText;
  std::size_t fBegin;
  std::span<const std::uint32_t> fEnds;
};

/// Consecutive rows of a table, in one block of text that is used again and again.
///
/// Every field is followed by the delimiter, so that a row without quotes can be written out in one piece.
class RowBatch {
 public:
  /// Adds a field to the unfinished row. `quoted` tells that the field must be quoted when it is written.
  void AddField(std::string_view text, bool quoted);
  /// Finishes a row of at least one field. `line` is the line of the file in which it starts.
  void EndRow(std::uint64_t line);
  /// Drops all rows and keeps the buffers. From now on `delimiter` stands behind each field.
  void Clear(char delimiter);
  /// Moves the fields of `other`'s unfinished row to the end of this batch.
  void TakeUnfinishedRow(RowBatch& other);

  [[nodiscard]] std::size_t RowCount() const { return fRows.size(); }
  [[nodiscard]] RowView Row(std::size_t index) const;
  [[nodiscard]] std::uint64_t LineOf(std::size_t index) const { return fRows[index].line; }
  /// Whether no field of the row needs quotes when it is written.
  [[nodiscard]] bool IsPlain(std::size_t index) const { return fRows[index].plain; }

  /// The number of the first row in the table, from 1; the header isn't counted.
  [[nodiscard]] std::uint64_t FirstRowNumber() const { return fFirstRowNumber; }
  void SetFirstRowNumber(std::uint64_t number) { fFirstRowNumber = number; }

  [[nodiscard]] std::size_t TextSize() const { return fText.size(); }
  [[nodiscard]] std::size_t UnfinishedSize() const { return fText.size() - fUnfinishedBegin; }
  [[nodiscard]] std::size_t UnfinishedFieldCount() const { return fEnds.size() - fUnfinishedEnds; }

 private:
  struct RowPlace {
    std::size_t begin;     // in fText
    std::size_t firstEnd;  // in fEnds
    std::size_t fieldCount;
    std::uint64_t line;
    bool plain;
  };

  char fDelimiter = ',';
  std::string fText;
  std::vector<std::uint32_t> fEnds;  // of the fields, in fText; a batch is far smaller than 4 GiB
  std::vector<RowPlace> fRows;
  std::size_t fUnfinishedBegin = 0;  // in fText
  std::size_t fUnfinishedEnds = 0;   // in fEnds
  bool fUnfinishedPlain = true;
  std::uint64_t fFirstRowNumber = 1;
};

}  // namespace kelscore
