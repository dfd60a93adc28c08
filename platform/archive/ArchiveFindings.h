#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/archive/StoredArchive.h"

namespace ns {

/// What was met while an archive was checked.  Lists of numbers hold what the root leads to, and
/// maybe more.
struct ArchiveFindings {
  /// Whether the objects of classes with an identity form a tree, as they do in every document
  /// that an outliner wrote: each has one owner and is mentioned by nobody else, but its own
  /// children may refer back to it.  Then any of them can be made alone, when somebody asks for
  /// it; else all are made together.
  bool isTree = false;
  /// The numbers of all objects of classes with an identity that the root leads to otherwise than
  /// by links to parents, in the order they were reached; none while they are a tree.
  std::vector<uint32_t> objects;
  /// The numbers of all fonts.
  std::vector<uint32_t> fonts;
  std::vector<uint32_t> attributedStrings;
  /// Strings that hold "$null".
  std::vector<uint32_t> markedTexts;

  /// Whether some list of children has fields beside its elements.
  bool haveListsOtherFields = false;

  // Of a tree only.

  /// What all objects of the tree, or all lists of their children, have in common.
  struct OnlyForm {
    const StoredArchive::Shape* shape = nullptr;  ///< none when they differ
    const ArchivedClass* archivedClass = nullptr;
  };
  OnlyForm memberForm;
  OnlyForm listForm;
  /// The number that the integer field of every object of the tree holds; none when they differ,
  /// and when one lacks some field of its class or holds a flag otherwise than as a boolean.
  std::optional<double> memberInteger;
  /// Arrays and dictionaries that are mentioned more than once, in ascending order.
  std::vector<uint32_t> sharedContainers;
  /// By number: whether it is an array without elements that is some object's list of children, of
  /// another class than NSArray.
  std::vector<bool> emptyLists;
};

}  // namespace ns
