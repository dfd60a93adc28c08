#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/Exchange.h"
#include "model/runtime/OLNumberLabelFormat.h"

namespace tavlin {

/// How the items are numbered, in formats that show it.
using NumberLabels = std::shared_ptr<OLNumberLabelFormat>;

/// A format that outlines go out to and come in from.
struct Format {
  const char* name;                     ///< "markdown"
  std::vector<const char*> extensions;  ///< Of names of files, without the full stop.
  /// The labels are none where none are asked for.
  Losses (*write)(const ExportSource& source, const NumberLabels& numbers, const TextSink& sink);
  Imported (*read)(std::string_view content);  ///< None of one that does not come back.
  bool showsNumbers = false;
};

/// All of them, in the order in which help names them.
[[nodiscard]] const std::vector<Format>& formats();
/// Their names; those that come back alone where `thatComeBack`.
[[nodiscard]] std::vector<std::string> formatNames(bool thatComeBack);
/// The format of that name; none where there is none.
[[nodiscard]] const Format* formatNamed(const std::string& name);
/// The format that a file's name tells by its extension, in whatever case; none where it tells
/// none.
[[nodiscard]] const Format* formatOfFile(const std::string& file);

/// Names the file and what was left out of it on the way, in one line; nothing where nothing was.
void reportLosses(const std::string& file, const Losses& losses, const std::string& whereTo,
                  const std::string& ofText);

}  // namespace tavlin
