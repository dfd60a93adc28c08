// tavlin show: outlines as text.

#include <memory>
#include <optional>

#include "exchange/DerivedState.h"
#include "exchange/OutlineWalk.h"
#include "model/runtime/OLNumberLabelFormats.h"
#include "outline/Commands.h"
#include "outline/common/ArgumentErrors.h"
#include "outline/common/Messages.h"
#include "outline/common/StyledText.h"

namespace tavlin {

namespace {

enum class Numbers { document, legal, harvard, none };
enum class Checks { automatic, always, never };

struct ShowOptions {
  std::vector<std::string> files;
  std::optional<std::string> item;
  size_t depth = 0;  // 0: all
  bool hidesNotes = false;
  bool showsPaths = false;
  bool followsExpansion = false;
  size_t numbers = static_cast<size_t>(Numbers::none);
  size_t checks = static_cast<size_t>(Checks::automatic);
  Coloring coloring = Coloring::automatic;
};

const char* markOf(OLRuntimeCheckState state) {
  switch (state) {
    case OLRuntimeCheckStateChecked:
      return "[x]";
    case OLRuntimeCheckStateAllChildrenChecked:
      return "[*]";
    case OLRuntimeCheckStatePartlyChecked:
      return "[-]";
    case OLRuntimeCheckStateUnchecked:
      return "[ ]";
    case OLRuntimeCheckStateHidden:
      break;
  }
  return "   ";
}

/// Whether any item may have a mark, as the bytes of the document tell without a look at items.
bool mayHaveMarks(std::string_view archive) {
  if (!archive.starts_with("bplist00")) return true;  // others may write the key in other ways
  constexpr std::string_view kBegin = "check";        // of "checkStatus"
  constexpr std::string_view kWideBegin{"\0c\0h\0e\0c\0k\0", 11};
  for (size_t at = archive.find('S'); at != std::string_view::npos;
       at = archive.find('S', at + 1)) {
    const std::string_view before = archive.substr(0, at);
    if (before.ends_with(kBegin) || before.ends_with(kWideBegin)) return true;
  }
  return false;
}

/// Prints one document, from its first item on at once: marks and labels are derived branch by
/// branch.
class OutlinePrinter {
 public:
  OutlinePrinter(const OpenDocument& opened, const ShowOptions& options, Output& output)
      : document_(*opened.document),
        archive_(opened.content.view()),
        options_(options),
        output_(output),
        style_(usesColors(options.coloring)) {}

  void print() {
    const auto& tree = document_.treeController()->tree();
    const std::shared_ptr<OLNode> top =
        options_.item ? itemAtPath(document_, *options_.item) : nullptr;
    prepare(*tree);
    auto walk = top ? OutlineWalk::from(top) : OutlineWalk::below(tree->rootNode());
    while (walk.item()) {
      if (walk.level() == 0) derive(top ? branchOfItem() : walk.item());
      printItem(walk);
      const bool isDeepest = options_.depth > 0 && walk.level() + 1 >= options_.depth;
      const bool isFolded = options_.followsExpansion && !walk.item()->isExpanded();
      walk.next(!isDeepest && !isFolded);
    }
  }

 private:
  /// Decides what is shown of marks and labels.
  void prepare(const OLTree& tree) {
    const auto checks = static_cast<Checks>(options_.checks);
    showsChecks_ =
        checks == Checks::always ||
        (checks == Checks::automatic && mayHaveMarks(archive_) && hasShownCheckedItem(tree));
    const auto numbers = static_cast<Numbers>(options_.numbers);
    showsNumbers_ = numbers != Numbers::none;
    if (!showsChecks_ && !showsNumbers_) return;
    controller_ = derivingController(document_);
    if (showsNumbers_) controller_->setNumberLabelFormat(formatOf(numbers, tree));
  }

  /// The item at the top that the one asked for is, or is below: by lists of children, since
  /// parent links may say something else.
  [[nodiscard]] std::shared_ptr<OLNode> branchOfItem() const {
    return itemAtPath(document_, options_.item->substr(0, options_.item->find('.')));
  }

