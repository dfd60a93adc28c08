#include "exchange/FrontMatter.h"

#include <yaml.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <unordered_map>

#include "exchange/ItemContent.h"

namespace tavlin {

namespace {

// The library keeps its results in C structures, each with a function of its own to free it.

class Emitter {
 public:
  explicit Emitter(std::string& out) {
    if (yaml_emitter_initialize(&emitter_) == 0) throw std::bad_alloc();
    yaml_emitter_set_unicode(&emitter_, 1);
    yaml_emitter_set_width(&emitter_, -1);
    yaml_emitter_set_output(&emitter_, append, &out);
  }
  ~Emitter() { yaml_emitter_delete(&emitter_); }
  Emitter(const Emitter&) = delete;
  Emitter& operator=(const Emitter&) = delete;

  void begin() {
    yaml_stream_start_event_initialize(&event_, YAML_UTF8_ENCODING);
    emit();
    yaml_document_start_event_initialize(&event_, nullptr, nullptr, nullptr, 1);
    emit();
    yaml_mapping_start_event_initialize(&event_, nullptr, nullptr, 1, YAML_BLOCK_MAPPING_STYLE);
    emit();
  }
  void end() {
    yaml_mapping_end_event_initialize(&event_);
    emit();
    yaml_document_end_event_initialize(&event_, 1);
    emit();
    yaml_stream_end_event_initialize(&event_);
    emit();
  }
  void scalar(std::string_view text, yaml_scalar_style_t style) {
    yaml_scalar_event_initialize(&event_, nullptr, nullptr,
                                 reinterpret_cast<const yaml_char_t*>(text.data()),
                                 static_cast<int>(text.size()), 1, 1, style);
    emit();
  }
  void beginList() {
    yaml_sequence_start_event_initialize(&event_, nullptr, nullptr, 1, YAML_BLOCK_SEQUENCE_STYLE);
    emit();
  }
  void endList() {
    yaml_sequence_end_event_initialize(&event_);
    emit();
  }

 private:
  static int append(void* out, unsigned char* bytes, size_t length) {
    static_cast<std::string*>(out)->append(reinterpret_cast<const char*>(bytes), length);
    return 1;
  }
  void emit() {
    if (yaml_emitter_emit(&emitter_, &event_) == 0) {
      throw ExchangeException(std::string("front matter: ") +
                              (emitter_.problem ? emitter_.problem : "no memory"));
    }
  }

