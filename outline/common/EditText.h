#pragma once

#include "edit/EditOperation.h"
#include "outline/common/Output.h"

namespace tavlin {

/// Prints a line for each new path; in a dry run, of an operation that makes none but would change
/// something, a line that says what it would do.
void printOutcome(const EditOperation& operation, const EditOutcome& outcome, bool isDryRun,
                  Output& output);

}  // namespace tavlin
