#include "exchange/MarkdownInline.h"

#include <algorithm>

#include "exchange/ItemContent.h"
#include "exchange/MarkdownCode.h"
#include "exchange/MarkdownEscapes.h"

namespace tavlin {

namespace {

// Bold, italic and struck-out text stands between delimiters, which count as such only where they
// flank a word: a delimiter that opens must not stand before a blank, and before punctuation only
// behind a blank or punctuation; one that closes the other way round.  Text knows nothing of this.
// A character reference helps: it is punctuation on both sides, whatever it stands for.

/// Neighbours that share all but fixed width, and so their delimiters.
struct Group {
  size_t begin;  // of spans
  size_t end;
  std::string delimiter;  // "**", "_", empty where neither bold nor italic
  bool isStruckOut;
  const ns::String* link;  // never none, empty where it is no link
  bool refersToFirst = false;
  bool refersToLast = false;
};

using Edge = MarkdownEdge;

bool mayBeBlank(Edge edge) { return edge == Edge::blank || edge == Edge::unsureBlank; }

class Paragraph {
 public:
  Paragraph(std::string& out, const std::vector<MarkdownSpan>& spans, size_t indentation,
            Losses& losses)
      : out_(out), spans_(spans), indentation_(indentation), losses_(losses) {}

  void write() {
    makeGroups();
    for (size_t i = 0; i < groups_.size(); ++i) {
      decideEdges(i > 0 ? &groups_[i - 1] : nullptr, groups_[i]);
    }
    decideEnd(groups_.back());
    for (size_t i = 0; i < groups_.size(); ++i) {
      writeGroup(i > 0 ? &groups_[i - 1] : nullptr, groups_[i],
                 i + 1 < groups_.size() ? &groups_[i + 1] : nullptr);
    }
    losses_.attributes += waitingBreaks_;
  }

 private:
  void makeGroups() {
    for (size_t i = 0; i < spans_.size(); ++i) {
      const TextStyle& style = spans_[i].style;
      if (!groups_.empty()) {
        Group& last = groups_.back();
        const TextStyle& before = spans_[i - 1].style;
        if (before.isBold == style.isBold && before.isItalic == style.isItalic &&
            before.isStruckOut == style.isStruckOut && before.link == style.link) {
          last.end = i + 1;
          continue;
        }
      }
      groups_.push_back({i, i + 1, delimiterFor(style), style.isStruckOut, &style.link});
    }
  }

  /// Stars, but underscores next to stars, which would run together.
  [[nodiscard]] std::string delimiterFor(const TextStyle& style) const {
    const size_t length = (style.isBold ? 2 : 0) + (style.isItalic ? 1 : 0);
    const bool isNextToStars = !groups_.empty() && groups_.back().delimiter.starts_with('*');
    return std::string(length, isNextToStars ? '_' : '*');
  }

  [[nodiscard]] Edge leftEdge(const Group& group) const {
    const std::string_view text = spans_[group.begin].text;
    const size_t length = text.size() - textBehindFirst(text).size();
    return edgeOf(spans_[group.begin], text.substr(0, length));
  }
  [[nodiscard]] Edge rightEdge(const Group& group) const {
    const std::string_view text = spans_[group.end - 1].text;
    return edgeOf(spans_[group.end - 1], text.substr(textBeforeLast(text).size()));
  }

  /// What the character at an end of a span is, as it is written there.
  static Edge edgeOf(const MarkdownSpan& span, std::string_view character) {
    if (isCodeAt(span, character)) return Edge::punctuation;
    const Edge edge = markdownEdgeOf(firstCharacter(character));
    // a single one may have to be a reference for the sake of the span's other end
    return edge == Edge::letter && character == span.text ? Edge::unsure : edge;
  }

  /// Whether a character at an end of a span stands in backticks.
  static bool isCodeAt(const MarkdownSpan& span, std::string_view character) {
    return span.style.isFixedWidth && character != "\n" && character != "\r" &&
           !markdownFenceFor(span.text).empty();
  }

