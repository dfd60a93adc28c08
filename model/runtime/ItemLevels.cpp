#include "model/runtime/ItemLevels.h"

#include <vector>

#include "model/OLNode.h"

namespace tavlin {

uint64_t ItemLevels::levelOf(const OLNode* item) {
  std::vector<uint64_t*> way;
  uint64_t count = 0;
  for (const OLNode* at = item; at; at = at->parent().get()) {
    const auto [known, isNew] = ancestors_.try_emplace(at, ns::kNotFound);
    if (!isNew) {  // a node of this very way, and so a circle, has no count yet
      count = known->second == ns::kNotFound ? ns::kNotFound : known->second + 1;
      break;
    }
    way.push_back(&known->second);
  }
  for (; !way.empty(); way.pop_back()) {
    *way.back() = count;
    if (count != ns::kNotFound) ++count;
  }
  const auto found = ancestors_.find(item);
  const bool hasLevel =
      found != ancestors_.end() && found->second != 0 && found->second != ns::kNotFound;
  return hasLevel ? found->second - 1 : ns::kNotFound;
}

}  // namespace tavlin
