#include "edit/KeywordEdits.h"

#include <algorithm>

#include "document/SanitizeKeywords.h"
#include "edit/DocumentEditor.h"
#include "edit/PropertyEdits.h"
#include "platform/foundation/Array.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

namespace {

constexpr const char* kKeywords = "keywords";

bool isKeyword(const ns::Value& value, const ns::String& keyword) {
  if (value.isString()) return value.string() == keyword;
  return value.kind() == ns::Kind::attributedString &&
         ns::AttributedString(value).string() == keyword;
}

/// The keyword, or what it would have been cleaned to.
bool isNamedBy(const ns::Value& value, const ns::String& given) {
  return isKeyword(value, given) || isKeyword(value, sanitizedKeyword(given));
}

using Values = std::vector<ns::Value>;

bool contains(const Values& list, const ns::String& keyword) {
  return std::ranges::any_of(list, [&](const auto& value) { return isKeyword(value, keyword); });
}

Values added(Values list, const std::vector<ns::String>& keywords) {
  for (const ns::String& keyword : keywords) {
    const ns::String clean = sanitizedKeyword(keyword);
    if (!contains(list, clean)) list.emplace_back(clean);
  }
  return list;
}

Values removed(Values list, const std::vector<ns::String>& keywords) {
  std::erase_if(list, [&](const ns::Value& value) {
    return std::ranges::any_of(keywords,
                               [&](const auto& keyword) { return isNamedBy(value, keyword); });
  });
  return list;
}

Values replaced(const Values& former, const std::vector<ns::String>& keywords) {
  Values list;
  for (const ns::String& keyword : keywords) list.emplace_back(sanitizedKeyword(keyword));
  const bool isSame = std::ranges::equal(former, list, [](const auto& was, const auto& given) {
    return isKeyword(was, given.string());
  });
  return isSame ? former : list;
}

Values renamed(const Values& former, const ns::String& from, const ns::String& to) {
  const ns::String clean = sanitizedKeyword(to);
  bool isThere = false;
  Values list;
  for (const ns::Value& value : former) {
    // what already is the new name stays, also where the old name is another spelling of it
    isThere = isThere || isKeyword(value, clean);
  }
  for (const ns::Value& value : former) {
    if (isKeyword(value, clean) || !isNamedBy(value, from)) {
      list.push_back(value);
    } else if (!isThere) {
      list.emplace_back(clean);
      isThere = true;
    }
  }
  return list;
}

Values edited(const Values& former, const KeywordEdit& edit) {
  switch (edit.kind) {
    case KeywordEdit::Kind::add:
      return added(former, edit.keywords);
    case KeywordEdit::Kind::remove:
      return removed(former, edit.keywords);
    case KeywordEdit::Kind::set:
      return replaced(former, edit.keywords);
    case KeywordEdit::Kind::rename:
      break;
  }
  return renamed(former, edit.keywords.at(0), edit.keywords.at(1));
}

bool areSame(const Values& one, const Values& other) {
  return std::ranges::equal(one, other,
                            [](const auto& a, const auto& b) { return a.body() == b.body(); });
}

}  // namespace

bool editKeywords(OLDataManager& document, const KeywordEdit& edit) {
  ns::Dictionary properties = propertiesForEditing(document);
  const ns::Value found = properties.objectForKey(kKeywords);
  const bool isList = found.isNone() || found.isArray();
  if (!isList && edit.kind != KeywordEdit::Kind::set) {
    throw EditRefusal(std::string("the keywords are ") + ns::describe(found.kind()) +
                      " and not a list");
  }
  const ns::Array former = found.array();
  const Values list = edited(former.values(), edit);
  if (isList && areSame(former.values(), list)) return false;
  ns::Array keywords(list);
  if (found.isArray()) keywords.setArchivedClass(former.archivedClass());
  properties.setObjectForKey(ns::Value(keywords), kKeywords);
  setProperties(document, properties);
  return true;
}

}  // namespace tavlin
