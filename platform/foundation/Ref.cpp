#include "platform/foundation/Ref.h"

#include <vector>

namespace ns {

void Body::destroy(const Body* body) noexcept {
  // Destroying a body releases those it holds, which end up here again: they wait in a list
  // instead of on the stack.
  static thread_local std::vector<const Body*>* pending = nullptr;
  if (pending) {
    pending->push_back(body);
    return;
  }
  std::vector<const Body*> list;
  pending = &list;
  for (;;) {
    delete body;
    if (list.empty()) break;
    body = list.back();
    list.pop_back();
  }
  pending = nullptr;
}

}  // namespace ns
