#pragma once

#include "host/headless/FileResult.h"

#include <QtCore/QStringList>

#include <vector>

namespace tnhost {

/// The results of jobs as text, the same in every locale.
class ResultTable {
public:
    ResultTable() = delete;

    /// A line of titles and one per file, in aligned columns. Paths below the working directory are
    /// told as seen from there.
    static QStringList lines(const std::vector<FileResult> &results);
    /// How many files ended how, in one sentence without full stop. Unreported files are those of
    /// which no more than their number is known.
    static QString summary(const std::vector<FileResult> &results, int unreported);
};

} // namespace tnhost
