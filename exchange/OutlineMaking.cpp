#include "exchange/OutlineMaking.h"

#include <algorithm>
#include <string>

#include "exchange/OutlineWalk.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/foundation/AsciiCheck.h"

namespace tavlin {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// Raises where a line is no UTF-8, which a line feed never divides.
void checkUtf8(std::string_view text) {
  for (uint64_t line = 1; !text.empty(); ++line) {
    const size_t length = std::min(text.find('\n'), text.size());
    const std::string_view bytes = text.substr(0, length);
    if (!ns::isAllAscii(bytes) && !ns::String::fromUtf8(bytes)) {
      throw ExchangeException("line " + std::to_string(line) + ": not UTF-8");
    }
    text.remove_prefix(std::min(length + 1, text.size()));
  }
}

void appendUtf16(std::string& out, std::string_view bytes, bool isBigEndian) {
  std::u16string units(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i) {
    const auto first = static_cast<unsigned char>(bytes[2 * i]);
    const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
    units[i] = static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
  }
  ns::String(std::u16string_view(units)).appendUtf8To(out);
}

}  // namespace

OutlineMaking::OutlineMaking() {
  auto controller = OLTreeUndoController::create();
  root_ = controller->tree()->rootNode();
  imported_.document = OLDataManager::create();
  imported_.document->setTreeController(controller);
}

std::shared_ptr<OLNode> OutlineMaking::addItem(const std::shared_ptr<OLNode>& parent) {
  std::shared_ptr<OLNode> item = OLNode::create();
  parent->addChild(item);
  return item;
}

void OutlineMaking::setTitle(OLNode& item, std::string_view utf8) {
  item.setDataForKey(ns::String(utf8), "title");
}

void OutlineMaking::setNote(OLNode& item, std::string_view utf8) {
  if (!utf8.empty()) item.setDataForKey(ns::String(utf8), "note");
}

void OutlineMaking::setMark(OLNode& item, bool isChecked) {
  hasMarks_ = true;
  if (isChecked) item.setDataForKey(true, "checkStatus");
}

void OutlineMaking::expandAll() {
  for (auto walk = OutlineWalk::below(root_); walk.item(); walk.next()) {
    if (walk.item()->countChildren() > 0) walk.item()->setIsExpanded(true);
  }
}

Imported OutlineMaking::finish() {
  if (hasMarks_) {
    for (const auto& item : unmarked_) item->setDataForKey(false, "showCheckState");
  }
  return std::move(imported_);
}

void checkIndentation(const ExportSource& source, uint64_t bytes, uint64_t most,
                      std::string_view format) {
  const auto root = source.document->rootItem();
  uint64_t sum = 0;
  uint64_t deepest = 0;
  for (auto walk = source.item ? OutlineWalk::from(source.item) : OutlineWalk::below(root);
       walk.item(); walk.next()) {
    sum += bytes * walk.level();
    deepest = std::max<uint64_t>(deepest, walk.level() + 1);
  }
  if (sum <= most) return;
  throw ExchangeException("too deep for " + std::string(format) + ": to indent " +
                          std::to_string(deepest) + " levels would take " +
                          std::to_string(sum >> 20) + " MB");
}

std::string_view textOfContent(std::string_view content, std::string& storage) {
  const bool isBigEndian = content.starts_with("\xFE\xFF");
  if (isBigEndian || content.starts_with("\xFF\xFE")) {
    if (content.size() % 2 != 0) throw ExchangeException("UTF-16 that is cut off");
    appendUtf16(storage, content.substr(2), isBigEndian);
    return storage;
  }
  if (content.starts_with(kUtf8Mark)) content.remove_prefix(kUtf8Mark.size());
  checkUtf8(content);
  return content;
}

}  // namespace tavlin
