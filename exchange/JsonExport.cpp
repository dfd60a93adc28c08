#include <string>
#include <vector>

#include "exchange/Base64.h"
#include "exchange/JsonFormat.h"
#include "exchange/JsonNames.h"
#include "exchange/JsonValueWriter.h"
#include "exchange/OutlineWalk.h"
#include "model/OLTree.h"
#include "model/OLTreeController.h"
#include "platform/foundation/Array.h"

namespace tavlin {

namespace {

constexpr size_t kPiece = 1 << 16;

/// A value of an item that has a key of its own.
struct Field {
  const char* key;   ///< in the item's data
  const char* name;  ///< in JSON
};
constexpr Field kItemFields[] = {{"title", "title"},
                                 {"note", "note"},
                                 {"checkStatus", "checked"},
                                 {"showCheckState", "showsCheck"}};
constexpr size_t kFieldCount = std::size(kItemFields);

class JsonExport {
 public:
  JsonExport(const ExportSource& source, const TextSink& sink)
      : source_(source), sink_(sink), values_(json_, objects_, losses_) {}

  Losses run() {
    json_.beginObject();
    json_.member("tavlin", json_names::kVersion);
    const OLTreeController& controller = *source_.document->treeController();
    json_.member("controller", std::string_view(controller.classForCoder()->name));
    writeRoot(*controller.tree()->rootNode());
    json_.breakLine();
    json_.key("items");
    const std::shared_ptr<OLNode>& root = controller.tree()->rootNode();
    if (source_.item || root->hasChildrenArray()) {
      json_.beginArray();
      writeItems(root);
      json_.endArray();
    } else {
      json_.null();
    }
    if (!objects_.empty()) writeObjects();
    json_.endObject();
    out_ += '\n';
    sink_(out_);
    return losses_;
  }

 private:
  void writeRoot(const OLNode& root) {
    json_.breakLine();
    json_.key("root");
    json_.beginObject();
    json_.member("expanded", root.storesExpanded());
    json_.member("outlineStyle", root.isOutlineStyle());
    json_.endObject();
    const std::optional<ns::Dictionary> data = root.data();
    ns::Dictionary settings = data.value_or(ns::Dictionary());
    ns::Value properties = settings.objectForKey("documentProperties");
    json_.breakLine();
    json_.key("properties");
    if (properties.isDictionary() && isFirstBare(settings, "documentProperties") &&
        values_.canWrite(properties)) {
      values_.write(properties);
      settings = without(settings, {"documentProperties"});
    } else {
      json_.null();
    }
    json_.breakLine();
    json_.key("settings");
    if (data) {
      values_.writeDictionary(settings, "NSMutableDictionary");
    } else {
      json_.null();
    }
  }

  void writeItems(const std::shared_ptr<OLNode>& root) {
    auto walk = source_.item ? OutlineWalk::from(source_.item) : OutlineWalk::below(root);
    size_t open = 0;  // items whose children are being written
    while (walk.item()) {
      json_.breakLine();
      json_.beginObject();
      const OLNode& item = *walk.item();
      writeData(item);
      if (item.storesExpanded()) json_.member("expanded", true);
      if (item.isOutlineStyle()) json_.member("outlineStyle", true);
      if (!item.hasChildrenArray()) {
        json_.key("children");
        json_.null();
      }
      const size_t level = walk.level();
      walk.next();
      if (walk.item() && walk.level() > level) {
        json_.key("children");
        json_.beginArray();
        ++open;
      } else {
        json_.endObject();
        for (const size_t next = walk.item() ? walk.level() : 0; open > next; --open) {
          json_.endArray();
          json_.endObject();
          flush();
        }
      }
      flush();
    }
  }

  /// Hands on what is ready when it is a piece.
  void flush() {
    if (out_.size() < kPiece) return;
    sink_(out_);
    out_.clear();
  }

  void writeData(const OLNode& item) {
    const std::optional<ns::Dictionary> data = item.dataInPassing();
    if (!data) {
      json_.key("title");
      json_.null();
      json_.key("data");
      return json_.null();
    }
    const ns::Value* fields[kFieldCount] = {};
    std::vector<ns::Dictionary::Entry> others;
    for (const ns::Dictionary::Entry& entry : *data) {
      const size_t field = fieldOf(entry.first);
      if (field < kFieldCount && !fields[field] && !entry.second.isNone()) {
        fields[field] = &entry.second;
      } else {
        others.push_back(entry);
      }
    }
    for (size_t i = 0; i < kFieldCount; ++i) {
      const bool isThere = fields[i] && values_.canWrite(*fields[i]);
      if (!isThere && i > 0) continue;
      json_.key(kItemFields[i].name);
      if (isThere) {
        values_.write(*fields[i]);
      } else {
        json_.null();
      }
    }
    const bool hasOtherClass =
        data->archivedClass() &&
        *data->archivedClass() != *json_names::wellKnownClass("NSMutableDictionary");
    if (others.empty() && !hasOtherClass) return;
    ns::Dictionary rest(std::move(others));
    rest.setArchivedClass(data->archivedClass());
    json_.key("data");
    values_.writeDictionary(rest, "NSMutableDictionary");
  }

  static size_t fieldOf(const ns::Value& key) {
    size_t field = 0;
    if (!key.isString() || key.archivedClass()) return kFieldCount;
    const ns::String name = key.string();
    while (field < kFieldCount && !(name == kItemFields[field].key)) ++field;
    return field;
  }

  /// Whether the first entry with a key has it as a string without a class of its own.
  static bool isFirstBare(const ns::Dictionary& dictionary, const char* key) {
    for (const auto& entry : dictionary) {
      if (entry.first.isString() && entry.first.string() == key)
        return !entry.first.archivedClass();
    }
    return false;
  }

  /// A dictionary without the first entry with a key.
  static ns::Dictionary without(const ns::Dictionary& dictionary, const ns::String& key) {
    std::vector<ns::Dictionary::Entry> entries(dictionary.begin(), dictionary.end());
    entries.erase(std::ranges::find_if(entries, [&](const auto& entry) {
      return entry.first.isString() && entry.first.string() == key;
    }));
    ns::Dictionary rest(std::move(entries));
    rest.setArchivedClass(dictionary.archivedClass());
    return rest;
  }

  void writeObjects() {
    json_.breakLine();
    json_.key("objects");
    json_.literal("\"");
    const ns::Data archive = objects_.archive();
    for (size_t at = 0; at < archive.length();) {
      constexpr size_t kBytes = kPiece / 4 * 3;  // a whole number of groups of three
      const size_t count = std::min(kBytes, archive.length() - at);
      appendBase64(out_, archive.view().substr(at, count));
      at += count;
      flush();
    }
    out_ += '"';
  }

  const ExportSource& source_;
  const TextSink& sink_;
  Losses losses_;
  std::string out_;
  JsonWriter json_{out_, JsonSurrogates::escaped};
  JsonObjects objects_;
  JsonValueWriter values_;
};

}  // namespace

Losses exportJson(const ExportSource& source, const TextSink& sink) {
  return JsonExport(source, sink).run();
}

}  // namespace tavlin
