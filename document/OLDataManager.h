#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "model/OLTreeController.h"
#include "platform/foundation/Data.h"

namespace tavlin {

/// A document: the owner of its tree controller, its way to and from file data, and the access
/// to its values.
///
///     auto document = OLDataManager::create();
///     if (!document->loadDataRepresentationOfType(ns::readFile(path))) return;   // logged why
///     ns::Value properties = document->objectValueForKey("documentProperties");
///
/// Document-level values are the entries of the root node's data dictionary.
class OLDataManager : public ns::Object {
 public:
  /// -init  A new, empty document, whose controller is a plain OLTreeController.
  static std::shared_ptr<OLDataManager> create();
  OLDataManager();

  [[nodiscard]] const std::shared_ptr<OLTreeController>& treeController() const {
    return treeController_;
  }
  /// -setTreeController:  None, or a tree controller of any class.  For anything else raises
  /// OLException "Unexpected class" and changes nothing.
  void setTreeController(const std::shared_ptr<ns::Object>& controller);

  /// Whether titles and notes are rich text.  Kept for callers; nothing here looks at it.
  [[nodiscard]] bool isDocumentRichText() const { return isDocumentRichText_; }
  void setIsDocumentRichText(bool isRichText) { isDocumentRichText_ = isRichText; }

  /// -dataRepresentation  The document as a keyed archive, the data of a file; none when there
  /// is no controller.  The same document always gives the same bytes.
  [[nodiscard]] std::optional<ns::Data> dataRepresentation() const;

  /// -loadDataRepresentation:ofType:  Replaces the tree controller by the archived one, of
  /// whatever controller class the archive names.  The type is ignored.
  ///
  ///   no data, or none of it        false, logs "Document contains no data"
  ///   an archive of nothing         false, logs "Document has something corrupted"
  ///   an archive of something else  false, logs "Document contains unacceptable data"
  ///
  /// Raises ns::ArchiveException for malformed data.  Unless it answers true the document is as
  /// it was.  Every object that the document refers to is checked; item data is decoded when it
  /// is asked for.
  bool loadDataRepresentationOfType(const std::optional<ns::Data>& data,
                                    const ns::Value& type = {});

  /// -objectValueForKey:  A document-level value, or none.
  [[nodiscard]] ns::Value objectValueForKey(const ns::Value& key) const;
  /// -setObjectValue:forKey:  Stores a document-level value; none removes it, a none key does
  /// nothing.  No undo.
  void setObjectValueForKey(const ns::Value& value, const ns::Value& key);

 private:
  std::shared_ptr<OLTreeController> treeController_;
  bool isDocumentRichText_ = false;
};

}  // namespace tavlin
