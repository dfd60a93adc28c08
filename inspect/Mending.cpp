// From what is to be mended to the archive in which it is.

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "document/NodeArchiving.h"
#include "inspect/ArchivePatch.h"
#include "inspect/InspectedArchive.h"
#include "inspect/Mends.h"
#include "platform/archive/ArchivedClasses.h"
#include "platform/text/AttributeRuns.h"
#include "platform/text/AttributedString.h"
#include "platform/text/Font.h"

namespace tavlin {

namespace {

using Entry = ArchivePatch::Entry;

class Mending {
 public:
  Mending(const InspectedArchive& archive, const Mends& mends)
      : archive_(archive), mends_(mends), patch_(archive.archive()) {}

  ns::Data run() {
    for (const auto& [item, parent] : mends_.parents) {
      patch_.setReference(ArchivePatch::entry(item), kParentKey, ArchivePatch::entry(parent));
    }
    for (const auto& [item, places] : mends_.copies) copyListings(item, places);
    for (const auto& [text, runs] : mends_.texts) mendText(text, runs);
    for (const uint32_t number : mends_.kept) patch_.keep(number);
    return patch_.data();
  }

 private:
  // Items.

  /// A copy that has no children yet.
  struct Copy {
    uint32_t item;
    Entry entry;
  };

  Entry addItem(uint32_t item, Entry parent) {
    const Entry copy = patch_.addCopy(item);
    patch_.setReference(copy, kParentKey, parent);
    if (const uint32_t data = archive_.reference(archive_->record(item), kDataKey); data != 0) {
      patch_.setReference(copy, kDataKey, patch_.addCopy(data));
    }
    copies_.push_back({item, copy});
    return copy;
  }

  /// Gives an item a list of children of its own: of the present ones, but for copies of those at
  /// some places, in ascending order.
  void copyListings(uint32_t item, const std::vector<uint64_t>& places) {
    const uint32_t list = archive_.childrenOf(archive_->record(item));
    const ArchivedList children(*archive_, archive_->record(list));
    std::vector<Entry> entries;
    entries.reserve(children.count());
    size_t next = 0;
    for (uint64_t i = 0; i < children.count(); ++i) {
      const bool isCopied = next < places.size() && places[next] == i;
      next += isCopied ? 1 : 0;
      const uint32_t child = children.at(*archive_, i);
      entries.push_back(isCopied ? addItem(child, ArchivePatch::entry(item))
                                 : ArchivePatch::entry(child));
    }
    setChildren(ArchivePatch::entry(item), list, std::move(entries));
    while (!copies_.empty()) copyChildren();
  }

  /// Copies what is below one of the copies.
  void copyChildren() {
    const Copy parent = copies_.back();
    copies_.pop_back();
    const uint32_t list = archive_.childrenOf(archive_->record(parent.item));
    if (list == 0) return;
    const ArchivedList children(*archive_, archive_->record(list));
    std::vector<Entry> entries;
    entries.reserve(children.count());
    for (uint64_t i = 0; i < children.count(); ++i) {
      entries.push_back(addItem(children.at(*archive_, i), parent.entry));
    }
    setChildren(parent.entry, list, std::move(entries));
  }

  void setChildren(Entry item, uint32_t list, std::vector<Entry> children) {
    patch_.setReference(item, kChildrenKey, containerLike(list, std::move(children)));
  }

  /// A new array, or dictionary, that is like another one but for its elements, or values.
  Entry containerLike(uint32_t container, std::vector<Entry> elements) {
    const ns::KeyedArchive::Record record = archive_->record(container);
    Entry made;
    if (archive_->fieldForKey(record, "NS.objects")) {
      made = patch_.addCopy(container);
    } else {
      // a very old form
      made = patch_.addRecord(record.archivedClass->info);
      if (archive_->kind(container) == ns::Kind::dictionary) {
        const ArchivedList keys = ArchivedList::keysOf(*archive_, record);
        std::vector<Entry> names;
        for (uint64_t i = 0; i < keys.count(); ++i) {
          names.push_back(ArchivePatch::entry(keys.at(*archive_, i)));
        }
        patch_.setReferences(made, "NS.keys", std::move(names));
      }
    }
    patch_.setReferences(made, "NS.objects", std::move(elements));
    return made;
  }

  // Text.

  /// Attributes of a text, in a font in place of their own or in that.
  using Look = std::pair<uint32_t, std::optional<ns::String>>;