  static bool isDelimited(const Group& group) {
    return group.isStruckOut || !group.delimiter.empty();
  }

  /// Decides what has to be written as a reference where two groups meet.
  void decideEdges(Group* left, Group& right) const {
    const bool isStrikeEdge = (left && left->isStruckOut) != right.isStruckOut ||
                              (left && isLinkEdge(*left, right) && right.isStruckOut);
    const bool leftEnds = left && (!left->delimiter.empty() || (left->isStruckOut && isStrikeEdge));
    const bool rightBegins = !right.delimiter.empty() || (right.isStruckOut && isStrikeEdge);
    // a blank never stands at the inner side of a delimiter
    if (leftEnds && mayBeBlank(rightEdge(*left))) left->refersToLast = true;
    if (rightBegins && mayBeBlank(leftEdge(right))) right.refersToFirst = true;
    // nor does a line break at the edge of a link, where it would have the look of neither side
    if (left && endsLink(*left, &right) && spans_[left->end - 1].text.back() == '\n') {
      left->refersToLast = true;
    }
    if (endsLink(right, left) && spans_[right.begin].text.front() == '\n') {
      right.refersToFirst = true;
    }
    // the beginning of a paragraph is as good as a blank, a bracket of a link is punctuation
    if (!left || isLinkEdge(*left, right) || (!leftEnds && !rightBegins)) return;
    Side leftSide{*left, rightEdge(*left), left->refersToLast};
    Side rightSide{right, leftEdge(right), right.refersToFirst};
    if (isStrikeEdge) {
      decideStrike(left->isStruckOut ? leftSide : rightSide,
                   left->isStruckOut ? rightSide : leftSide);
    } else if (left->delimiter.empty()) {
      if (!standsAlone(rightSide)) referTo(leftSide);
    } else if (right.delimiter.empty()) {
      if (!standsAlone(leftSide)) referTo(rightSide);
    }
  }

  /// A group where it meets another one.
  struct Side {
    const Group& group;
    Edge edge;
    bool& refers;
  };

  /// Readers look past tildes for what is beside stars and underscores.
  static void decideStrike(Side struck, Side other) {
    const bool isStruckPlain = struck.group.delimiter.empty();
    const bool isOtherPlain = other.group.delimiter.empty();
    if (isOtherPlain) {
      if (!isStruckPlain || struck.edge != Edge::letter) referTo(other);
    } else if (isStruckPlain) {
      if (!standsAlone(other)) referTo(struck);
    }
  }

  /// Whether the delimiter counts, whatever stands at its outer side.
  static bool standsAlone(const Side& side) {
    return side.group.delimiter[0] == '*' && side.edge == Edge::letter;
  }

  static void referTo(Side& side) {
    if (side.edge != Edge::blank && side.edge != Edge::punctuation) side.refers = true;
  }

  void decideEnd(Group& last) const {
    if (endsLink(last, nullptr) && spans_[last.end - 1].text.back() == '\n') {
      last.refersToLast = true;
    }
    if (isDelimited(last) && mayBeBlank(rightEdge(last))) last.refersToLast = true;
  }

  /// Whether the group is of a link that does not go on in its neighbour, which may be none.
  static bool endsLink(const Group& group, const Group* neighbour) {
    return !group.link->empty() && (!neighbour || isLinkEdge(group, *neighbour));
  }

  static bool isLinkEdge(const Group& left, const Group& right) {
    return *left.link != *right.link;
  }

