#pragma once

#include <QtCore/QObject>
#include <QtCore/QStringList>

namespace tnhost {

class ImportLog;

/// The files whose imports were begun last, also in earlier sessions.
class RecentFiles : public QObject {
    Q_OBJECT

public:
    /// The log must outlive the object.
    explicit RecentFiles(const ImportLog &log, QObject *parent = nullptr);

    /// Absolute paths, the latest one first; some of them may be gone.
    QStringList paths() const;
    void clear();

signals:
    void changed();

private:
    void add(const QStringList &files);
};

} // namespace tnhost