  /// Builds marks and labels of an item at the top and all below it, which depend on no others.
  void derive(const std::shared_ptr<OLNode>& branch) {
    if (showsChecks_) controller_->buildRuntimeCheckStateByItem(branch);
    if (showsNumbers_) controller_->buildRuntimeNumberLabelByItem(branch);
  }

  static std::shared_ptr<OLNumberLabelFormat> formatOf(Numbers numbers, const OLTree& tree) {
    if (numbers == Numbers::harvard) return std::make_shared<OLNumberLabelFormatHarvard>();
    if (numbers == Numbers::legal) return std::make_shared<OLNumberLabelFormatLegal>();
    return numberLabelFormatOfDocument(tree);
  }

  void printItem(const OutlineWalk& walk) {
    const std::shared_ptr<OLNode>& item = walk.item();
    const size_t indent = 2 * walk.level();
    std::string head(indent, ' ');
    if (showsChecks_) {
      head += markOf(controller_->runtimeCheckStateByItem(item));
      head += ' ';
    }
    if (options_.showsPaths) head += walk.path() + " ";
    if (showsNumbers_) {
      const ns::Value label = OLTreeRuntimeAttributesController::numberLabelByItem(item);
      if (label.isString()) head += outputText(label.string().utf8()) + " ";
    }
    line_.clear();
    style_.appendLines(line_, head, columnsOf(head), textOf("title", item));
    if (!options_.hidesNotes) {
      const ns::Value note = textOf("note", item);
      constexpr size_t kNoteIndent = 4;
      if (!note.isNone()) {
        style_.appendLines(line_, std::string(indent + kNoteIndent, ' '), indent + kNoteIndent,
                           note);
      }
    }
    output_.write(line_);
  }

  /// What is shown under a key: the text alone unless its looks show.
  [[nodiscard]] ns::Value textOf(const char* key, const std::shared_ptr<OLNode>& item) const {
    if (style_.isOn()) return OLTree::objectValueForKeyByItem(key, item);
    ns::String text = OLTree::stringForKeyByItem(key, item);
    if (text.empty() && OLTree::objectValueForKeyByItem(key, item).isNone()) return {};
    return ns::Value(text);
  }

  const OLDataManager& document_;
  std::string_view archive_;
  const ShowOptions& options_;
  Output& output_;
  StyledText style_;
  bool showsChecks_ = false;
  bool showsNumbers_ = false;
  std::shared_ptr<OLTreeRuntimeAttributesController> controller_;
  std::string line_;
};

int show(const ShowOptions& options) {
  Output output(Output::toStandardOutput);
  int status = kDone;
  bool isFirst = true;
  for (const std::string& file : options.files) {
    const auto showFile = [&](const std::string& name, Output& out) {
      const OpenDocument opened = openDocument(name);
      if (options.files.size() > 1) {
        if (!isFirst) out << "\n";
        out << outputText(name) << ":\n";
      }
      isFirst = false;
      OutlinePrinter(opened, options, out).print();
      return kDone;
    };
    status = std::max(status, forEachFile({file}, {.count = 1}, output, showFile).status());
  }
  output.flush();
  return status;
}

}  // namespace

void addShow(CLI::App& table, Action& action) {
  CLI::App* const command = table.add_subcommand("show", localized("Prints outlines as text"));
  const auto options = std::make_shared<ShowOptions>();
  addItemPath(*command, options->item);
  command->add_option("--depth", options->depth, localized("Only so many levels"))
      ->type_name("N")
      ->check(CLI::Range(size_t{1}, SIZE_MAX).description(""));
  command->add_flag("--no-notes", options->hidesNotes, localized("Leave out notes"));
  command->add_flag("--paths", options->showsPaths, localized("Show the path of each item"));
  command->add_flag("--expanded", options->followsExpansion,
                    localized("Leave out what is below collapsed items"));
  CLI::Option* const numbers =
      addChoice(*command, "--numbers", options->numbers, {"document", "legal", "harvard"},
                localized("Show number labels, by default those that the document names"));
  setValueLeftOut(*numbers, "document");
  addChoice(*command, "--checks", options->checks, {"auto", "always", "never"},
            localized("When to show check marks"));
  addColoring(*command, options->coloring);
  addFiles(*command, options->files);
  setAction(*command, action, [options] { return show(*options); });
}

}  // namespace tavlin
