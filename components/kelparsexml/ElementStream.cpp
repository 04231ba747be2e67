#include "components/kelparsexml/ElementStream.h"

#include "components/kelparsexml/DocumentScan.h"
#include "components/kelparsexml/ElementTreeBuilder.h"

namespace KelXML_1_3 {
namespace {
using Segments = ElementTreeBuilder::Segments;
using PieceState = ElementTreeBuilder::PieceState;
}  // namespace

struct ElementStream::Reading {
  Reading(std::istream& stream, std::string_view modelName)
      : builder(modelName, Segments::kAsPieces), scan(stream, builder) {}

  ElementTreeBuilder builder;
  DocumentScan scan;
  bool isHandedOver = false;  // whether the builder's piece has been given out
};

ElementStream::ElementStream(std::istream& stream, std::string_view modelName)
    : fReading(std::make_unique<Reading>(stream, modelName)) {
  fReading->scan.ReadUntil([this] { return fReading->builder.State() != PieceState::kNone; });
}

ElementStream::~ElementStream() = default;

std::unique_ptr<ElementStream> ElementStream::Open(std::istream& stream, std::string_view modelName) {
  return std::unique_ptr<ElementStream>(new ElementStream(stream, modelName));
}

Element ElementStream::Root() const noexcept { return fReading->builder.Tree().Root(); }

Element ElementStream::Segmentation() const noexcept { return fReading->builder.Segmentation(); }

Element ElementStream::NextPiece() {
  if (fError != nullptr) std::rethrow_exception(fError);
  try {
    return ReadPiece();
  } catch (...) {
    fError = std::current_exception();
    throw;
  }
}

Element ElementStream::ReadPiece() {
  ElementTreeBuilder& builder = fReading->builder;
  if (fReading->isHandedOver) builder.DropPiece();
  fReading->isHandedOver = fReading->scan.ReadUntil([&builder] { return builder.State() == PieceState::kWhole; });
  return builder.Piece();
}

}  // namespace KelXML_1_3
