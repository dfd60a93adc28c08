#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/text/LinkDetector.h"
#include "platform/text/LinkHost.h"
#include "platform/text/LinkText.h"
#include "platform/text/LinkURL.h"

namespace ns {

/// One pass over a text that finds its links: the work behind the shared LinkDetector, whose
/// comment says what counts as a link.
///
/// The pass goes from run of host characters to run of host characters.  What follows a run decides
/// what it may be: ":" a scheme, "@" a local part, anything else a bare host.  A candidate that
/// turns out wrong is skipped whole, so that no part of it becomes a link.
///
/// The work is linear in the text: the pass never goes back behind the end of what it has skipped
/// or linked, looks ahead only over characters that it then skips or that it remembers to have
/// seen, and looks back over a scheme (which a ":" ends) or 64 octets (of a local part).
class LinkScanner {
 public:
  explicit LinkScanner(std::u16string_view text) : text_(text) {}

  /// The links in text order.  To be called once.
  std::vector<Link> scan();
  /// How many reads of the text that took.
  [[nodiscard]] size_t reads() const { return text_.reads(); }

 private:
  enum class Part { path, query, fragment };
  /// Where the link ends in a walk over a path, and where the walk ended.
  struct Walk {
    size_t end;
    size_t stop;
  };
  enum class PortKind { none, valid, outOfRange, word };
  struct Port {
    PortKind kind;
    size_t end;
  };
  /// What follows a host.
  struct Tail {
    bool isValid = true;
    bool hasPath = false;
    bool hasPort = false;
    size_t end = 0;
  };

  // Each of these takes the index of a candidate and answers where the pass goes on.
  size_t word(size_t begin);
  size_t bareHost(const LinkHost& host);
  size_t address(size_t at);
  std::optional<size_t> scheme(size_t colon);
  size_t webLink(size_t begin, size_t hostBegin);
  size_t customLink(size_t begin, size_t authority);
  std::optional<size_t> number(size_t begin, size_t colon);
  size_t skip(size_t from);

  [[nodiscard]] std::optional<size_t> startOfScheme(size_t begin, size_t colon) const;
  [[nodiscard]] bool schemeMayStart(size_t index) const;
  [[nodiscard]] bool bareHostMayStart(size_t index) const;
  [[nodiscard]] bool nameGoesOn(size_t index) const;
  [[nodiscard]] bool hasUserName(size_t index) const;
  [[nodiscard]] bool startsParameter(size_t index) const;
  bool addressFollows(size_t index);
  [[nodiscard]] bool isAddressHost(const LinkHost& host) const;
  [[nodiscard]] LinkHost hostBehindScheme(size_t begin) const;
  [[nodiscard]] Port port(size_t colon) const;
  Tail tail(const LinkHost& host, bool isBehindScheme);
  Walk walk(size_t from, Part part);
  void add(size_t begin, size_t end, LinkForm form);

  LinkText text_;
  std::vector<Link> links_;
  /// The end of the last link or of what was skipped as a whole: no link begins before it.
  size_t floor_ = 0;
  /// Opening brackets of the walk under way.
  std::vector<char32_t> open_;
  /// The last stretch that addressFollows() went over, and its answer.
  size_t lookedFrom_ = 0;
  size_t lookedTo_ = 0;
  bool foundAddress_ = false;
};

}  // namespace ns
