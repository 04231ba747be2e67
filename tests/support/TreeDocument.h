#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace KelTest {

/// Writes the text of a PMML 4.2 document with one classification `TreeModel`, as a training tool would: a binary tree
/// over ten continuous fields, two attributes to four on each element, a score distribution on each node. The same size
/// gives the same text.
///
///   const std::string document = TreeDocument(20'000'000).Text();
class TreeDocument {
 public:
  /// `bytes`: about how long the text shall be; at least one node is written.
  explicit TreeDocument(std::size_t bytes) : fLimit(bytes) { Write(); }

  [[nodiscard]] const std::string& Text() const { return fText; }
  [[nodiscard]] int NodeCount() const { return fNodes; }

 private:
  static constexpr int kFields = 10;
  static constexpr int kSplitsPerTree = 12;  // the depth of each part of the tree

  void Write() {
    fText.reserve(fLimit + 4096);
    WriteHead();
    Line(2, R"(<Node id="0" score="low" recordCount="100000">)");
    Line(3, "<True/>");
    while (fNodes == 0 || fText.size() < fLimit) WriteNode(3, kSplitsPerTree);
    Line(2, "</Node>");
    Line(1, "</TreeModel>");
    Line(0, "</PMML>");
  }

  void WriteHead() {
    Line(0, R"(<?xml version="1.0" encoding="UTF-8"?>)");
    Line(0, R"(<PMML xmlns="http://www.dmg.org/PMML-4_2" version="4.2">)");
    Line(1, R"(<Header copyright="none"><Application name="TreeDocument" version="1"/></Header>)");
    Line(1, "<DataDictionary numberOfFields=\"" + std::to_string(kFields + 1) + "\">");
    Line(2, R"(<DataField name="risk" optype="categorical" dataType="string">)");
    for (const char* const label : {"low", "medium", "high"}) {
      Line(3, std::string("<Value value=\"") + label + "\"/>");
    }
    Line(2, "</DataField>");
    for (int i = 0; i < kFields; ++i) {
      Line(2, "<DataField name=\"" + FieldName(i) + R"(" optype="continuous" dataType="double"/>)");
    }
    Line(1, "</DataDictionary>");
    Line(1, R"(<TreeModel modelName="risk" functionName="classification" splitCharacteristic="multiSplit">)");
    Line(2, "<MiningSchema>");
    Line(3, R"(<MiningField name="risk" usageType="predicted"/>)");
    for (int i = 0; i < kFields; ++i) Line(3, "<MiningField name=\"" + FieldName(i) + "\"/>");
    Line(2, "</MiningSchema>");
  }

  // NOLINTNEXTLINE(misc-no-recursion): the depth is `splits`.
  void WriteNode(int indent, int splits) {
    const std::string id = std::to_string(++fNodes);
    const int records = 10 + static_cast<int>(Random() % 1000);
    Line(indent, "<Node id=\"" + id + R"(" score="medium" recordCount=")" + std::to_string(records) + "\">");
    Line(indent + 1, "<SimplePredicate field=\"" + FieldName(static_cast<int>(Random() % kFields)) + R"(" operator=")" +
                         (Random() % 2 == 0 ? "lessOrEqual" : "greaterThan") + R"(" value=")" + Decimal(100.0, "%.6g") +
                         "\"/>");
    for (const char* const label : {"low", "medium", "high"}) {
      Line(indent + 1, std::string("<ScoreDistribution value=\"") + label + R"(" recordCount=")" +
                           std::to_string(Random() % 300) + R"(" confidence=")" + Decimal(1.0, "%.15g") + "\"/>");
    }
    for (int child = 0; child < 2 && splits > 0 && fText.size() < fLimit; ++child) WriteNode(indent + 1, splits - 1);
    Line(indent, "</Node>");
  }

  void Line(int indent, const std::string& text) {
    fText.append(static_cast<std::size_t>(indent), '\t').append(text) += '\n';
  }

  static std::string FieldName(int index) { return "input_" + std::to_string(index); }

  std::string Decimal(double scale, const char* format) {
    char text[32];
    std::snprintf(text, sizeof text, format, scale * static_cast<double>(Random()) / 4294967296.0);
    return text;
  }

  // A linear congruential generator: the same everywhere, unlike the standard distributions.
  std::uint32_t Random() {
    fState = fState * 6364136223846793005U + 1442695040888963407U;
    return static_cast<std::uint32_t>(fState >> 32);
  }

  std::size_t fLimit;
  std::string fText;
  int fNodes = 0;
  std::uint64_t fState = 42;
};

}  // namespace KelTest
