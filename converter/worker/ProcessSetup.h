#pragma once

#include <string>

namespace tnconvert {

/// Takes the standard output for the program's own lines and hands everyone else's output (the
/// CAD kernel prints there) to the standard error. Returns the descriptor to write to, which the
/// caller keeps until the process ends.
int takeStandardOutput();

/// Bounds what the process may take: its address space, so that a damaged file ends with "not
/// enough memory" before it takes the machine down, the size of a file, open files; and no core
/// dumps.
void limitResources();

/// Makes a crash of this process print @p sentence to the standard error first. The process ends
/// all the same: nothing in it can be trusted any more.
void announceCrash(const std::string &sentence);

} // namespace tnconvert
