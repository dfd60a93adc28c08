#include "platform/archive/EntryWriter.h"

#include "platform/archive/ArchivedClasses.h"

namespace ns {

namespace {

constexpr uint32_t kUnwritten = 0xFFFFFFFF;

}  // namespace

EntryWriter::EntryWriter(size_t topCount) : top_(list_.dictionary(4)) {
  const char* const names[] = {"$version", "$archiver", "$top", "$objects"};
  for (size_t i = 0; i < 4; ++i) list_.set(top_, i, list_.ascii(names[i]));
  list_.set(top_, 4, list_.integer(100000));
  list_.set(top_, 5, list_.ascii("NSKeyedArchiver"));
  roots_ = list_.dictionary(topCount);
  list_.set(top_, 6, roots_.reference);
  list_.set(roots_, 0, list_.ascii("root"));
  null_ = list_.ascii("$null");
  entries_.push_back(null_);
}

uint32_t EntryWriter::newNumber() {
  entries_.push_back(kUnwritten);
  return static_cast<uint32_t>(entries_.size() - 1);
}

uint32_t EntryWriter::numberOfScalar(Reference scalar) {
  // the list answers equal scalars with one reference, and keeps a word beside it
  uint32_t& number = list_.word();
  if (number == 0) {
    number = newNumber();
    entries_[number] = scalar;
  }
  return number;
}

uint32_t EntryWriter::numberOfClass(const ClassRef& archivedClass) {
  const auto known = classNumbers_.find(archivedClass.get());
  if (known != classNumbers_.end()) return known->second;
  // the same class described again, by another archive or anew for every object
  const auto same = classes_.find(contentOf(*archivedClass));
  return same == classes_.end() ? 0 : same->second.second;
}

uint32_t EntryWriter::addClass(const ClassRef& archivedClass, const std::vector<std::string>& hints,
                               const Fields& others) {
  const uint32_t number = newNumber();
  // held there, so that its address stands for it
  classes_.emplace(contentOf(*archivedClass), std::pair(archivedClass, number));
  classNumbers_.emplace(archivedClass.get(), number);
  const auto list = [&](const std::vector<std::string>& names) {
    std::vector<Reference> references;
    references.reserve(names.size());
    for (const std::string& name : names) references.push_back(list_.string(String(name)));
    return arrayOf(references);
  };
  Fields fields{{list_.ascii("$classname"), list_.string(String(archivedClass->name))}};
  if (archivedClass->hasChain) {
    fields.emplace_back(list_.ascii("$classes"), list(archivedClass->chain));
  }
  if (!hints.empty()) fields.emplace_back(list_.ascii("$classhints"), list(hints));
  fields.insert(fields.end(), others.begin(), others.end());
  entries_[number] = dictionaryOf(fields);
  return number;
}

void EntryWriter::setTop(size_t position, Reference key, Reference value) {
  list_.set(roots_, position, key);
  list_.set(roots_, roots_.count / 2 + position, value);
}

EntryWriter::Reference EntryWriter::key(const char* literal) {
  Reference& known = keys_[literal];
  // the word 0 is a reference too: that of the top dictionary, which is no key
  if (known == 0) {
    known = list_.ascii(*literal == '$' ? "$" + std::string(literal) : std::string(literal));
  }
  return known;
}

EntryWriter::Reference EntryWriter::arrayOf(const std::vector<Reference>& elements) {
  const PropertyListWriter::Container list = list_.array(elements.size());
  for (size_t i = 0; i < elements.size(); ++i) list_.set(list, i, elements[i]);
  return list.reference;
}

EntryWriter::Reference EntryWriter::dictionaryOf(const std::vector<Reference>& references) {
  const PropertyListWriter::Container map = list_.dictionary(references.size() / 2);
  for (size_t i = 0; i < references.size(); ++i) list_.set(map, i, references[i]);
  return map.reference;
}

EntryWriter::Reference EntryWriter::dictionaryOf(const Fields& fields) {
  const size_t count = fields.size();
  const PropertyListWriter::Container record = list_.dictionary(count);
  for (size_t i = 0; i < count; ++i) {
    list_.set(record, i, fields[i].first);
    list_.set(record, count + i, fields[i].second);
  }
  return record.reference;
}

void EntryWriter::finishRecord(uint32_t number) {
  entries_[number] = dictionaryOf(fields_);
  fields_.clear();
}

Data EntryWriter::finish() {
  // an object that was only referred to conditionally is null
  for (Reference& entry : entries_) {
    if (entry == kUnwritten) entry = null_;
  }
  const PropertyListWriter::Container objects = list_.array(entries_.size());
  for (size_t i = 0; i < entries_.size(); ++i) list_.set(objects, i, entries_[i]);
  list_.set(top_, 7, objects.reference);
  return list_.finish(top_.reference);
}

}  // namespace ns
