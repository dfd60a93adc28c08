#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/Exchange.h"
#include "exchange/JsonValueReader.h"
#include "model/OLNode.h"

namespace tavlin {

/// Builds a document from the events of a JSON text, in order.  Nothing here recurses, and nothing
/// but the document itself and its open levels is in memory.
///
/// Every operation raises JsonShapeException where the form has another shape.
class JsonDocumentReader {
 public:
  /// The values that `{"object": 3}` stands for, before anything else.
  void setObjects(ns::Array objects) { values_.setObjects(std::move(objects)); }

  // Events.  `json` is the text of an object or list from its first bracket to its last.
  void key(ns::String name);
  void scalar(ns::Value value);
  void number(std::string_view json);
  void start(bool isObject);
  void end(std::string_view json);

  /// Where the events have come to: "/items/2/title"; the outermost and innermost parts of a long
  /// one.
  [[nodiscard]] std::string place() const;
  /// The document, after the last event.
  [[nodiscard]] Imported finish();

 private:
  enum class Level : uint8_t {
    top,
    root,
    items,       ///< a list of items
    item,        ///< an object of the form's own
    object,      ///< one that stands for a value
    dictionary,  ///< one that is a dictionary whatever its keys
    array,
    runs,
    run,
    skipped,  ///< what nobody here knows
  };
  enum class ItemKey : uint8_t {
    title,
    note,
    checked,
    showsCheck,
    data,
    expanded,
    outlineStyle,
    children,
    unknown
  };
  static constexpr size_t kFieldCount = 4;  ///< of the keys above that are values of the data

  /// An item whose object is open.  The first one stands for the root.
  struct OpenItem {
    std::shared_ptr<OLNode> node;
    OLNodeList children;
    ns::Value fields[kFieldCount];
    ns::Value data;
    ItemKey key = ItemKey::unknown;
    uint16_t seen = 0;  ///< keys, a bit each
    bool hasNoChildrenArray = false;
    bool hasNoData = false;
  };
  /// An object, list or run whose end is still to come.
  struct OpenValue {
    JsonValueReader::Members members;
    ns::String key;
    std::vector<ns::Value> elements;
    std::vector<JsonValueReader::Stretch> stretches;
    bool hasRuns = false;
  };

  [[nodiscard]] Level level() const { return levels_.back(); }
  void topKey(const ns::String& name);
  void itemKey(const ns::String& name);
  void deliver(ns::Value value);
  void deliverToTop(const ns::Value& value);
  void deliverToRoot(const ns::Value& value);
  void deliverToItem(ns::Value value);
  /// What an object or list is that begins here.
  [[nodiscard]] Level levelOfNext(bool isObject) const;
  OpenValue& openValue() { return open_[openCount_ - 1]; }
  void close();
  void endItem();
  [[nodiscard]] std::shared_ptr<OLTreeController> controller(
      const std::shared_ptr<OLNode>& root) const;

  JsonValueReader values_;
  Losses losses_;
  std::vector<Level> levels_;
  std::vector<OpenItem> items_;
  std::vector<OpenValue> open_;  // those behind openCount_ are kept for their memory
  size_t openCount_ = 0;
  size_t skippedLevels_ = 0;
  std::string topKey_;
  std::vector<std::string> topKeys_;
  std::string rootKey_;
  bool hasVersion_ = false;
  std::string controllerName_ = "OLTreeUndoController";
  ns::Value properties_;
  ns::Value settings_;
  bool hasNoSettings_ = false;

  const ns::Value fieldKeys_[kFieldCount] = {"title", "note", "checkStatus", "showCheckState"};
};

}  // namespace tavlin
