#include <expat.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "exchange/ItemContent.h"
#include "exchange/OpmlExpansion.h"
#include "exchange/OpmlFormat.h"
#include "exchange/OutlineMaking.h"
#include "exchange/TextEncoding.h"

namespace tavlin {

namespace {

constexpr char kNamespaceEnd = '\n';  // parts a namespace from a name; no namespace has it

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

/// Raised from within for an encoding that the parser does not know.
struct UnknownEncoding {
  std::string name;
};

class OpmlReader {
 public:
  /// `encoding` stands for what the text says of itself; none leaves it to that.
  explicit OpmlReader(const char* encoding) : parser_(XML_ParserCreateNS(encoding, kNamespaceEnd)) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), startHandler, endHandler);
    XML_SetCharacterDataHandler(parser_.get(), textHandler);
    XML_SetSkippedEntityHandler(parser_.get(), skippedHandler);
    XML_SetStartDoctypeDeclHandler(parser_.get(), doctypeHandler);
    XML_SetEntityDeclHandler(parser_.get(), entityHandler);
    // the user data of this one handler is the parser itself, unless said otherwise
    XML_SetExternalEntityRefHandler(parser_.get(), externalHandler);
    XML_SetExternalEntityRefHandlerArg(parser_.get(), this);
    XML_SetUnknownEncodingHandler(parser_.get(), encodingHandler, this);
  }

  Imported read(std::string_view content) {
    constexpr size_t kPiece = size_t{1} << 20;
    content_ = content;
    for (size_t at = 0; at <= content.size(); at += kPiece) {
      const size_t length = std::min(kPiece, content.size() - at);
      const bool isLast = at + length == content.size();
      const XML_Status status =
          XML_Parse(parser_.get(), content.data() + at, static_cast<int>(length), isLast);
      if (exception_) std::rethrow_exception(exception_);
      if (!error_.empty()) refuse(error_);
      if (status != XML_STATUS_OK) refuse(XML_ErrorString(XML_GetErrorCode(parser_.get())));
      if (isLast) break;
    }
    setDocumentProperties(making_.document(), properties_);
    if (hasExpansion_) {
      expandOpmlLines(making_.root(), expansion_);
    } else {
      making_.expandAll();
    }
    return making_.finish();
  }

 private:
  enum class Element : uint8_t { opml, head, title, owner, expansion, body, outline, other };
  struct Open {
    Element element;
    std::shared_ptr<OLNode> item;  // of an <outline>, else of the nearest above, else the root
    bool hasLostText = false;
  };

  // Handlers: no exception may pass through the parser, which is C.

  static OpmlReader& of(void* self) { return *static_cast<OpmlReader*>(self); }

  template <class Action>
  static void guarded(void* self, Action action) {
    OpmlReader& reader = of(self);
    if (reader.exception_ || !reader.error_.empty()) return;
    try {
      action(reader);
    } catch (...) {
      reader.exception_ = std::current_exception();
      XML_StopParser(reader.parser_.get(), XML_FALSE);
    }
  }

  static void startHandler(void* self, const char* name, const char** attributes) {
    guarded(self, [&](OpmlReader& reader) { reader.start(name, attributes); });
  }
  static void endHandler(void* self, const char* /*name*/) {
    guarded(self, [&](OpmlReader& reader) { reader.end(); });
  }
  static void textHandler(void* self, const char* text, int length) {
    guarded(self, [&](OpmlReader& reader) { reader.text({text, static_cast<size_t>(length)}); });
  }
  static void skippedHandler(void* self, const char* name, int /*isParameter*/) {
    guarded(self, [&](OpmlReader& reader) { reader.stopAtEntity(name); });
  }
  static void doctypeHandler(void* self, const char* /*name*/, const char* systemId,
                             const char* /*publicId*/, int /*hasInternalSubset*/) {
    of(self).mayBeUndeclared_ = systemId != nullptr;
  }
  static void entityHandler(void* self, const char* name, int isParameter, const char* value,
                            int /*length*/, const char* /*base*/, const char* /*systemId*/,
                            const char* /*publicId*/, const char* /*notation*/) {
    guarded(self, [&](OpmlReader& reader) {
      if (isParameter != 0) {
        reader.mayBeUndeclared_ = true;
      } else if (value) {
        reader.declared_.insert(name);
      }
    });
  }
  static int externalHandler(XML_Parser self, const char* /*context*/, const char* /*base*/,
                             const char* /*systemId*/, const char* /*publicId*/) {
    guarded(self,
            [](OpmlReader& reader) { reader.stop("an external entity, which is never opened"); });
    return XML_STATUS_ERROR;
  }
  static int encodingHandler(void* self, const char* name, XML_Encoding* /*encoding*/) {
    of(self).exception_ = std::make_exception_ptr(UnknownEncoding{name});
    return XML_STATUS_ERROR;
  }

  void stop(const std::string& what) {
    if (error_.empty()) error_ = what;
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  void stopAtEntity(std::string_view name) {
    stop("the entity \"" + std::string(name.substr(0, 40)) + "\" is not declared");
  }

  [[noreturn]] void refuse(const std::string& what) const {
    throw ExchangeException("line " + std::to_string(XML_GetCurrentLineNumber(parser_.get())) +
                            ": " + what);
  }

  // Elements.

  void start(std::string_view name, const char** attributes) {
    if (open_.empty()) return startTop(name, attributes);
    if (mayBeUndeclared_) checkEntitiesOfTag();
    const Open& outer = open_.back();
    Open inner{Element::other, outer.item};
    if (name.starts_with(namespace_)) {
      inner.element = elementNamed(name.substr(namespace_.size()), outer.element);
    }
    if (inner.element == Element::outline) {
      inner.item = making_.addItem(outer.item);
      readAttributes(*inner.item, inner.item, attributes);
    } else {
      countAttributes(attributes);
      // what is inside something lost is lost with it
      if (inner.element == Element::other && outer.element != Element::other) {
        ++making_.losses().values;
      }
    }
    elementText_.clear();
    open_.push_back(std::move(inner));
  }

  void startTop(std::string_view name, const char** attributes) {
    const size_t end = name.find(kNamespaceEnd);
    const std::string_view local = end == std::string_view::npos ? name : name.substr(end + 1);
    if (local != "opml") {
      return stop("not OPML: the top element is \"" + std::string(local.substr(0, 40)) + "\"");
    }
    namespace_ = name.substr(0, name.size() - local.size());
    for (; *attributes; attributes += 2) {
      if (std::string_view(*attributes) != "version") ++making_.losses().attributes;
    }
    open_.push_back({Element::opml, making_.root()});
  }

  /// What an element is where it stands: an <outline> anywhere but in the head.
  static Element elementNamed(std::string_view name, Element outer) {
    if (outer == Element::opml && name == "head") return Element::head;
    if (outer == Element::opml && name == "body") return Element::body;
    if (outer == Element::head && name == "title") return Element::title;
    if (outer == Element::head && name == "ownerName") return Element::owner;
    if (outer == Element::head && name == "expansionState") return Element::expansion;
    const bool holdsItems =
        outer == Element::opml || outer == Element::body || outer == Element::outline;
    return holdsItems && name == "outline" ? Element::outline : Element::other;
  }

  void countAttributes(const char** attributes) {
    for (; *attributes; attributes += 2) ++making_.losses().attributes;
  }

  void readAttributes(OLNode& item, const std::shared_ptr<OLNode>& owner, const char** attributes) {
    const char* text = nullptr;
    const char* title = nullptr;
    std::string_view status;
    for (; *attributes; attributes += 2) {
      const std::string_view name = attributes[0];
      if (name == "text") {
        text = attributes[1];
      } else if (name == "title") {
        title = attributes[1];
      } else if (name == "_note") {
        OutlineMaking::setNote(item, attributes[1]);
      } else if (name == "_status" && isStatus(attributes[1])) {
        status = attributes[1];
      } else {
        ++making_.losses().attributes;
      }
    }
    if (text && title && std::string_view(text) != title) ++making_.losses().attributes;
    OutlineMaking::setTitle(item, text ? text : title ? title : "");
    if (status.empty()) {
      making_.addUnmarked(owner);
    } else {
      making_.setMark(item, status == "checked");
    }
  }

  static bool isStatus(std::string_view value) {
    return value == "checked" || value == "unchecked" || value == "indeterminate";
  }

  void text(std::string_view part) {
    Open& open = open_.back();
    switch (open.element) {
      case Element::title:
      case Element::owner:
      case Element::expansion:
        elementText_ += part;
        break;
      case Element::other:  // lost as a whole, and counted
        break;
      default:
        if (!open.hasLostText && !isBlank(part)) {
          open.hasLostText = true;
          ++making_.losses().values;
        }
    }
  }

  void end() {
    if (open_.empty()) return;
    const Element element = open_.back().element;
    open_.pop_back();
    if (element == Element::title) addProperty("title");
    if (element == Element::owner) addProperty("authors");
    if (element == Element::expansion) {
      hasExpansion_ = true;
      expansion_ = opmlLineNumbers(elementText_);
    }
    elementText_.clear();
  }

  void addProperty(std::string_view name) {
    const PropertyKey* const key = propertyKeyNamed(name);
    if (std::ranges::find(properties_, key, &Property::key) != properties_.end()) {
      ++making_.losses().values;
    } else {
      properties_.push_back({key, {ns::String(std::string_view(elementText_))}});
    }
  }

  /// Where part of the declarations is in a file that nobody opens, the parser leaves entities that
  /// it does not know out of attributes without a word.
  void checkEntitiesOfTag() {
    const XML_Index begin = XML_GetCurrentByteIndex(parser_.get());
    const int length = XML_GetCurrentByteCount(parser_.get());
    if (begin < 0 || length <= 0) return;
    std::string_view tag = content_.substr(static_cast<size_t>(begin), static_cast<size_t>(length));
    for (size_t at = tag.find('&'); at != std::string_view::npos; at = tag.find('&', at + 1)) {
      const size_t end = tag.find(';', at);
      if (end == std::string_view::npos) return;
      const std::string name(tag.substr(at + 1, end - at - 1));
      static const std::unordered_set<std::string> kPredefined = {"lt", "gt", "amp", "quot",
                                                                  "apos"};
      if (!name.starts_with('#') && !kPredefined.contains(name) && !declared_.contains(name)) {
        return stopAtEntity(name);
      }
    }
  }

  struct Free {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> parser_;
  std::string_view content_;
  OutlineMaking making_;
  std::vector<Open> open_;
  std::string namespace_;    // of the top element, with what parts it from names; mostly empty
  std::string elementText_;  // of the element that is open
  std::vector<Property> properties_;
  std::vector<uint64_t> expansion_;
  bool hasExpansion_ = false;
  bool mayBeUndeclared_ = false;
  std::unordered_set<std::string> declared_;
  std::string error_;
  std::exception_ptr exception_;
};

}  // namespace

Imported importOpml(std::string_view content) {
  try {
    return OpmlReader(nullptr).read(content);
  } catch (const UnknownEncoding& unknown) {
    return OpmlReader("UTF-8").read(utf8OfEncoded(content, unknown.name));
  }
}

}  // namespace tavlin
