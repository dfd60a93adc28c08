#include "FileGraph.h"

#include <cstdint>
#include <map>
#include <set>
#include <stdexcept>
#include <vector>

namespace testing_archives {

namespace {

uint64_t number(std::string_view bytes) {
  uint64_t result = 0;
  for (const char byte : bytes) result = result << 8 | static_cast<uint8_t>(byte);
  return result;
}

/// An object of a property list, everything that it holds included.
struct Plist {
  char kind = 0;     // '@' reference, '[' array, '{' dictionary, 'a' 'u' text, or the marker's half
  std::string text;  // of a scalar
  uint64_t target = 0;
  std::vector<Plist> elements;
  std::map<std::string, Plist> fields;
};

class PlistReader {
 public:
  explicit PlistReader(std::string_view file)
      : file_(file), trailer_(file.substr(file.size() - 32)) {
    offsetSize_ = number(trailer_.substr(6, 1));
    referenceSize_ = number(trailer_.substr(7, 1));
  }
  [[nodiscard]] Plist top() const { return object(number(trailer_.substr(16, 8))); }

 private:
  [[nodiscard]] Plist object(uint64_t index) const {
    const uint64_t table = number(trailer_.substr(24, 8));
    uint64_t at = number(file_.substr(table + index * offsetSize_, offsetSize_));
    const auto marker = static_cast<uint8_t>(file_[at++]);
    const auto high = static_cast<uint8_t>(marker >> 4);
    uint64_t low = marker & 15U;
    Plist made;
    if (high == 0) return {static_cast<char>('0' + high), std::to_string(low), 0, {}, {}};
    if (high <= 3) {
      made.kind = static_cast<char>('0' + high);
      made.text = file_.substr(at, size_t{1} << low);
      return made;
    }
    if (high == 8) {
      made.kind = '@';
      made.target = number(file_.substr(at, low + 1));
      return made;
    }
    if (low == 15) {
      const size_t width = size_t{1} << (file_[at] & 15);
      low = number(file_.substr(at + 1, width));
      at += 1 + width;
    }
    const auto reference = [&](uint64_t place) {
      return object(number(file_.substr(at + place * referenceSize_, referenceSize_)));
    };
    switch (high) {
      case 4:
      case 5:
      case 6:
        made.kind = high == 4 ? 'd' : high == 5 ? 'a' : 'u';
        made.text = file_.substr(at, low * (high == 6 ? 2 : 1));
        return made;
      case 0xA:
        made.kind = '[';
        for (uint64_t i = 0; i < low; ++i) made.elements.push_back(reference(i));
        return made;
      case 0xD:
        made.kind = '{';
        for (uint64_t i = 0; i < low; ++i) made.fields[reference(i).text] = reference(low + i);
        return made;
      default:
        throw std::runtime_error("no property list");
    }
  }

  std::string_view file_;
  std::string_view trailer_;
  uint64_t offsetSize_;
  uint64_t referenceSize_;
};

class Graph {
 public:
  explicit Graph(const ns::Data& data) : top_(PlistReader(data.view()).top()) {}

  std::string described() {
    for (const bool isFinal : {false, true}) {
      // the first time tells which parents anything else leads to
      isFinal_ = isFinal;
      text_.clear();
      order_.clear();
      if (!isFinal) known_.clear();
      std::set<uint64_t> told;
      for (const auto& [key, each] : top_.fields.at("$top").fields) {
        text_ += key + " ";
        visit(each);
      }
      for (size_t i = 0; i < order_.size(); ++i) {
        if (!told.insert(order_[i]).second) continue;
        text_ += "\n#" + std::to_string(known_.at(order_[i])) + " = ";
        expand(entry(order_[i]));
      }
    }
    return text_;
  }

  size_t unused() {
    std::set<uint64_t> targets{0};
    collect(top_, targets);
    return top_.fields.at("$objects").elements.size() - targets.size();
  }

 private:
  [[nodiscard]] const Plist& entry(uint64_t target) const {
    return top_.fields.at("$objects").elements.at(target);
  }

  void collect(const Plist& plist, std::set<uint64_t>& targets) {
    if (plist.kind == '@') targets.insert(plist.target);
    for (const Plist& each : plist.elements) collect(each, targets);
    for (const auto& [key, each] : plist.fields) collect(each, targets);
  }

  [[nodiscard]] std::string className(const Plist& record) const {
    const auto found = record.fields.find("$class");
    return found == record.fields.end() ? ""
                                        : entry(found->second.target).fields.at("$classname").text;
  }

  void visit(const Plist& plist) {
    if (plist.kind == '[' || plist.kind == '{') return expand(plist);
    if (plist.kind != '@') {
      text_ += plist.kind + plist.text + " ";
      return;
    }
    const Plist& target = entry(plist.target);
    if (plist.target == 0 || ((target.kind == 'a') && target.text == "$null")) {
      text_ += "nil ";
    } else if (target.kind == '{' || target.kind == '[' || target.kind == '3') {
      const size_t next = known_.size();
      const size_t name = known_.emplace(plist.target, next).first->second;
      order_.push_back(plist.target);
      text_ += "#" + std::to_string(name) + " ";
    } else {
      text_ += target.kind + target.text + " ";
    }
  }

  void visitParent(const Plist& plist) {
    const auto known = known_.find(plist.target);
    text_ += known == known_.end() ? "nil " : "#" + std::to_string(known->second) + " ";
  }

  void expand(const Plist& plist) {
    if (plist.kind == '[') {
      text_ += "[";
      for (const Plist& each : plist.elements) visit(each);
      text_ += "]";
    } else if (plist.kind == '{') {
      const bool isNode = className(plist) == "OLNode";
      text_ += "{";
      for (const auto& [key, each] : plist.fields) {
        text_ += key + ": ";
        if (isNode && key == "parent") {
          if (isFinal_) visitParent(each);
        } else {
          visit(each);
        }
      }
      text_ += "}";
    } else {
      text_ += plist.kind + plist.text;
    }
  }

  const Plist top_;
  bool isFinal_ = false;
  std::string text_;
  std::map<uint64_t, size_t> known_;  // numbers in the description by those in the file
  std::vector<uint64_t> order_;
};

}  // namespace

std::string fileGraph(const ns::Data& data) { return Graph(data).described(); }

size_t unusedEntries(const ns::Data& data) { return Graph(data).unused(); }

}  // namespace testing_archives
