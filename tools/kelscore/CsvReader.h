#pragma once

#include <cstdint>
#include <csv.h>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "tools/kelscore/ByteSource.h"
#include "tools/kelscore/RowBatch.h"

namespace kelscore {

/// Reads a table of comma separated values, a batch of rows at a time.
///
/// The first row is the header. Blanks belong to the fields; fields in quotes may hold delimiters, line breaks and
/// doubled quotes. A byte order mark and blank lines are skipped; lines end in LF, CRLF or CR. A quote inside a field
/// that doesn't start with one, text behind a closing quote and a quote that is never closed are errors: whoever
/// wrote the file meant something else than it says. Memory doesn't grow with the number of rows.
class CsvReader {
 public:
  /// The longest row that is read. More than that is an unclosed quote or no table at all.
  static constexpr std::size_t kMaxRowBytes = 64U << 20U;

  /// `source` must outlive the reader.
  CsvReader(ByteSource& source, char delimiter);
  ~CsvReader();
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;

  /// Reads the names of the columns. Throws `Failure` for an empty input or a name that stands twice; several
  /// columns may have no name.
  const std::vector<std::string>& ReadHeader();
  /// Fills `batch` with the next rows; false at the end. Rows before a fault are given first, then it is thrown.
  bool Read(RowBatch& batch);

  [[nodiscard]] std::uint64_t BytesRead() const { return fBytesRead; }

 private:
  static void OnField(void* text, std::size_t size, void* reader);
  static void OnRow(int terminator, void* reader);
  void AddField(std::string_view field);
  void EndLine(int terminator);
  void EndRow();

  [[nodiscard]] bool MayParse() const { return !fAtEnd && !fFailure; }
  void TryParseBlock();
  void ParseBlock();
  void SkipMark(std::string_view& block);
  void CheckRowSize() const;
  void CheckHeader() const;
  [[noreturn]] void FailAtQuote();
  [[noreturn]] void FailInRow(const std::string& what) const;

  ByteSource& fSource;
  csv_parser fParser{};
  char fDelimiter;
  std::vector<char> fBlock;
  RowBatch fNext;  // what is parsed and not yet given away
  std::vector<std::string> fHeader;
  bool fHeaderRead = false;
  bool fAtEnd = false;
  bool fQuotesSeen = false;  // until then no field can hold a line break or need quotes
  bool fAfterCarriageReturn = false;
  std::uint64_t fLine = 1;      // the line that is being read
  std::uint64_t fRowLine = 1;   // the line in which the unfinished row starts
  std::uint64_t fRowsRead = 0;  // rows given away
  std::uint64_t fBytesRead = 0;
  std::exception_ptr fFailure;  // thrown when the rows before it are given away
};

}  // namespace kelscore
