#include <array>
#include <string>
#include <vector>

#include "exchange/DerivedState.h"
#include "exchange/DocumentProperties.h"
#include "exchange/HtmlFormat.h"
#include "exchange/HtmlPage.h"
#include "exchange/HtmlText.h"
#include "exchange/ItemContent.h"
#include "exchange/OutlineWalk.h"
#include "exchange/PieceWriter.h"
#include "model/OLTree.h"

namespace tavlin {

namespace {

struct Mark {
  std::string_view name;   // of its look
  std::string_view words;  // for who cannot see it
};

Mark markOf(OLRuntimeCheckState state) {
  switch (state) {
    case OLRuntimeCheckStateChecked:
      return {"yes", "checked"};
    case OLRuntimeCheckStateAllChildrenChecked:
      return {"all", "all children checked"};
    case OLRuntimeCheckStatePartlyChecked:
      return {"some", "partly checked"};
    case OLRuntimeCheckStateUnchecked:
      return {"no", "not checked"};
    case OLRuntimeCheckStateHidden:
      break;
  }
  return {"none", ""};
}

constexpr std::array<std::pair<std::string_view, std::string_view>, 7> kPropertyNames = {
    {{"title", "Title"},
     {"authors", "Authors"},
     {"organizations", "Organizations"},
     {"copyright", "Copyright"},
     {"subject", "Subject"},
     {"keywords", "Keywords"},
     {"comment", "Comment"}}};

class HtmlExport {
 public:
  HtmlExport(const ExportSource& source, const HtmlOptions& options, const TextSink& sink)
      : source_(source), out_(sink), text_(out_, losses_) {
    const auto& tree = *source.document->treeController()->tree();
    showsChecks_ = hasShownCheckedItem(tree);
    showsNumbers_ = options.numbers != nullptr;
    if (!showsChecks_ && !showsNumbers_) return;
    derived_ = derivingController(*source.document);
    if (showsChecks_) derived_->buildRuntimeCheckState();
    if (showsNumbers_) {
      derived_->setNumberLabelFormat(options.numbers);
      derived_->buildRuntimeNumberLabel();
    }
  }

  Losses run() {
    losses_.values += countOfOtherDocumentValues(*source_.document);
    const std::vector<Property> properties = documentProperties(*source_.document);
    writeHead(properties);
    writeProperties(properties);
    out_.put(
        "<form role=\"search\" hidden>\n<label for=\"filter\">Filter items</label>\n"
        "<input id=\"filter\" type=\"search\" autocomplete=\"off\" spellcheck=\"false\">\n"
        "<output for=\"filter\" aria-live=\"polite\"></output>\n</form>\n");
    // the language of what people wrote is not known
    out_.put("<main lang=\"\">\n");
    writeItems();
    out_.put("</main>\n<script>");
    out_.put(html_page::kScript);
    out_.put("</script>\n</body>\n</html>\n");
    out_.flush();
    return losses_;
  }

 private:
  void writeHead(const std::vector<Property>& properties) {
    out_.put("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n");
    out_.put(
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
        "'sha256-");
    out_.put(html_page::kStyleHash);
    out_.put("'; script-src 'sha256-");
    out_.put(html_page::kScriptHash);
    out_.put("'; base-uri 'none'; form-action 'none'\">\n");
    out_.put("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n");
    out_.put(
        "<meta name=\"referrer\" content=\"no-referrer\">\n<meta name=\"generator\" "
        "content=\"tavlin\">\n<title>");
    text_.put(titleOf(properties));
    out_.put("</title>\n<style>");
    out_.put(html_page::kStyle);
    out_.put("</style>\n</head>\n<body>\n");
  }

  static ns::String titleOf(const std::vector<Property>& properties) {
    for (const Property& property : properties) {
      if (std::string_view(property.key->name) == "title" && !property.texts[0].empty()) {
        return property.texts[0];
      }
    }
    return "Outline";
  }

