#include "tools/kelscore/RowBatch.h"

namespace kelscore {

void RowBatch::AddField(std::string_view text, bool quoted) {
  fText.append(text);
  fEnds.push_back(static_cast<std::uint32_t>(fText.size()));
  fText.push_back(fDelimiter);
  fUnfinishedPlain = fUnfinishedPlain && !quoted;
}

void RowBatch::EndRow(std::uint64_t line) {
  fRows.push_back({fUnfinishedBegin, fUnfinishedEnds, UnfinishedFieldCount(), line, fUnfinishedPlain});
  fUnfinishedBegin = fText.size();
  fUnfinishedEnds = fEnds.size();
  fUnfinishedPlain = true;
}

void RowBatch::Clear(char delimiter) {
  fDelimiter = delimiter;
  fText.clear();
  fEnds.clear();
  fRows.clear();
  fUnfinishedBegin = 0;
  fUnfinishedEnds = 0;
  fUnfinishedPlain = true;
}

void RowBatch::TakeUnfinishedRow(RowBatch& other) {
  const RowView row(other.fText.data(), other.fUnfinishedBegin, std::span(other.fEnds).subspan(other.fUnfinishedEnds));
  for (std::size_t i = 0; i < row.FieldCount(); ++i) AddField(row.Field(i), !other.fUnfinishedPlain);
  other.fText.resize(other.fUnfinishedBegin);
  other.fEnds.resize(other.fUnfinishedEnds);
  other.fUnfinishedPlain = true;
}

RowView RowBatch::Row(std::size_t index) const {
  const RowPlace& place = fRows[index];
  return {fText.data(), place.begin, std::span(fEnds).subspan(place.firstEnd, place.fieldCount)};
}

}  // namespace kelscore
