#pragma once

#include "host/app/results/ResultsModel.h"

namespace tnhost {

/// Import results as text for other programs, the same in every locale but for the titles. Files
/// are followed by their parts.
class ResultsText {
public:
    ResultsText() = delete;

    /// RFC 4180, with a line of titles.
    static QString csv(const ResultsModel &model);
    /// These rows in their order, their fields separated by tabulators, for spreadsheets and mails.
    static QString tabbed(const ResultsModel &model, const QModelIndexList &rows);
};

} // namespace tnhost
