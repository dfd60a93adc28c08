#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/OLException.h"
#include "model/OLNode.h"
#include "platform/foundation/NotificationCenter.h"

namespace tavlin::testing {

using Item = std::shared_ptr<OLNode>;

/// A node with a title, under which printTree() shows it.
inline Item named(const char* title) {
  auto node = OLNode::create();
  node->setDataForKey(title, "title");
  return node;
}

/// The title, "-" for none and "?" for a node without title.
inline std::string nameOf(const Item& node) {
  if (!node) return "-";
  const ns::Value title = node->dataForKey("title");
  return title.isNone() ? "?" : title.string().utf8();
}

/// The subtree below a node as "A(A1 A2) B".  For small trees: recursive.
inline std::string printChildren(const OLNode& node) {
  std::string out;
  for (const auto& child : node.children()) {
    if (!out.empty()) out += ' ';
    out += nameOf(child);
    if (child->countChildren() > 0) out += '(' + printChildren(*child) + ')';
  }
  return out;
}

/// A notification centre of the test's own, so that tests do not hear each other.
class OwnCenter {
 public:
  ns::NotificationCenter center;

 private:
  ns::NotificationCenter::ScopedDefault scope_{center};
};

/// Records what is posted while it lives: the names of the senders, one after the other.
class PostLog {
 public:
  PostLog() {
    own_.center.addObserver(this, "", nullptr, [this](const auto& notification) {
      EXPECT_EQ(notification.name, OLNodeDidChangeChildrenCountNotification);
      auto* sender = dynamic_cast<OLNode*>(notification.object);
      ASSERT_NE(sender, nullptr);
      const ns::Value title = sender->dataForKey("title");
      if (!log_.empty()) log_ += ' ';
      log_ += (title.isNone() ? "?" : title.string().utf8()) + ":" +
              std::to_string(sender->countChildren());
      if (onPost_) onPost_(*sender);
    });
  }

  /// What was posted since the last call, as "sender:children count" separated by blanks.
  std::string take() { return std::exchange(log_, {}); }

  /// Has each post also call a function while the watch lives.
  class Watch {
   public:
    Watch(PostLog& log, std::function<void(OLNode&)> onPost) : log_(log) {
      log_.onPost_ = std::move(onPost);
    }
    ~Watch() { log_.onPost_ = nullptr; }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

   private:
    PostLog& log_;
  };

 private:
  OwnCenter own_;
  std::string log_;
  std::function<void(OLNode&)> onPost_;
};

/// The reason of the OLException that a call raises; none, and a failure, when it raises nothing.
template <class Call>
std::optional<std::string> raisedBy(Call call) {
  try {
    call();
  } catch (const OLException& exception) {
    return exception.reason();
  }
  ADD_FAILURE() << "nothing was raised";
  return std::nullopt;
}

/// The reason of a platform exception of one class.
template <class Exception, class Call>
std::optional<std::string> raisedAs(Call call) {
  try {
    call();
  } catch (const Exception& exception) {
    return exception.what();
  }
  ADD_FAILURE() << "nothing was raised";
  return std::nullopt;
}

/// A small generator of fixed sequences, so that a failure repeats everywhere.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}
  /// A number below `limit`, which is above 0.
  size_t below(size_t limit) {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return static_cast<size_t>(state_ >> 33) % limit;
  }
  bool chance(size_t outOf) { return below(outOf) == 0; }

 private:
  uint64_t state_;
};

}  // namespace tavlin::testing
