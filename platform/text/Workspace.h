#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/foundation/String.h"

namespace ns {

/// The types of files: which name extensions belong to a type, which types to an extension, and
/// which folders are shown as one file.
///
/// Types are declared in property lists: a dictionary with a list of declarations under
/// "UTExportedTypeDeclarations", "UTImportedTypeDeclarations" or both, each a dictionary such as
///
///     UTTypeIdentifier        public.plain-text
///     UTTypeConformsTo        public.text                     (one, or a list)
///     UTTypeTagSpecification  public.filename-extension: txt  (one, or a list; the first is
///                                                              the preferred one)
///
/// A type that is declared again gets what is new added.  Types and extensions are compared without
/// regard to the case of ASCII letters; extensions have no dot.
class Workspace {
 public:
  /// The types of some files, read at the first question.  A file that does not exist declares
  /// nothing; of one that cannot be read the log says once what is wrong.
  explicit Workspace(std::vector<std::string> files);
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  /// Where the user declares types: "tavlin/types.plist" in $XDG_DATA_HOME, or in ~/.local/share
  /// when that is not set to an absolute path.
  static std::string userTypesPath();
  /// +sharedWorkspace  The types of "types.plist" in the resources of the main bundle, and then
  /// those in userTypesPath() as it was at the first call.  A test may put others in their place.
  static Workspace& shared();

  /// -preferredFilenameExtensionForType:  None for a type that is not known or has none.
  [[nodiscard]] std::optional<String> preferredFilenameExtensionForType(const String& type);
  /// Every type that has an extension, in the order of declaration.
  [[nodiscard]] std::vector<String> typesForFilenameExtension(const String& extension);
  /// -isFilePackageAtPath:  Whether a path (bytes) names a folder that exists and whose extension
  /// belongs to a type that conforms, directly or through others, to the type of packages.
  [[nodiscard]] bool isFilePackageAtPath(const std::string& path);

  /// Makes another workspace the shared one while it lives.
  class ScopedShared {
   public:
    explicit ScopedShared(Workspace& workspace);
    ~ScopedShared();
    ScopedShared(const ScopedShared&) = delete;
    ScopedShared& operator=(const ScopedShared&) = delete;

   private:
    Workspace* previous_;
  };

 private:
  struct Type {
    String identifier;               // as it was first declared
    std::vector<String> extensions;  // as declared
    std::vector<String> conformsTo;
  };
  void readOnce();
  void read(const std::string& file);
  void declare(const class Dictionary& declaration);
  [[nodiscard]] bool isPackage(const String& type) const;

  std::vector<std::string> files_;
  bool isRead_ = false;
  std::unordered_map<String, Type> types_;                       // in lower case
  std::unordered_map<String, std::vector<String>> byExtension_;  // in lower case
};

}  // namespace ns
