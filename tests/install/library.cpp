// Uses the library as another program would: edits with undo, saves, loads, and shows a text.

#include <cstdio>
#include <memory>

#include "document/OLDataManager.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/UndoManager.h"
#include "ui/SNUIString.h"

namespace {

class Source : public tavlin::OLDataSource {
 public:
  [[nodiscard]] std::shared_ptr<ns::UndoManager> undoManager() const override { return manager_; }
  [[nodiscard]] std::shared_ptr<tavlin::OLDataSourceDelegate> delegate() const override {
    return nullptr;
  }

 private:
  const std::shared_ptr<ns::UndoManager> manager_ = std::make_shared<ns::UndoManager>();
};

}  // namespace

int main() {
  const auto source = std::make_shared<Source>();
  const auto controller = tavlin::OLTreeUndoController::initWithDataSource(source);
  const auto item = controller->addItemWithSelected(nullptr);
  controller->setObjectValueForKeyByItem("one", "title", item);
  source->undoManager()->endEvent();
  controller->setObjectValueForKeyByItem("two", "title", item);
  source->undoManager()->setActionName(tavlin::SNUIString::edit());
  source->undoManager()->undo();

  tavlin::OLDataManager saved;
  saved.setTreeController(controller);
  tavlin::OLDataManager loaded;
  if (!loaded.loadDataRepresentationOfType(saved.dataRepresentation())) return 1;
  const auto& tree = *loaded.treeController()->tree();
  std::printf("%s, %s\n", tree.firstItem()->dataForKey("title").string().utf8().c_str(),
              source->undoManager()->redoActionName().utf8().c_str());
  return 0;
}
