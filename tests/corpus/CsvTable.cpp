#include "tests/corpus/CsvTable.h"

#include <algorithm>
#include <csv.h>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace CorpusTest {
namespace {

struct Collector {
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> row;
};

void OnField(void* text, std::size_t length, void* collector) {
  static_cast<Collector*>(collector)->row.emplace_back(static_cast<const char*>(text), length);
}

void OnRow(int, void* collector) {
  auto* self = static_cast<Collector*>(collector);
  self->rows.push_back(std::move(self->row));
  self->row.clear();
}

int NoSpace(unsigned char) { return 0; }  // blanks belong to the field

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("can't open " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

CsvTable CsvTable::Read(const std::string& path) {
  const std::string text = ReadFile(path);
  Collector collector;
  csv_parser parser;
  csv_init(&parser, CSV_APPEND_NULL);
  csv_set_space_func(&parser, NoSpace);
  const std::size_t parsed = csv_parse(&parser, text.data(), text.size(), OnField, OnRow, &collector);
  csv_fini(&parser, OnField, OnRow, &collector);
  csv_free(&parser);
  if (parsed != text.size() || collector.rows.empty()) throw std::runtime_error("can't parse " + path);

  CsvTable table;
  table.header = std::move(collector.rows.front());
  collector.rows.erase(collector.rows.begin());
  table.rows = std::move(collector.rows);
  for (const auto& row : table.rows) {
    if (row.size() != table.header.size()) throw std::runtime_error("ragged rows in " + path);
  }
  return table;
}

std::size_t CsvTable::Column(const std::string& name) const {
  const auto found = std::find(header.begin(), header.end(), name);
  if (found == header.end()) throw std::runtime_error("no column " + name);
  return static_cast<std::size_t>(found - header.begin());
}

}  // namespace CorpusTest
