#pragma once

#include "host/import/JobResult.h"

#include <QtWidgets/QLabel>

#include <vector>

namespace tnhost {

class ImportLog;

/// Says how far the imports are, all running jobs together; empty when there is none. The log must
/// outlive it.
class ImportStatus : public QLabel {
    Q_OBJECT

public:
    explicit ImportStatus(const ImportLog &log, QWidget *parent = nullptr);

private:
    void refresh();

    std::vector<JobResultPtr> m_jobs;
};

} // namespace tnhost
