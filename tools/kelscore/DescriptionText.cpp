#include <algorithm>
#include <limits>
#include <vector>

#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/DescriptionFormats.h"

namespace kelscore {
namespace {

using Row = std::vector<std::string>;

constexpr double kNoBound = std::numeric_limits<double>::max();

// Characters, not bytes: names may be in any language.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

// Pads all cells but the last one of each row.
void AppendTable(const std::vector<Row>& rows, std::string& to) {
  std::vector<std::size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  }
  for (const Row& row : rows) {
    std::string line = " ";
    for (std::size_t i = 0; i < row.size(); ++i) line += " " + row[i] + std::string(widths[i] - Width(row[i]) + 1, ' ');
    to += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
}

void AppendPart(const std::string& title, const std::vector<Row>& rows, std::string& to) {
  to += "\n" + title + "\n";
  if (rows.empty()) to += "  none\n";
  AppendTable(rows, to);
}

std::string JoinValues(const std::vector<LabelledValue>& values) {
  std::string joined;
  for (const LabelledValue& value : values) {
    if (!joined.empty()) joined += ", ";
    joined += value.value.empty() ? "\"\"" : value.value;
    if (!value.label.empty()) joined += " (" + value.label + ")";
  }
  return joined;
}

std::string RangeText(const std::pair<double, double>& range) {
  const bool below = range.first > -kNoBound;
  const bool above = range.second < kNoBound;
  std::string text;
  if (below) AppendNumber(text, range.first);
  if (below && above) text += " to ";
  if (below && !above) text += " or more";
  if (above) AppendNumber(text, range.second);
  if (above && !below) text += " or less";
  return text;
}

std::string DomainText(const FieldDescription& field) {
  std::string text = field.range ? RangeText(*field.range) : JoinValues(field.categories);
  const auto listed = static_cast<int>(field.categories.size());
  if (field.categoryCount > listed) text += (listed > 0 ? ", " : "") + std::to_string(field.categoryCount) + " in all";
  if (field.flagTrueValue) text += "; true is " + *field.flagTrueValue;
  if (!field.missingValues.empty())
    text += (text.empty() ? "" : "; ") + ("missing: " + JoinValues(field.missingValues));
  return text;
}

std::vector<Row> FieldRows(const std::vector<FieldDescription>& fields) {
  std::vector<Row> rows;
  for (const FieldDescription& field : fields) {
    const std::string name = field.label.empty() ? field.name : field.name + " (" + field.label + ")";
    rows.push_back({name, field.dataType, field.level, DomainText(field)});
  }
  return rows;
}

std::vector<Row> OutputRows(const std::vector<OutputDescription>& outputs) {
  std::vector<Row> rows;
  for (const OutputDescription& output : outputs) {
    std::string columns;
    for (const std::string& column : output.columns) columns += (columns.empty() ? "" : ", ") + column;
    rows.push_back({output.name, columns == output.name ? "" : columns});
  }
  return rows;
}

std::vector<Row> NameRows(const std::vector<std::string>& names) {
  std::vector<Row> rows;
  rows.reserve(names.size());
  for (const std::string& name : names) rows.push_back({name});
  return rows;
}

std::vector<Row> HeadRows(const ModelDocument& document, const std::string& scorer) {
  const Row all[] = {
      {"file", document.path},
      {"model", document.element},
      {"name", document.name},
      {"identifier", document.id},
      {"function", document.function},
      {"algorithm", document.algorithm},
      {"ensemble method", document.ensembleMethod},
      {"scorer", scorer},
      {"PMML version", document.pmmlVersion},
      {"written by",
       document.application + (document.applicationVersion.empty() ? "" : " " + document.applicationVersion)},
  };
  std::vector<Row> rows;
  std::copy_if(std::begin(all), std::end(all), std::back_inserter(rows),
               [](const Row& row) { return !row[1].empty(); });
  return rows;
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts)
    joined += (&text == &texts.front() ? "" : ", ") + (text.empty() ? "\"\"" : text);
  return joined;
}

std::vector<Row> MemberRows(const ModelDescription& description) {
  std::vector<Row> rows;
  for (const DocumentDescription& member : description.documents) {
    const ModelDocument& document = member.document;
    rows.push_back({member.key.empty() ? member.id : Joined(member.key), document.element, document.function,
                    document.name, document.path});
  }
  return rows;
}

}  // namespace

std::string ToText(const ModelDescription& description) {
  std::string text;
  if (description.isComposite) {
    const bool isSplit = !description.splitFields.empty();
    text = isSplit ? "Members by " + Joined(description.splitFields) + "\n" : "Members\n";
    AppendTable(MemberRows(description), text);
  } else {
    text = "Model\n";
    for (const DocumentDescription& model : description.documents)
      AppendTable(HeadRows(model.document, description.scorer), text);
  }
  AppendPart("Inputs", FieldRows(description.inputs), text);
  AppendPart("Target", FieldRows(description.targets), text);
  AppendPart("Outputs", OutputRows(description.outputs), text);
  AppendPart("Derived fields", NameRows(description.derivedFields), text);
  return text;
}

}  // namespace kelscore
