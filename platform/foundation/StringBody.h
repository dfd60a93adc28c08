#pragma once

#include <cstring>
#include <new>

#include "platform/foundation/Origin.h"
#include "platform/foundation/Value.h"

namespace ns {

/// The text of a string, in one piece with its body.
class StringBody : public ValueBody {
 public:
  /// A body with room for the text behind it, still to be filled through `fill`.
  static StringBody* make(size_t length, bool isWide) {
    return new (isWide ? length * 2 : length) StringBody(length, isWide);
  }

  [[nodiscard]] size_t length() const { return length_; }
  [[nodiscard]] bool isWide() const { return isWide_; }
  [[nodiscard]] std::string_view ascii() const {
    return {static_cast<const char*>(text_), length_};
  }
  [[nodiscard]] std::u16string_view wide() const {
    return {static_cast<const char16_t*>(text_), length_};
  }
  [[nodiscard]] char16_t unit(size_t index) const {
    return isWide_ ? wide()[index]
                   : static_cast<char16_t>(static_cast<unsigned char>(ascii()[index]));
  }
  [[nodiscard]] bool hasTextOf(const StringBody& other) const {
    return length_ == other.length_ && isWide_ == other.isWide_ &&
           std::memcmp(text_, other.text_, isWide_ ? length_ * 2 : length_) == 0;
  }
  template <class Unit>
  Unit* fill() {
    return reinterpret_cast<Unit*>(this + 1);
  }
  [[nodiscard]] virtual const ClassRef& archivedClass() const;
  [[nodiscard]] virtual const Origin* origin() const { return nullptr; }

  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  [[nodiscard]] size_t hash() const override;

  static void* operator new(size_t size, size_t extra) { return ::operator new(size + extra); }
  static void* operator new(size_t size) { return ::operator new(size); }
  static void operator delete(void* at) { ::operator delete(at); }
  static void operator delete(void* at, size_t /*extra*/) { ::operator delete(at); }

 protected:
  StringBody(const void* text, size_t length, bool isWide)
      : ValueBody(Kind::string), isWide_(isWide), text_(text), length_(length) {}

 private:
  StringBody(size_t length, bool isWide) : StringBody(this + 1, length, isWide) {}

  bool isWide_;  // first, where it takes no room of its own
  const void* text_;
  size_t length_;
};

/// The text of another body, with a class of its own.
class ClassedStringBody final : public StringBody {
 public:
  ClassedStringBody(Ref<const StringBody> text, ClassRef archivedClass,
                    Ref<const Origin> origin = {})
      : StringBody(text->isWide() ? static_cast<const void*>(text->wide().data())
                                  : static_cast<const void*>(text->ascii().data()),
                   text->length(), text->isWide()),
        text_(std::move(text)),
        class_(std::move(archivedClass)),
        origin_(std::move(origin)) {}
  [[nodiscard]] const ClassRef& archivedClass() const override { return class_; }
  [[nodiscard]] const Origin* origin() const override { return origin_.get(); }
  [[nodiscard]] const Ref<const StringBody>& plain() const { return text_; }

 private:
  Ref<const StringBody> text_;
  ClassRef class_;
  Ref<const Origin> origin_;
};

}  // namespace ns
