#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/archive/ArchiveFindings.h"
#include "platform/archive/ArchiveOrigin.h"
#include "platform/archive/DecodedValues.h"
#include "platform/archive/StoredArchive.h"
#include "platform/archive/TransformEffects.h"
#include "platform/archive/ValueTransform.h"
#include "platform/foundation/Arena.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/ContainerAccess.h"
#include "platform/foundation/Dictionary.h"

namespace ns {

/// An opened keyed archive: a stored one that was checked, and the values that are decoded from it.
///
/// Opening checks every object that can be reached from the root, so that nothing read from an
/// open archive later fails: all references lead to objects, every instance has a class, known
/// classes have their form.  What cannot be reached may be anything.  Afterwards any object can be
/// decoded on its own, when somebody asks for it; an object reached along several ways is decoded
/// once, as long as the value lives.
///
/// Open archives are shared and never change.  Values that were decoded from one, or still lie
/// in it, keep it alive.
class KeyedArchive : public StoredArchive, public std::enable_shared_from_this<KeyedArchive> {
 public:
  /// Opens binary or XML data.  Raises ArchiveException, with a message that says what is wrong
  /// and where.  `registry` must outlive the archive.
  static std::shared_ptr<KeyedArchive> open(const Data& data, const ClassRegistry& registry,
                                            Root root = Root::required);
  ~KeyedArchive();

  // What the check found.

  [[nodiscard]] const ArchiveFindings& findings() const { return findings_; }
  /// See ArchiveFindings.
  [[nodiscard]] bool isTree() const { return findings_.isTree; }
  /// Whether a tree's archive mentions an array or dictionary more than once.
  [[nodiscard]] bool isShared(uint32_t container) const {
    return std::ranges::binary_search(findings_.sharedContainers, container);
  }
  /// The record of an object of a tree that is in some other's list of children, and of such a
  /// list.  All of a document's mostly have one form, which then need not be looked for.
  [[nodiscard]] Record memberRecord(uint32_t number) const {
    return recordOfForm(number, findings_.memberForm);
  }
  [[nodiscard]] Record listRecord(uint32_t number) const {
    return recordOfForm(number, findings_.listForm);
  }

  // Values.

  /// The value of an archive number, rewritten by a transform (none: as it is).
  ///
  /// Arrays and dictionaries come whole, down to the next attributed string or object; inside
  /// itself a container appears as a record that only stands for it.
  [[nodiscard]] Value value(uint32_t number, const ValueTransform* transform = nullptr) const {
    return value(number, entry(number), transform);
  }
  /// The same for an entry that is at hand.
  [[nodiscard]] Value value(uint32_t number, const Entry& entry,
                            const ValueTransform* transform) const;
  /// The value of a scalar; long data stays in the file and long text is one value as long as
  /// somebody holds it, so that what the file holds once takes its memory once.
  [[nodiscard]] Value sharedScalar(const Object& object) const;
  /// The same for the text in data, which is UTF-8.
  [[nodiscard]] String sharedText(const Object& data) const;
  /// What a transform makes of a string that it changes.
  [[nodiscard]] String rewrittenText(const ValueTransform& transform, const Object& string) const;

  /// A dictionary made from one of the archive's, under a name for what was done to it; the same
  /// object for the same number and name as long as somebody holds it.
  [[nodiscard]] Dictionary derivedDictionary(uint32_t number, const std::string& name,
                                             const std::function<Dictionary()>& make) const {
    return decoded_.derivedDictionary(shared_from_this(), number, name, make);
  }
  /// The object of an identity class that a number stands for: the one that was decoded with
  /// the document while it lives, else one made anew.
  ///
  /// Making one means making those that it owns, as far as they are not there.  They are added to
  /// `company`: while a caller keeps them, asking for another of them costs a look-up.
  [[nodiscard]] std::shared_ptr<ns::Object> object(
      uint32_t number, std::vector<std::shared_ptr<ns::Object>>& company) const;
  /// What is remembered of the values that were decoded.
  [[nodiscard]] DecodedValues& decoded() const { return decoded_; }

  // Transforms.

  /// Whether a transform changes anything in the archive.
  [[nodiscard]] bool isChangedBy(const ValueTransform& transform) const {
    return effects_.changesAnything(*this, transform);
  }
  /// Whether a transform changes anything in what a number stands for.
  [[nodiscard]] bool isChangedBy(const ValueTransform& transform, uint32_t number) const {
    return effects_.changes(*this, transform, number);
  }
  /// Whether a transform, if any, changes the text of an entry that the root leads to.
  [[nodiscard]] bool isTextChangedBy(const ValueTransform* transform, const Object& object) const {
    return transform && !findings_.markedTexts.empty() && object.isString() &&
           effects_.changesText(*transform, object);
  }
  /// Whether a transform may change an attributed string here.
  [[nodiscard]] bool mayChangeAttributedStrings(const ValueTransform& transform) const {
    return effects_.mayChangeAttributedStrings(*this, transform);
  }

 private:
  KeyedArchive(const Data& data, const ClassRegistry& registry, Root root);
  [[nodiscard]] Record recordOfForm(uint32_t number, const ArchiveFindings::OnlyForm& form) const {
    return form.shape ? recordOf(number, *form.shape, *form.archivedClass) : record(number);
  }

  const ArchiveFindings findings_;
  mutable DecodedValues decoded_;
  mutable TransformEffects effects_;
};

}  // namespace ns
