#include "inspect/PropertiesInspection.h"

#include <optional>

#include "document/NodeArchiving.h"

namespace tavlin {

namespace {

constexpr const char* kTexts[] = {"title", "copyright", "subject", "comment"};
constexpr const char* kLists[] = {"authors", "organizations", "keywords"};

class PropertiesInspection {
 public:
  PropertiesInspection(const InspectedArchive& archive, FindingList& findings)
      : archive_(archive), findings_(findings) {}

  void inspect(uint32_t root) {
    const uint32_t data = archive_.reference(archive_->record(root), kDataKey);
    if (data == 0) return;
    const uint32_t properties = valueIn(archive_->record(data), "documentProperties");
    if (properties == 0) return;
    const ns::Kind kind = archive_->kind(properties);
    if (kind != ns::Kind::dictionary) {
      return fail("the document properties are", kind, "a dictionary");
    }
    const InspectedArchive::Record record = archive_->record(properties);
    for (const char* key : kTexts)
      inspectText("\"" + std::string(key) + "\"", valueIn(record, key));
    for (const char* key : kLists) inspectList(key, valueIn(record, key));
  }

 private:
  /// The number of the value under a key; 0 for none and for null.
  [[nodiscard]] uint32_t valueIn(const InspectedArchive::Record& dictionary,
                                 const char* key) const {
    const auto found = archive_.find(dictionary, key);
    return found && !archive_->isNull(found->value) ? found->value : 0;
  }
  void fail(const std::string& what, ns::Kind kind, const char* expected) {
    findings_.add({{},
                   FindingCode::properties,
                   what + " " + ns::describe(kind) + " and not " + expected,
                   {}});
  }
  /// `what` names the value; programs take plain and attributed text.
  void inspectText(const std::string& what, uint32_t number) {
    if (number == 0) return;
    const ns::Kind kind = archive_->kind(number);
    if (kind == ns::Kind::string) return;
    const auto record = archive_.instance(number);
    if (record && archive_.isAttributedString(*record)) return;
    fail("of the document properties, " + what + " is", kind, "a string");
  }
  void inspectList(const std::string& key, uint32_t number) {
    if (number == 0) return;
    const ns::Kind kind = archive_->kind(number);
    if (kind != ns::Kind::array) {
      return fail("of the document properties, \"" + key + "\" is", kind, "an array");
    }
    const ArchivedList list(*archive_, archive_->record(number));
    for (uint64_t i = 0; i < list.count(); ++i) {
      const uint32_t element = list.at(*archive_, i);
      const std::string what = "element " + std::to_string(i + 1) + " of \"" + key + "\"";
      if (archive_->isNull(element)) {
        fail("of the document properties, " + what + " is", ns::Kind::none, "a string");
      } else {
        inspectText(what, element);
      }
    }
  }

  const InspectedArchive& archive_;
  FindingList& findings_;
};

}  // namespace

void inspectProperties(const InspectedArchive& archive, uint32_t root, FindingList& findings) {
  PropertiesInspection(archive, findings).inspect(root);
}

}  // namespace tavlin
