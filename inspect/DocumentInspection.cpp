#include "inspect/DocumentInspection.h"

#include <algorithm>

#include "document/NodeArchiving.h"
#include "inspect/FindingList.h"
#include "inspect/InspectedArchive.h"
#include "inspect/ItemWalk.h"
#include "inspect/Mends.h"
#include "inspect/PropertiesInspection.h"
#include "inspect/TextInspection.h"
#include "inspect/ValueWalk.h"
#include "platform/archive/FieldReader.h"

namespace tavlin {

struct DocumentInspection::Inspected {
  InspectedArchive archive;
  Mends mends;
};

namespace {

constexpr char kNoTree[] = "keyed archive: the tree of a tree controller is not an OLTree";
constexpr char kNoRoot[] = "keyed archive: the root of an OLTree is not an OLNode";

/// The parts of one inspection, in the order in which they need each other.
class Inspector {
 public:
  Inspector(const InspectedArchive& archive, FindingList& findings, Mends& mends)
      : archive_(archive),
        findings_(findings),
        texts_(archive, findings, mends),
        values_(archive, texts_),
        items_(archive, values_, findings, mends) {}

  void run() {
    controller_ = archive_->root();
    if (archive_->isNull(controller_)) return refuse("Document has something corrupted");
    const auto record = archive_.instance(controller_);
    if (!record || !archive_.isTreeController(*record)) {
      return refuse("Document contains unacceptable data");
    }
    tree_ = objectUnder(controller_, kTreeKey, &InspectedArchive::isTree, kNoTree);
    const uint32_t root =
        tree_ == 0 ? 0 : objectUnder(tree_, kRootKey, &InspectedArchive::isNode, kNoRoot);
    if (root == 0) {
      if (!findings_.has(FindingCode::archive)) {
        refuse("the document has no items, not even a root");
      }
    } else {
      inspectProperties(archive_, root, findings_);
      items_.walkOutline(root);
    }
    values_.passReference(controller_);
    for (const auto& entry : archive_->otherTopEntries()) values_.passTop(entry.object);
    while (const uint32_t object = values_.takeObject()) passObject(object);
    values_.passLinks();
    if (const uint64_t count = values_.unmetCount(); count > 0) {
      findings_.add({{},
                     FindingCode::unused,
                     count == 1
                         ? "an entry of the archive that nothing refers to"
                         : std::to_string(count) + " entries of the archive that nothing refers to",
                     {}});
    }
  }

  [[nodiscard]] const ItemPlaces& places() const { return items_.places(); }

 private:
  void refuse(const char* what) { findings_.add({{}, FindingCode::archive, what, {}}); }

  /// An object that is no item of the outline.
  void passObject(uint32_t number) {
    const InspectedArchive::Record record = archive_->record(number);
    if (archive_.isNode(record)) return items_.walkOther(number);
    if (number != controller_ && number != tree_) {
      if (archive_.isTree(record)) {
        objectUnder(number, kRootKey, &InspectedArchive::isNode, kNoRoot);
      } else {
        objectUnder(number, kTreeKey, &InspectedArchive::isTree, kNoTree);
      }
    }
    values_.passObject(number, record, {});
  }

  /// The object of a class under a key; 0 where there is none, or another, which is then found.
  uint32_t objectUnder(uint32_t number, const char* key,
                       bool (InspectedArchive::*isOfClass)(const InspectedArchive::Record&) const,
                       const char* refusal) {
    try {
      const ns::FieldReader fields(*archive_, number);
      const uint32_t target = fields.target(key);
      if (archive_->isNull(target)) return 0;
      const ns::Kind kind = archive_->kind(target);
      if (kind != ns::Kind::object) fields.failKind(key, kind, "an object of the document");
      if ((archive_.*isOfClass)(archive_->record(target))) return target;
      refuse(refusal);
    } catch (const ns::ArchiveException& exception) {
      refuse(exception.what());
    }
    return 0;
  }
  const InspectedArchive& archive_;
  FindingList& findings_;
  TextInspection texts_;
  ValueWalk values_;
  ItemWalk items_;
  uint32_t controller_ = 0;  // the document's, and its tree
  uint32_t tree_ = 0;
};

}  // namespace

std::string_view nameOf(FindingCode code) {
  switch (code) {
    case FindingCode::archive:
      return "archive";
    case FindingCode::parentLink:
      return "parent-link";
    case FindingCode::listedTwice:
      return "listed-twice";
    case FindingCode::properties:
      return "properties";
    case FindingCode::runs:
      return "runs";
    case FindingCode::font:
      return "font";
    case FindingCode::unused:
      return "unused";
    case FindingCode::version:
      break;
  }
  return "version";
}

std::string_view nameOf(FindingSeverity severity) {
  switch (severity) {
    case FindingSeverity::error:
      return "error";
    case FindingSeverity::warning:
      return "warning";
    case FindingSeverity::note:
      break;
  }
  return "note";
}

FindingSeverity severityOf(FindingCode code) {
  switch (code) {
    case FindingCode::font:
      return FindingSeverity::warning;
    case FindingCode::unused:
    case FindingCode::version:
      return FindingSeverity::note;
    default:
      return FindingSeverity::error;
  }
}

DocumentInspection::DocumentInspection(const ns::Data& file) {
  FindingList findings;
  try {
    if (file.empty()) throw ns::ArchiveException("Document contains no data");
    inspected_ = std::make_unique<Inspected>(Inspected{InspectedArchive(file), {}});
    Inspector inspector(inspected_->archive, findings, inspected_->mends);
    inspector.run();
    if (findings.has(FindingCode::archive)) {
      // what a malformed archive was meant to say, nobody knows
      findings.refuseRepair();
      inspected_->mends = {};
    }
    findings_ = findings.findings(inspector.places());
  } catch (const ns::ArchiveException& exception) {
    inspected_.reset();
    findings_ = {{{}, FindingCode::archive, exception.what(), {}, false}};
  }
}

DocumentInspection::~DocumentInspection() = default;
DocumentInspection::DocumentInspection(DocumentInspection&&) noexcept = default;
DocumentInspection& DocumentInspection::operator=(DocumentInspection&&) noexcept = default;

uint64_t DocumentInspection::repairableCount() const {
  uint64_t count = 0;
  for (const Finding& each : findings_) count += each.isRepairable ? each.count : 0;
  return count;
}

uint64_t DocumentInspection::faultCount() const {
  uint64_t count = 0;
  for (const Finding& each : findings_) {
    count += each.severity() == FindingSeverity::note ? 0 : each.count;
  }
  return count;
}

std::optional<ns::Data> DocumentInspection::repaired() const {
  if (!inspected_ || inspected_->mends.empty()) return std::nullopt;
  ns::Data mended = mendedArchive(inspected_->archive, inspected_->mends);
  const DocumentInspection after(mended);
  if (after.faultCount() + repairableCount() > faultCount()) {
    throw ns::Exception("the mended document would not be sound: " + after.findings().front().text);
  }
  return mended;
}

}  // namespace tavlin
