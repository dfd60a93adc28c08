#include "platform/text/LinkDetector.h"

#include "platform/text/LinkScanner.h"

namespace ns {
namespace {

class ScanningLinkDetector : public LinkDetector {
 public:
  [[nodiscard]] std::vector<Link> linksInText(std::u16string_view text) const override {
    return LinkScanner(text).scan();
  }
};

const LinkDetector* replacement = nullptr;

}  // namespace

const LinkDetector& LinkDetector::shared() {
  static const ScanningLinkDetector detector;
  return replacement != nullptr ? *replacement : detector;
}

LinkDetector::ScopedReplacement::ScopedReplacement(const LinkDetector& detector)
    : previous_(replacement) {
  replacement = &detector;
}

LinkDetector::ScopedReplacement::~ScopedReplacement() { replacement = previous_; }

}  // namespace ns
