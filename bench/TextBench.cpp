// Normalisation of long text.  Times per run or unit stay the same as the text grows.

#include <benchmark/benchmark.h>

#include <string>

#include "platform/text/Font.h"
#include "platform/text/FontSource.h"
#include "platform/text/ParagraphStyle.h"
#include "text/AttributedStringFonts.h"
#include "text/ItemLinks.h"
#include "text/ItemText.h"
#include "text/StringUtilities.h"

namespace tavlin {
namespace {

/// A text of runs of `length` units, no two neighbours of equal attributes, every run with a
/// paragraph style of its own.
ns::AttributedString runs(size_t count, size_t length, const char* font) {
  const std::string line = std::string(length - 1, 'x') + "\n";
  std::string text;
  std::vector<std::pair<ns::Range, ns::Dictionary>> attributes;
  for (size_t run = 0; run < count; ++run) {
    ns::ParagraphStyle style = ns::ParagraphStyle::defaultParagraphStyle();
    style.setHeadIndent(static_cast<double>(run % 2 + 1));
    attributes.push_back({{text.size(), length},
                          {{ns::kFontAttributeName,
                            ns::Font::named(font, 9.0 + static_cast<double>(run % 5)).asValue()},
                           {ns::kParagraphStyleAttributeName, style.asValue()},
                           {"number", static_cast<int64_t>(run)}}});
    text += line;
  }
  ns::MutableAttributedString made{ns::AttributedString(ns::String::fromAscii(text))};
  made.setAttributesInRanges(attributes);
  return made.copy();
}

void CleanItemText(benchmark::State& state) {
  const ns::AttributedString text =
      runs(static_cast<size_t>(state.range(0)), static_cast<size_t>(state.range(1)), "Helvetica");
  for (auto _ : state) benchmark::DoNotOptimize(cleanedAttributedStringAsItemText(text));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(CleanItemText)
    ->Args({25'000, 10})
    ->Args({50'000, 10})
    ->Args({100'000, 10})
    ->Args({100'000, 100})
    ->Unit(benchmark::kMillisecond);

void CleanOneLongRun(benchmark::State& state) {
  const std::string units(static_cast<size_t>(state.range(0)), 'x');
  const ns::AttributedString text{ns::String::fromAscii(units)};
  for (auto _ : state) benchmark::DoNotOptimize(cleanedAttributedStringAsItemText(text));
}
BENCHMARK(CleanOneLongRun)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

void ColorItemText(benchmark::State& state) {
  const ns::AttributedString text = runs(static_cast<size_t>(state.range(0)), 10, "Helvetica");
  for (auto _ : state) benchmark::DoNotOptimize(coloredAttributedString(text, "red"));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ColorItemText)->Arg(50'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void RepairFonts(benchmark::State& state) {
  ns::CharacterSet coverage;
  coverage.addInterval({0, 0xFF});
  const ns::FontList fonts({{"LucidaGrande", "Lucida Grande", "Regular", coverage}});
  const ns::FontSource::ScopedShared scope(fonts);
  const ns::AttributedString text =
      runs(static_cast<size_t>(state.range(0)), 10, ".LucidaGrandeUI");
  for (auto _ : state) {
    ns::MutableAttributedString fixed(text);
    fixFontAttributes_suitableForDocumentInRange(fixed, {0, text.length()});
    benchmark::DoNotOptimize(fixed.copy());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(RepairFonts)->Arg(50'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void ReplaceOccurrences(benchmark::State& state) {
  const auto length = static_cast<size_t>(state.range(0));
  const ns::AttributedString text{ns::String::fromAscii(std::string(length, 'a'))};
  for (auto _ : state) {
    benchmark::DoNotOptimize(attributedStringByReplacingOccurrencesOfStringWithStringOptionsRange(
        text, "a", "bb", 0, {0, length}));
  }
}
BENCHMARK(ReplaceOccurrences)->Arg(5'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

void MarkLinks(benchmark::State& state) {
  std::string plain;
  for (int64_t i = 0; i < state.range(0); ++i) plain += "a@b.com\n";
  const ns::AttributedString text{ns::String::fromAscii(plain)};
  for (auto _ : state) {
    ns::MutableAttributedString marked(text);
    benchmark::DoNotOptimize(appendLinkForMe(marked));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(MarkLinks)->Arg(50'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void RemoveCharacters(benchmark::State& state) {
  std::string plain;
  for (int64_t i = 0; i < state.range(0); i += 2) plain += "a ";
  const ns::String text = ns::String::fromAscii(plain);
  const ns::CharacterSet blanks = ns::CharacterSet::whitespace();
  for (auto _ : state) {
    ns::String removed = text;
    removeCharactersFromSet(removed, blanks);
    benchmark::DoNotOptimize(removed);
  }
}
BENCHMARK(RemoveCharacters)->Arg(5'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavlin

BENCHMARK_MAIN();
