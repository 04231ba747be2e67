#include "tools/kelscore/CsvReader.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <unordered_set>

#include "tools/kelscore/Failure.h"

namespace kelscore {
namespace {

constexpr std::size_t kBlockBytes = 64U << 10U;
// Large enough that threads rarely meet, small enough to stay in a core's cache.
constexpr std::size_t kBatchBytes = 128U << 10U;
// The parser's buffer for one field grows by this step: a small one is slow on large fields.
constexpr std::size_t kFieldStep = 1U << 20U;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

int NoSpace(unsigned char) { return 0; }

bool IsUtf16Mark(std::string_view block) { return block.starts_with("\xFF\xFE") || block.starts_with("\xFE\xFF"); }

}  // namespace

CsvReader::CsvReader(ByteSource& source, char delimiter) : fSource(source), fDelimiter(delimiter), fBlock(kBlockBytes) {
  fNext.Clear(delimiter);
  if (csv_init(&fParser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) throw std::bad_alloc();
  csv_set_delim(&fParser, static_cast<unsigned char>(delimiter));
  csv_set_space_func(&fParser, NoSpace);
  csv_set_blk_size(&fParser, kFieldStep);
}

CsvReader::~CsvReader() { csv_free(&fParser); }

const std::vector<std::string>& CsvReader::ReadHeader() {
  while (!fHeaderRead && MayParse()) TryParseBlock();
  if (!fHeaderRead && fFailure) std::rethrow_exception(fFailure);
  if (!fHeaderRead) throw Failure(kInputOutputFailed, fSource.Name() + ": is empty, not even a header row is there");
  CheckHeader();
  return fHeader;
}

bool CsvReader::Read(RowBatch& batch) {
  while (MayParse() && fNext.TextSize() < kBatchBytes) TryParseBlock();
  std::swap(batch, fNext);
  fNext.Clear(fDelimiter);
  if (batch.RowCount() == 0 && fFailure) std::rethrow_exception(fFailure);
  fNext.TakeUnfinishedRow(batch);
  batch.SetFirstRowNumber(fRowsRead + 1);
  fRowsRead += batch.RowCount();
  return batch.RowCount() > 0;
}

// The rows of the block before its fault are good.
void CsvReader::TryParseBlock() {
  try {
    ParseBlock();
  } catch (const Failure&) {
    fFailure = std::current_exception();
  }
}

void CsvReader::ParseBlock() {
  std::size_t size = fSource.Read(fBlock.data(), fBlock.size());
  // A byte order mark may come in pieces.
  while (fBytesRead == 0 && size > 0 && size < kUtf8Mark.size()) {
    const std::size_t more = fSource.Read(fBlock.data() + size, fBlock.size() - size);
    if (more == 0) break;
    size += more;
  }
  fAtEnd = size == 0;
  std::string_view block(fBlock.data(), size);
  if (fBytesRead == 0) SkipMark(block);
  fBytesRead += size;
  fQuotesSeen = fQuotesSeen || block.find('"') != std::string_view::npos;
  const bool good = fAtEnd ? csv_fini(&fParser, OnField, OnRow, this) == 0
                           : csv_parse(&fParser, block.data(), block.size(), OnField, OnRow, this) == block.size();
  if (!good) FailAtQuote();
  CheckRowSize();
}

void CsvReader::SkipMark(std::string_view& block) {
  if (IsUtf16Mark(block)) throw Failure(kInputOutputFailed, fSource.Name() + ": is UTF-16 text; UTF-8 is needed");
  if (block.starts_with(kUtf8Mark)) block.remove_prefix(kUtf8Mark.size());
}

void CsvReader::OnField(void* text, std::size_t size, void* reader) {
  static_cast<CsvReader*>(reader)->AddField({static_cast<const char*>(text), size});
}

void CsvReader::OnRow(int terminator, void* reader) { static_cast<CsvReader*>(reader)->EndLine(terminator); }

void CsvReader::AddField(std::string_view field) {
  if (fNext.UnfinishedFieldCount() == 0) fRowLine = fLine;
  bool quoted = false;
  if (fQuotesSeen) {
    const char special[] = {fDelimiter, '"', '\r', '\n'};
    quoted = field.find_first_of(std::string_view(special, sizeof special)) != std::string_view::npos;
    if (quoted) fLine += static_cast<std::uint64_t>(std::count(field.begin(), field.end(), '\n'));
  }
  fNext.AddField(field, quoted);
}

// Every CR and LF outside quotes comes here, blank lines and both halves of a CRLF included.
void CsvReader::EndLine(int terminator) {
  const bool hasFields = fNext.UnfinishedFieldCount() > 0;
  if (hasFields) EndRow();
  const bool secondHalf = !hasFields && terminator == '\n' && fAfterCarriageReturn;
  if (!secondHalf) ++fLine;
  fAfterCarriageReturn = terminator == '\r';
}

void CsvReader::EndRow() {
  fNext.EndRow(fRowLine);
  if (fHeaderRead) return;
  fHeaderRead = true;
  const RowView names = fNext.Row(0);
  for (std::size_t i = 0; i < names.FieldCount(); ++i) fHeader.emplace_back(names.Field(i));
  fNext.Clear(fDelimiter);
}

void CsvReader::CheckRowSize() const {
  if (fNext.UnfinishedSize() + fParser.entry_pos > kMaxRowBytes)
    FailInRow("is longer than 64 MiB; is a quote left open?");
}

void CsvReader::CheckHeader() const {
  std::unordered_set<std::string_view> names;
  for (const std::string& name : fHeader) {
    if (!name.empty() && !names.insert(name).second)
      throw Failure(kInputOutputFailed, fSource.Name() + ": column \"" + name + "\" stands twice in the header");
  }
}

void CsvReader::FailAtQuote() {
  if (csv_error(&fParser) != CSV_EPARSE) throw std::bad_alloc();
  FailInRow(fAtEnd ? "has a quote that is never closed"
                   : "has a stray quote; a field that holds quotes is written in quotes, with each one doubled");
}

void CsvReader::FailInRow(const std::string& what) const {
  const std::uint64_t line = fNext.UnfinishedFieldCount() > 0 ? fRowLine : fLine;
  throw Failure(kInputOutputFailed,
                fSource.Name() + ": the row that starts in line " + std::to_string(line) + " " + what);
}

}  // namespace kelscore
