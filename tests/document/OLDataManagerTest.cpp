#include "document/OLDataManager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/OLException.h"
#include "model/OLTree.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Log.h"
#include "platform/propertylist/PropertyList.h"

namespace tavlin {
namespace {

/// Collects what is logged while it lives.
class LogCapture {
 public:
  LogCapture()
      : previous_(
            ns::setLogHandler([this](std::string_view message) { lines.emplace_back(message); })) {}
  ~LogCapture() { ns::setLogHandler(previous_); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<std::string> lines;

 private:
  ns::LogHandler previous_;
};

template <class Action>
std::string reasonOf(Action action) {
  try {
    action();
  } catch (const OLException& exception) {
    return exception.what();
  }
  return "nothing raised";
}

ns::Data archiveOf(const ns::Value& root) {
  return ns::KeyedArchiver::archivedDataWithRootObject(root);
}

TEST(OLDataManager, NewDocumentIsAnEmptyTreeUnderAPlainController) {
  const auto document = OLDataManager::create();
  EXPECT_EQ(document->treeController()->classForCoder()->name, "OLTreeController");
  EXPECT_EQ(document->treeController()->tree()->numberOfChildrenOfItem(nullptr), 0);
  EXPECT_FALSE(document->isDocumentRichText());
  document->setIsDocumentRichText(true);
  EXPECT_TRUE(document->isDocumentRichText());
}

TEST(OLDataManager, WhatTheArchiveNamesBesideItsRootGoesAlong) {
  const auto made = OLDataManager::create();
  const auto item = made->treeController()->addItemWithSelected(nullptr);
  const ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(
      ns::Value(made->treeController()),
      {{"version", ns::Field::primitive(7)},
       {"item", ns::Field::reference(ns::Value(item))},
       {"list", ns::Field::reference(ns::Value(ns::Array{"a", "b"}))}});
  const auto document = OLDataManager::create();
  ASSERT_TRUE(document->loadDataRepresentationOfType(data));
  EXPECT_EQ(*document->dataRepresentation(), data);
  // they belong to the archive that was loaded last
  ASSERT_TRUE(document->loadDataRepresentationOfType(archiveOf(ns::Value(made->treeController()))));
  EXPECT_EQ(*document->dataRepresentation(), archiveOf(ns::Value(made->treeController())));
  // and stay when an archive is refused
  ASSERT_TRUE(document->loadDataRepresentationOfType(data));
  LogCapture log;
  EXPECT_FALSE(document->loadDataRepresentationOfType(archiveOf("text")));
  EXPECT_EQ(*document->dataRepresentation(), data);
}

TEST(OLDataManager, NoDataIsRefused) {
  LogCapture log;
  const auto document = OLDataManager::create();
  const auto before = document->treeController();
  EXPECT_FALSE(document->loadDataRepresentationOfType(std::nullopt));
  EXPECT_FALSE(document->loadDataRepresentationOfType(ns::Data()));
  EXPECT_EQ(log.lines,
            (std::vector<std::string>{"Document contains no data", "Document contains no data"}));
  EXPECT_EQ(document->treeController(), before);
}

TEST(OLDataManager, AnArchiveOfNothingIsCorrupted) {
  LogCapture log;
  const auto document = OLDataManager::create();
  const auto before = document->treeController();
  EXPECT_FALSE(document->loadDataRepresentationOfType(archiveOf(ns::Value())));
  EXPECT_EQ(log.lines, std::vector<std::string>{"Document has something corrupted"});
  EXPECT_EQ(document->treeController(), before);
}

TEST(OLDataManager, OtherRootObjectsAreUnacceptable) {
  const auto tree = OLTree::create();
  for (const ns::Value& root :
       {ns::Value("a string"), ns::Value(42), ns::Value(ns::Array{1, 2}), ns::Value(tree)}) {
    LogCapture log;
    const auto document = OLDataManager::create();
    const auto before = document->treeController();
    EXPECT_FALSE(document->loadDataRepresentationOfType(archiveOf(root)));
    EXPECT_EQ(log.lines, std::vector<std::string>{"Document contains unacceptable data"});
    EXPECT_EQ(document->treeController(), before);
  }
}

TEST(OLDataManager, MalformedDataRaisesAndChangesNothing) {
  const auto document = OLDataManager::create();
  const auto before = document->treeController();
  EXPECT_THROW((void)document->loadDataRepresentationOfType(ns::Data("not an archive")),
               ns::ArchiveException);
  EXPECT_THROW((void)document->loadDataRepresentationOfType(ns::dataFromPropertyList("a list")),
               ns::ArchiveException);
  EXPECT_EQ(document->treeController(), before);
}

TEST(OLDataManager, ControllersOfEveryClassAreTakenAsTheyAre) {
  const std::vector<std::shared_ptr<OLTreeController>> controllers{
      OLTreeController::create(), OLTreeRuntimeAttributesController::initWithRootItem(nullptr),
      OLTreeUndoController::initWithRootItem(nullptr)};
  for (const auto& controller : controllers) {
    const auto document = OLDataManager::create();
    document->setTreeController(controller);
    const auto loaded = OLDataManager::create();
    ASSERT_TRUE(loaded->loadDataRepresentationOfType(document->dataRepresentation()));
    EXPECT_EQ(*loaded->treeController()->classForCoder(), *controller->classForCoder());
  }
}

TEST(OLDataManager, AFreshDocumentComesBackEmpty) {
  const auto loaded = OLDataManager::create();
  ASSERT_TRUE(loaded->loadDataRepresentationOfType(OLDataManager::create()->dataRepresentation()));
  const auto& root = loaded->treeController()->tree()->rootNode();
  ASSERT_TRUE(root->data());
  EXPECT_TRUE(root->data()->empty());
  EXPECT_EQ(root->countChildren(), 0U);
}

TEST(OLDataManager, DocumentValues) {
  const auto document = OLDataManager::create();
  document->setObjectValueForKey(ns::Dictionary{{"title", "T"}}, "documentProperties");
  EXPECT_EQ(document->objectValueForKey("documentProperties").dictionary().objectForKey("title"),
            ns::Value("T"));
  document->setObjectValueForKey(ns::Value(), "documentProperties");
  EXPECT_TRUE(document->objectValueForKey("documentProperties").isNone());
  document->setObjectValueForKey("value", ns::Value());
  EXPECT_TRUE(document->treeController()->tree()->rootNode()->data()->empty());
}

TEST(OLDataManager, SetTreeControllerTakesControllersOnly) {
  const auto document = OLDataManager::create();
  const auto before = document->treeController();
  EXPECT_EQ(reasonOf([&] { document->setTreeController(OLTree::create()); }), "Unexpected class");
  EXPECT_EQ(document->treeController(), before);
  document->setTreeController(nullptr);
  EXPECT_EQ(document->treeController(), nullptr);
  EXPECT_FALSE(document->dataRepresentation());
  EXPECT_TRUE(document->objectValueForKey("documentProperties").isNone());
}

TEST(OLDataManager, TheSameDocumentGivesTheSameBytes) {
  const auto document = OLDataManager::create();
  document->setObjectValueForKey(ns::Array{"a", "b", 1, 2.5, true}, "values");
  document->treeController()->addItemWithSelected(nullptr);
  const ns::Data first = *document->dataRepresentation();
  EXPECT_EQ(first, *document->dataRepresentation());
  const auto loaded = OLDataManager::create();
  ASSERT_TRUE(loaded->loadDataRepresentationOfType(first));
  EXPECT_EQ(first, *loaded->dataRepresentation());
}

TEST(OLDataManager, AnItemThatContainsItselfIsRefused) {
  const auto document = OLDataManager::create();
  const auto outer = document->treeController()->addItemWithSelected(nullptr);
  const auto inner = OLNode::create();
  outer->addChild(inner);
  inner->addChild(outer);
  const ns::Data data = *document->dataRepresentation();
  inner->setChildren(std::nullopt);
  EXPECT_THROW((void)OLDataManager::create()->loadDataRepresentationOfType(data),
               ns::ArchiveException);
}

}  // namespace
}  // namespace tavlin
