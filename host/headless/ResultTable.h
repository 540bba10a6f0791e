#pragma once

#include "host/import/FileResult.h"

#include <QtCore/QStringList>

#include <vector>

namespace tnhost {

/// The results of jobs as text, the same in every locale.
class ResultTable {
public:
    ResultTable() = delete;

    /// A line of titles and one per file, in aligned columns, with a line below it for each of its
    /// warnings. Paths below the working directory are
    /// given as seen from there.
    static QStringList lines(const std::vector<FileResult> &results);
    /// How many files ended how, in one sentence without full stop.
    static QString summary(const std::vector<FileResult> &results);
};

} // namespace tnhost
