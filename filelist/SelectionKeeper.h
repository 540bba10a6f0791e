#pragma once

#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QString>

class tnCADImportTableView;

/// Keeps what is selected, current and in sight over a reset of the list's model, as far as the
/// files stay; a row that was current and goes leaves that to its neighbour. Files are known by
/// their paths, which are unique among those that can be selected.
class SelectionKeeper : public QObject {
    Q_OBJECT

public:
    /// The view becomes the parent; its model must be set already, and stay.
    explicit SelectionKeeper(tnCADImportTableView *view);

private:
    void save();
    void restore();

    tnCADImportTableView *m_view;
    QSet<QString> m_selected;
    QString m_current;
    int m_currentRow = 0;
    int m_currentColumn = 0;
    int m_scrolled = 0;
};
