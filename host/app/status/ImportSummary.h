#pragma once

#include "host/import/JobResult.h"

#include <QtCore/QString>

#include <vector>

namespace tnhost {

/// What has become of jobs, in one sentence without a full stop: "98 of 100 files imported in 73 s,
/// 2 with warnings, 1 incomplete, 1 failed".
class ImportSummary {
public:
    /// Of all files of these jobs, which have ended.
    ImportSummary(const std::vector<JobResultPtr> &jobs, double seconds);

    /// Empty when there was no file.
    const QString &sentence() const { return m_sentence; }
    /// What matters most: Failed before Incomplete before Aborted (which includes files that were
    /// not begun) before Succeeded.
    FileResult::State state() const { return m_state; }

private:
    QString m_sentence;
    FileResult::State m_state = FileResult::State::Succeeded;
};

} // namespace tnhost