  void mendText(uint32_t number, const std::vector<MendedRun>& runs) {
    const InspectedArchive::Record record = archive_->record(number);
    const uint32_t attributes = archive_.reference(record, "NSAttributes");
    const Entry text = ArchivePatch::entry(number);
    if (archive_->kind(attributes) == ns::Kind::dictionary) {
      return patch_.setReference(text, "NSAttributes", looked({attributes, runs[0].fontName}));
    }
    const ArchivedList list(*archive_, archive_->record(attributes));
    if (list.count() == 0 && !runs.empty()) {
      // runs without attributes to choose from: text without attributes, as it is written
      patch_.setReference(text, "NSAttributes", plainAttributes());
      return patch_.remove(text, "NSAttributeInfo");
    }
    const uint32_t info = archive_.reference(record, "NSAttributeInfo");
    Looks looks(*this, list, runs);
    if (looks.isChanged()) {
      const Entry copy = patch_.addCopy(attributes);
      patch_.setReferences(copy, "NS.objects", looks.takeEntries());
      patch_.setReference(text, "NSAttributes", copy);
    }
    if (info != 0 && looks.runList() != *ns::archivedRunList(*archive_, info)) {
      patch_.setReference(text, "NSAttributeInfo", runList(info, looks.runList()));
    }
  }

  /// The list of attributes of a text with other fonts in it: each stays where it was, as long as
  /// some run has it as it was, or only one other font takes its place.
  class Looks {
   public:
    Looks(Mending& mending, const ArchivedList& list, const std::vector<MendedRun>& runs) {
      const ns::KeyedArchive& archive = *mending.archive_;
      std::vector<bool> isTaken(list.count());
      for (const MendedRun& run : runs) {
        if (!run.fontName) isTaken[run.attributes] = true;
      }
      for (uint64_t i = 0; i < list.count(); ++i) {
        entries_.push_back(ArchivePatch::entry(list.at(archive, i)));
      }
      std::map<std::pair<uint64_t, ns::String>, uint64_t> places;
      for (const MendedRun& run : runs) {
        uint64_t place = run.attributes;
        if (run.fontName) {
          const auto [found, isNew] = places.try_emplace({place, *run.fontName}, place);
          if (isNew) {
            const Entry look = mending.looked({list.at(archive, run.attributes), run.fontName});
            if (isTaken[place]) {
              found->second = entries_.size();
              entries_.push_back(look);
            } else {
              isTaken[place] = true;
              entries_[place] = look;
            }
            isChanged_ = true;
          }
          place = found->second;
        }
        ns::appendRunNumber(runList_, run.length);
        ns::appendRunNumber(runList_, place);
      }
    }
    [[nodiscard]] bool isChanged() const { return isChanged_; }
    [[nodiscard]] std::vector<Entry> takeEntries() { return std::move(entries_); }
    [[nodiscard]] const std::string& runList() const { return runList_; }

   private:
    std::vector<Entry> entries_;
    std::string runList_;
    bool isChanged_ = false;
  };

  Entry runList(uint32_t former, const std::string& bytes) {
    const ns::Value data{ns::Data(bytes)};
    const auto record = archive_.instance(former);
    if (!record) return patch_.addScalar(data);
    const Entry copy = patch_.addCopy(former);
    patch_.setScalar(copy, archive_->fieldForKey(*record, "NS.data") ? "NS.data" : "NS.bytes",
                     data);
    return copy;
  }

  Entry plainAttributes() {
    const Entry attributes = patch_.addRecord(ns::dictionaryClass());
    patch_.setReferences(attributes, "NS.keys", {});
    patch_.setReferences(attributes, "NS.objects", {});
    return attributes;
  }

  /// Texts that shared their attributes go on sharing them.
  Entry looked(const Look& look) {
    if (!look.second) return ArchivePatch::entry(look.first);
    const auto [known, isNew] = looks_.try_emplace(look);
    if (!isNew) return known->second;
    const InspectedArchive::Record record = archive_->record(look.first);
    const auto font = archive_.find(record, ns::kFontAttributeName);
    const ArchivedList values(*archive_, record);
    std::vector<Entry> entries;
    for (uint64_t i = 0; i < values.count(); ++i) {
      entries.push_back(i == font->place ? replacement(font->value, *look.second)
                                         : ArchivePatch::entry(values.at(*archive_, i)));
    }
    return known->second = containerLike(look.first, std::move(entries));
  }

  /// What Font::withName() makes of a font.
  Entry replacement(uint32_t font, const ns::String& name) {
    const auto [known, isNew] = fonts_.try_emplace({font, name});
    if (!isNew) return known->second;
    const Entry copy = patch_.addCopy(font);
    patch_.setReference(copy, "NSName", patch_.addScalar(ns::Value(name)));
    patch_.setScalar(copy, "NSfFlags", ns::Value(ns::Font::kFlagsOfNamedFont));
    patch_.remove(copy, "NSMatrix");
    return known->second = copy;
  }

  const InspectedArchive& archive_;
  const Mends& mends_;
  ArchivePatch patch_;
  std::vector<Copy> copies_;
  std::map<Look, Entry> looks_;
  std::map<std::pair<uint32_t, ns::String>, Entry> fonts_;
};

}  // namespace

ns::Data mendedArchive(const InspectedArchive& archive, const Mends& mends) {
  return Mending(archive, mends).run();
}

}  // namespace tavlin
