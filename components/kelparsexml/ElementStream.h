#pragma once

#include <exception>
#include <iosfwd>
#include <memory>
#include <string_view>

#include "components/kelparsexml/ElementTree.h"
#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// Reads a document whose model is an ensemble without ever holding the ensemble: the "Segment" children of the model's
/// "Segmentation" are handed over one at a time, and all else is a tree that grows while they are.
///
///   const auto stream = ElementStream::Open(text, "MiningModel");
///   const Element model = stream->Root().Child("MiningModel");
///   while (const Element segment = stream->NextPiece()) { ... }
///
/// Only the first model of the given name has pieces, and of it only its first child "Segmentation": those of an
/// ensemble within a segment are part of that segment's piece. A builder takes them through a `SegmentCursor`, which
/// works on a whole tree as well.
///
/// The XML platform must be up, and the text's stream must live, as long as this lives. It can be destroyed at any
/// time, but every handle ends with it. For one thread.
class KEL_EXPORT ElementStream {
 public:
  /// Reads from the stream's current position to the start of the first piece, or the whole document if there is none.
  /// What is kept of the document, and errors, are as with `ElementTree::Read`.
  static std::unique_ptr<ElementStream> Open(std::istream& stream, std::string_view modelName);
  ~ElementStream();
  ElementStream(const ElementStream&) = delete;
  ElementStream& operator=(const ElementStream&) = delete;

  /// The root of what has been read so far, pieces left out. Handles into it stay valid. Elements gain children and
  /// siblings as reading goes on, and get their text when they end.
  [[nodiscard]] Element Root() const noexcept;
  /// The element of that tree whose segments are the pieces; none if the model isn't an ensemble of segments.
  [[nodiscard]] Element Segmentation() const noexcept;

  /// Drops the last piece, with every handle into it and every text of it, and reads the next one: an element without
  /// siblings. No element behind the last, and then all of the document has been read and was well-formed. Throws as
  /// `Open` does; once it has thrown, every further call throws the same.
  Element NextPiece();

 private:
  struct Reading;
  ElementStream(std::istream& stream, std::string_view modelName);
  Element ReadPiece();

  std::unique_ptr<Reading> fReading;
  std::exception_ptr fError;
};

}  // namespace KelXML_1_3