  void writeGroup(const Group* before, const Group& group, const Group* after) {
    const bool opensLink = !before || isLinkEdge(*before, group);
    const bool closesLink = !after || isLinkEdge(group, *after);
    if (opensLink && !group.link->empty()) out_ += '[';
    if (group.isStruckOut && (opensLink || !before->isStruckOut)) out_ += "~~";
    out_ += group.delimiter;
    for (size_t i = group.begin; i < group.end; ++i) writeSpan(group, i);
    out_ += group.delimiter;
    if (group.isStruckOut && (closesLink || !after->isStruckOut)) out_ += "~~";
    if (closesLink && !group.link->empty()) {
      out_ += "](";
      const std::string_view link = utf8_.of(*group.link, losses_);
      losses_.characters += static_cast<uint64_t>(std::count(link.begin(), link.end(), '\0'));
      appendMarkdownDestination(out_, link);
      out_ += ')';
    }
  }

  void writeSpan(const Group& group, size_t index) {
    const MarkdownSpan& span = spans_[index];
    MarkdownPlace place;
    place.isAtLineStart = out_.empty() || isAtLineStart();
    place.isLast = index + 1 == spans_.size() && !isDelimited(group) && group.link->empty();
    place.refersToFirst = group.refersToFirst && index == group.begin;
    place.refersToLast = group.refersToLast && index + 1 == group.end;
    if (span.style.isFixedWidth) {
      writeCode(span.text, place);
    } else {
      const bool isBreak = span.text.find_first_not_of('\n') == std::string_view::npos;
      if (!isBreak || place.refersToFirst || place.refersToLast) endBreaks(false);
      appendMarkdownText(out_, span.text, place, indentation_);
    }
  }

  /// Whether the text so far ends with a break and the blanks that indent the next line.
  [[nodiscard]] bool isAtLineStart() const {
    const size_t last = out_.find_last_not_of(' ');
    return last == std::string::npos || out_[last] == '\n';
  }

  /// Code spans, between them what none can hold.
  void writeCode(std::string_view text, const MarkdownPlace& place) {
    const std::string fence = markdownFenceFor(text);
    if (fence.empty()) {
      endBreaks(false);
      ++losses_.attributes;
      return appendMarkdownText(out_, text, place, indentation_);
    }
    for (size_t at = 0; at < text.size();) {
      const size_t begin = at;
      at = std::min(text.find_first_of("\n\r", begin), text.size());
      if (at > begin) {
        endBreaks(true);
        appendMarkdownCode(out_, text.substr(begin, at - begin), fence);
        continue;
      }
      MarkdownPlace between;
      at = std::min(text.find_first_not_of("\n\r", begin), text.size());
      between.isAtLineStart = isAtLineStart();
      between.isLast = place.isLast && at == text.size();
      between.refersToFirst = place.refersToFirst && begin == 0;
      between.refersToLast = place.refersToLast && at == text.size();
      const std::string_view breaks = text.substr(begin, at - begin);
      ++waitingBreaks_;
      if (between.isLast || between.refersToFirst || between.refersToLast ||
          breaks.find('\r') != std::string_view::npos) {
        endBreaks(false);
      }
      appendMarkdownText(out_, breaks, between, indentation_);
    }
  }

  /// Something else than a line break follows.  Breaks of fixed width come back as such only
  /// between code spans.
  void endBreaks(bool isCode) {
    if (!isCode || !isBehindCode_) losses_.attributes += waitingBreaks_;
    waitingBreaks_ = 0;
    isBehindCode_ = isCode;
  }

  std::string& out_;
  const std::vector<MarkdownSpan>& spans_;
  size_t indentation_;
  Losses& losses_;
  Utf8Text utf8_;
  std::vector<Group> groups_;
  uint64_t waitingBreaks_ = 0;  // of fixed width, that nothing has followed yet
  bool isBehindCode_ = false;   // but for breaks
};

}  // namespace

void appendMarkdownParagraph(std::string& out, const std::vector<MarkdownSpan>& spans,
                             size_t indentation, Losses& losses) {
  if (spans.empty()) return;
  if (spans.size() == 1 && spans.front().style == TextStyle()) {
    appendMarkdownText(out, spans.front().text, {true, true, false, false}, indentation);
    return;
  }
  std::string paragraph;
  Paragraph(paragraph, spans, indentation, losses).write();
  out += paragraph;
}

}  // namespace tavlin
