#include "outline/common/EditText.h"

namespace tavlin {

void printOutcome(const EditOperation& operation, const EditOutcome& outcome, bool isDryRun,
                  Output& output) {
  for (const std::string& path : outcome.newPaths) output << path << "\n";
  if (!isDryRun || !outcome.hasChanged || !outcome.newPaths.empty()) return;
  std::string line = nameOf(operation.kind);
  for (const std::string& path : operation.paths) line += " " + path;
  output << line << "\n";
}

}  // namespace tavlin