  yaml_emitter_t emitter_{};
  yaml_event_t event_{};
};

struct Event {
  yaml_event_t event{};
  Event() = default;
  ~Event() { yaml_event_delete(&event); }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;
};

class Reader {
 public:
  Reader(std::string_view yaml, Losses& losses) : losses_(losses) {
    if (yaml_parser_initialize(&parser_) == 0) throw std::bad_alloc();
    yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char*>(yaml.data()),
                                 yaml.size());
  }
  ~Reader() { yaml_parser_delete(&parser_); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// None where the text is no mapping.
  std::optional<std::vector<Property>> read() {
    next();  // of the stream
    if (next() != YAML_DOCUMENT_START_EVENT) return properties_;
    const yaml_event_type_t top = next();
    if (top == YAML_SCALAR_EVENT && text().empty()) return properties_;
    if (top != YAML_MAPPING_START_EVENT) return std::nullopt;
    while (next() != YAML_MAPPING_END_EVENT) readEntry();
    // into the usual order
    std::ranges::sort(properties_, {}, &Property::key);
    return std::move(properties_);
  }

 private:
  static constexpr int kDeepest = 64;

  yaml_event_type_t next() {
    current_ = std::make_unique<Event>();
    if (yaml_parser_parse(&parser_, &current_->event) == 0) {
      throw ExchangeException(
          "line " + std::to_string(parser_.problem_mark.line + 2) +
          ": front matter: " + (parser_.problem ? parser_.problem : "it cannot be read"));
    }
    const yaml_event_type_t type = current_->event.type;
    depth_ += type == YAML_MAPPING_START_EVENT || type == YAML_SEQUENCE_START_EVENT ? 1 : 0;
    depth_ -= type == YAML_MAPPING_END_EVENT || type == YAML_SEQUENCE_END_EVENT ? 1 : 0;
    if (depth_ > kDeepest) {
      throw ExchangeException("line " + std::to_string(current_->event.start_mark.line + 2) +
                              ": front matter: nested too deeply");
    }
    return type;
  }

  [[nodiscard]] std::string text() const {
    const auto& scalar = current_->event.data.scalar;
    return {reinterpret_cast<const char*>(scalar.value), scalar.length};
  }

  /// The text of a scalar or of an alias of one; none for what stands for nothing, as "~" does.
  std::optional<std::string> scalarText() {
    if (current_->event.type == YAML_ALIAS_EVENT) {
      const auto known =
          anchors_.find(reinterpret_cast<const char*>(current_->event.data.alias.anchor));
      if (known != anchors_.end()) return known->second;
      ++losses_.values;
      return std::nullopt;
    }
    const auto& scalar = current_->event.data.scalar;
    std::string value = text();
    if (scalar.anchor) anchors_[reinterpret_cast<const char*>(scalar.anchor)] = value;
    const bool isNull = scalar.style == YAML_PLAIN_SCALAR_STYLE &&
                        (value.empty() || value == "~" || value == "null");
    if (isNull) return std::nullopt;
    return value;
  }

  [[nodiscard]] bool isScalar() const {
    return current_->event.type == YAML_SCALAR_EVENT || current_->event.type == YAML_ALIAS_EVENT;
  }

  /// Passes over what the current event begins.
  void skip() {
    if (isScalar()) return;
    for (const int outer = depth_ - 1; depth_ > outer;) next();
  }

  void readEntry() {
    std::string name = isScalar() ? scalarText().value_or("") : "";
    skip();
    if (name == "author") name = "authors";
    const PropertyKey* const key = propertyKeyNamed(name);
    const bool isTwice = std::ranges::find(properties_, key, &Property::key) != properties_.end();
    const yaml_event_type_t type = next();
    if (!key || isTwice || type == YAML_MAPPING_START_EVENT) {
      ++losses_.values;
      return skip();
    }
    const bool isList = type == YAML_SEQUENCE_START_EVENT;
    std::vector<std::string> texts = isList ? readList() : oneText();
    if (texts.empty() && !(isList && key->isList)) return;
    if (!isList && name == "keywords") texts = parted(texts.front());
    if (!key->isList) texts = {joined(texts)};
    Property property{key, {}};
    for (const std::string& value : texts) property.texts.emplace_back(std::string_view(value));
    properties_.push_back(std::move(property));
  }

  std::vector<std::string> oneText() {
    std::vector<std::string> texts;
    if (auto text = scalarText()) texts.push_back(*std::move(text));
    return texts;
  }

  std::vector<std::string> readList() {
    std::vector<std::string> texts;
    while (next() != YAML_SEQUENCE_END_EVENT) {
      if (isScalar()) {
        if (auto text = scalarText()) texts.push_back(*std::move(text));
      } else {
        ++losses_.values;
        skip();
      }
    }
    return texts;
  }

  static std::vector<std::string> parted(const std::string& list) {
    std::vector<std::string> parts;
    for (size_t at = 0; at <= list.size();) {
      const size_t end = std::min(list.find(',', at), list.size());
      const size_t first = list.find_first_not_of(" \t\n", at);
      if (first < end) {
        parts.push_back(list.substr(first, list.find_last_not_of(" \t\n", end - 1) - first + 1));
      }
      at = end + 1;
    }
    return parts;
  }

  static std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
      if (&text != &texts.front()) all += ", ";
      all += text;
    }
    return all;
  }

  yaml_parser_t parser_{};
  Losses& losses_;
  std::unique_ptr<Event> current_;
  int depth_ = 0;
  std::unordered_map<std::string, std::string> anchors_;
  std::vector<Property> properties_;
};

/// The line at `at`, without what ends it and blanks before that; moves `at` to the next one.
std::string_view takeLine(std::string_view text, size_t& at) {
  const size_t end = std::min(text.find('\n', at), text.size());
  std::string_view line = text.substr(at, end - at);
  at = std::min(end + 1, text.size());
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r')) {
    line.remove_suffix(1);
  }
  return line;
}

}  // namespace

std::string frontMatter(const std::vector<Property>& properties, Losses& losses) {
  if (properties.empty()) return {};
  std::string out;
  Emitter emitter(out);
  Utf8Text utf8;
  const auto value = [&](const ns::String& text) {
    emitter.scalar(utf8.of(text, losses), YAML_DOUBLE_QUOTED_SCALAR_STYLE);
  };
  emitter.begin();
  for (const Property& property : properties) {
    emitter.scalar(property.key->name, YAML_PLAIN_SCALAR_STYLE);
    if (!property.key->isList) {
      value(property.texts.front());
      continue;
    }
    emitter.beginList();
    for (const ns::String& element : property.texts) value(element);
    emitter.endList();
  }
  emitter.end();
  return "---\n" + out + "---\n";
}

FrontMatter readFrontMatter(std::string_view markdown, Losses& losses) {
  FrontMatter result;
  size_t at = 0;
  if (takeLine(markdown, at) != "---") return result;
  const size_t begin = at;
  if (takeLine(markdown, at).empty()) return result;
  for (at = begin; at < markdown.size();) {
    const size_t end = at;
    const std::string_view line = takeLine(markdown, at);
    if (line != "---" && line != "...") continue;
    Losses lost;
    auto properties = Reader(markdown.substr(begin, end - begin), lost).read();
    if (!properties) return result;
    losses.values += lost.values;
    result.length = at;
    result.properties = *std::move(properties);
    return result;
  }
  return result;
}

}  // namespace tavlin
