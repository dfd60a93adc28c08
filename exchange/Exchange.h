#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "document/OLDataManager.h"
#include "model/OLNode.h"
#include "platform/foundation/Exception.h"

namespace tavlin {

// What all exchange formats share.  Each format has a header of its own with a writer,
//
//     Losses exportOpml(const ExportSource& source, const TextSink& sink);
//
// and, where it comes back, a reader,
//
//     Imported importOpml(std::string_view content);

/// Receives what is written, in order, in pieces of some kilobytes; the view is valid during the
/// call.
using TextSink = std::function<void(std::string_view piece)>;

/// What a format has no place for, by kind; each counts the places where something was left out.
struct Losses {
  uint64_t attributes = 0;  ///< attributes of text: an attribute of a run each
  uint64_t values = 0;      ///< values of items or of the document: an entry each
  uint64_t characters = 0;  ///< characters that came out as U+FFFD or not at all: a code point each

  [[nodiscard]] bool any() const { return attributes > 0 || values > 0 || characters > 0; }
};

/// What is written.
struct ExportSource {
  std::shared_ptr<OLDataManager> document;  ///< Has a tree with a root.
  std::shared_ptr<OLNode>
      item;  ///< Where not none, only this item and what is below it, as the only top-level item.
};

/// What a text in some format turned into: a new document with an OLTreeUndoController (without
/// data source), its items, and its properties where the format holds some.
struct Imported {
  std::shared_ptr<OLDataManager> document;
  Losses losses;  ///< What the model, or this reader, has no place for.
};

/// A text that is not of the format.  The reason says what is wrong and, where it can be told, in
/// which line (from 1): "line 12: mismatched tag".
class ExchangeException : public ns::Exception {
 public:
  using ns::Exception::Exception;
};

}  // namespace tavlin
