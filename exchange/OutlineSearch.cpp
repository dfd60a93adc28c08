#include "exchange/OutlineSearch.h"

#include <re2/re2.h>

#include "exchange/DerivedState.h"
#include "exchange/OutlineWalk.h"

namespace tavlin {

namespace {

bool isWanted(const std::shared_ptr<OLNode>& item, SearchOptions::Marks marks) {
  if (marks == SearchOptions::Marks::any) return true;
  if (!showsCheckMark(item)) return false;
  return item->dataForKey("checkStatus").boolValue() == (marks == SearchOptions::Marks::checked);
}

/// Looks at one item after another, with memory that they share.
class Searcher {
 public:
  Searcher(const TextPattern& pattern, const std::function<bool(const SearchHit&)>& onHit)
      : pattern_(pattern), onHit_(onHit) {}

  [[nodiscard]] bool goesOn() const { return goesOn_; }

  void begin() { hasPath_ = isHit_ = false; }
  [[nodiscard]] bool isHit() const { return isHit_; }

  void lookAtTitle(const OutlineWalk& walk) {
    text_.clear();
    OLTree::stringForKeyByItem("title", walk.item()).appendUtf8To(text_);
    lookAt(walk, text_, false);
  }

  void lookAtNote(const OutlineWalk& walk) {
    const ns::String note = OLTree::stringForKeyByItem("note", walk.item());
    if (note.empty() && OLTree::objectValueForKeyByItem("note", walk.item()).isNone()) return;
    text_.clear();
    note.appendUtf8To(text_);
    std::string_view rest = text_;
    while (goesOn_) {
      const size_t end = rest.find('\n');
      lookAt(walk, rest.substr(0, end), true);
      if (end == std::string_view::npos) return;
      rest.remove_prefix(end + 1);
    }
  }

 private:
  void lookAt(const OutlineWalk& walk, std::string_view text, bool isNote) {
    if (!goesOn_ || !pattern_.matches(text)) return;
    if (!hasPath_) path_ = walk.path();
    hasPath_ = isHit_ = true;
    const std::string line(text);
    goesOn_ = onHit_({path_, isNote, line});
  }

  const TextPattern& pattern_;
  const std::function<bool(const SearchHit&)>& onHit_;
  std::string text_;
  std::string path_;
  bool hasPath_ = false;
  bool isHit_ = false;
  bool goesOn_ = true;
};

}  // namespace

TextPattern::TextPattern(const std::string& pattern, const Options& options) {
  re2::RE2::Options settings;
  settings.set_log_errors(false);
  settings.set_case_sensitive(!options.ignoresCase);
  std::string text = options.isLiteral ? re2::RE2::QuoteMeta(pattern) : pattern;
  // checked on its own first, so that the reason speaks of what was given
  expression_ = std::make_unique<re2::RE2>(text, settings);
  if (!expression_->ok()) throw PatternException(expression_->error());
  if (!options.matchesWords) return;
  // letters and digits of all scripts make words, which \b knows of ASCII only
  group_ = 1;
  text = "(?:^|[^\\pL\\pM\\pN_])(" + text + ")(?:$|[^\\pL\\pM\\pN_])";
  expression_ = std::make_unique<re2::RE2>(text, settings);
  if (!expression_->ok()) throw PatternException(expression_->error());
}

TextPattern::~TextPattern() = default;

bool TextPattern::matches(std::string_view utf8) const {
  return expression_->Match(re2::StringPiece(utf8.data(), utf8.size()), 0, utf8.size(),
                            re2::RE2::UNANCHORED, nullptr, 0);
}

std::vector<std::pair<size_t, size_t>> TextPattern::matchesIn(std::string_view utf8) const {
  std::vector<std::pair<size_t, size_t>> found;
  const re2::StringPiece text(utf8.data(), utf8.size());
  for (size_t at = 0; at <= utf8.size();) {
    re2::StringPiece parts[2];
    if (!expression_->Match(text, at, utf8.size(), re2::RE2::UNANCHORED, parts, group_ + 1)) break;
    const size_t begin = static_cast<size_t>(parts[group_].data() - utf8.data());
    const size_t end = begin + parts[group_].size();
    found.emplace_back(begin, end);
    at = end > begin ? end : end + 1;
    // the middle of a character is no place to go on from
    while (at < utf8.size() && (static_cast<unsigned char>(utf8[at]) & 0xC0U) == 0x80) ++at;
  }
  return found;
}

size_t searchOutline(const OLTree& tree, const TextPattern& pattern, const SearchOptions& options,
                     const std::function<bool(const SearchHit& hit)>& onHit) {
  size_t items = 0;
  Searcher searcher(pattern, onHit);
  for (auto walk = OutlineWalk::below(tree.rootNode()); walk.item(); walk.next()) {
    if (!isWanted(walk.item(), options.marks)) continue;
    searcher.begin();
    if (options.where != SearchOptions::Where::note) searcher.lookAtTitle(walk);
    if (options.where != SearchOptions::Where::title) searcher.lookAtNote(walk);
    if (searcher.isHit()) ++items;
    if (!searcher.goesOn()) break;
  }
  return items;
}

}  // namespace tavlin
