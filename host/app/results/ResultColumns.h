#pragma once

#include "host/import/FileResult.h"

#include <QtCore/QString>

#include <vector>

namespace tnhost {

/// One file of a job, or one part of such a file, with what its result does not say.
struct ResultRow {
    const FileResult &result;
    const FileResult *assembly = nullptr; ///< of which the result is a part; null for a file
    bool isOver = false; ///< nothing more comes of the job

    /// The node that shows it, which may be gone by now; null when there never was one.
    tndNode node() const { return assembly ? assembly->node : result.node; }
    bool isUnsuccessful() const { return isOver && result.state != FileResult::State::Succeeded; }
};

/// One kind of fact about a row.
struct ResultColumn {
    using Text = QString (*)(const ResultRow &);

    const char *title; ///< to be translated, context ResultColumns
    int width; ///< usual one, in characters; 0: out of sight, for whoever copies or saves
    bool isNumber;
    Text shown; ///< by the user's locale; short
    Text whole; ///< the same in every locale, nothing left out
    Text hint; ///< what the short text leaves out; null: nothing
    bool (*isLess)(const ResultRow &, const ResultRow &); ///< quick: no text is made for it
};

/// The columns of the import results.
class ResultColumns {
public:
    ResultColumns() = delete;

    static const std::vector<ResultColumn> &all();
    static QString title(const ResultColumn &column);
    /// What is wrong with it or missing from it, one sentence or more; empty for a success.
    static QString problem(const ResultRow &row);
};

} // namespace tnhost