  void writeProperties(const std::vector<Property>& properties) {
    out_.put("<header>\n<h1 dir=\"auto\">");
    text_.put(titleOf(properties));
    out_.put("</h1>\n");
    bool hasList = false;
    for (const Property& property : properties) {
      if (std::string_view(property.key->name) == "title" || property.texts.empty()) continue;
      if (!property.key->isList && property.texts[0].empty()) continue;
      if (!hasList) out_.put("<dl>\n");
      hasList = true;
      out_.put("<dt>");
      for (const auto& [name, words] : kPropertyNames) {
        if (name == property.key->name) out_.put(words);
      }
      out_.put("</dt><dd dir=\"auto\" lang=\"\">");
      // a text may hold a comma, so each is an element
      for (const ns::String& text : property.texts) {
        out_.put("<span>");
        text_.put(text);
        out_.put("</span> ");
      }
      out_.put("</dd>\n");
    }
    if (hasList) out_.put("</dl>\n");
    out_.put("</header>\n");
  }

  void writeItems() {
    auto walk = source_.item ? OutlineWalk::from(source_.item)
                             : OutlineWalk::below(source_.document->rootItem());
    if (!walk.item()) {
      out_.put("<p class=\"empty\">No items.</p>\n");
      return;
    }
    // lists without bullets are no lists to some readers unless they say so
    out_.put("<ul role=\"list\">\n");
    size_t open = 0;
    for (; walk.item(); walk.next()) {
      for (; open > walk.level(); --open) out_.put("</ul></details></li>\n");
      writeItem(walk.item());
      if (walk.item()->countChildren() > 0) ++open;
    }
    for (; open > 0; --open) out_.put("</ul></details></li>\n");
    out_.put("</ul>\n");
  }

  /// An item: all of it, or down to its children.
  void writeItem(const std::shared_ptr<OLNode>& item) {
    const ns::Dictionary data = item->dataInPassing().value_or(ns::Dictionary());
    ns::Value title;
    ns::Value note;
    for (const auto& [key, value] : data) {
      const ns::String name = key.string();
      if (name == "title" && isText(value)) {
        title = value;
      } else if (name == "note" && isText(value)) {
        note = value;
      } else if (!(name == "checkStatus" || name == "showCheckState")) {
        ++losses_.values;
      }
    }
    const bool isParent = item->countChildren() > 0;
    out_.put(showsChecks_ ? "<li class=\"marked\">" : "<li>");
    if (isParent) {
      out_.put(item->isExpanded() ? "<details open><summary>" : "<details><summary>");
    } else {
      out_.put("<div class=\"item\">");
    }
    writeMark(item);
    writeNumber(item);
    if (text_.isEmpty(title)) {
      out_.put("<span class=\"untitled\" lang=\"en\">untitled</span>");
    } else {
      out_.put("<span class=\"title\" dir=\"auto\">");
      text_.put(title);
      out_.put("</span>");
    }
    out_.put(isParent ? "</summary>" : "</div>");
    if (!text_.isEmpty(note)) {
      out_.put("<div class=\"note\" dir=\"auto\">");
      text_.put(note);
      out_.put("</div>");
    }
    out_.put(isParent ? "<ul role=\"list\">\n" : "</li>\n");
  }

  void writeMark(const std::shared_ptr<OLNode>& item) {
    if (!showsChecks_) return;
    const Mark mark = markOf(derived_->runtimeCheckStateByItem(item));
    out_.put("<span class=\"check ");
    out_.put(mark.name);
    if (mark.words.empty()) {
      out_.put("\"></span>");
      return;
    }
    out_.put("\" role=\"img\" lang=\"en\" aria-label=\"");
    out_.put(mark.words);
    out_.put("\"></span>");
  }

  void writeNumber(const std::shared_ptr<OLNode>& item) {
    if (!showsNumbers_) return;
    const ns::Value label = OLTreeRuntimeAttributesController::numberLabelByItem(item);
    if (!label.isString()) return;
    out_.put("<span class=\"number\">");
    text_.put(label.string());
    out_.put("</span>");
  }

  static bool isText(const ns::Value& value) { return value.isString() || isRichText(value); }

  const ExportSource& source_;
  PieceWriter out_;
  Losses losses_;
  HtmlText text_;
  std::shared_ptr<OLTreeRuntimeAttributesController> derived_;
  bool showsChecks_ = false;
  bool showsNumbers_ = false;
};

}  // namespace

Losses exportHtml(const ExportSource& source, const HtmlOptions& options, const TextSink& sink) {
  return HtmlExport(source, options, sink).run();
}

}  // namespace tavlin
