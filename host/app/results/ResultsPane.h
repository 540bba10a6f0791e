#pragma once

#include "platform/tndNode.h"

#include <QtCore/QAbstractItemModel>
#include <QtCore/QMultiHash>
#include <QtWidgets/QWidget>

class QAction;
class QSortFilterProxyModel;
class QTreeView;

namespace tnhost {

class ImportLog;
class ResultsModel;
class Scene;

/// What has become of every file of the session, in a list that can be sorted, copied and saved.
class ResultsPane : public QWidget {
    Q_OBJECT

public:
    /// Log and scene must outlive the pane.
    ResultsPane(const ImportLog &log, const Scene &scene, QWidget *parent = nullptr);

    /// Writes all results as comma-separated values, in UTF-8. False, with a sentence for the user
    /// in error, when that cannot be done; what was in the file before is still there then.
    bool save(const QString &path, QString *error) const;

    /// Of the columns, for settings. What does not fit changes nothing.
    QByteArray headerState() const;
    void restoreHeader(const QByteArray &state);

signals:
    /// The user wants to see the node, which is in the scene.
    void nodeRequested(const tndNode &node);
    /// The user wants the files imported again, as far as they have a node in its place.
    void importRequested(const QStringList &files, const QMultiHash<QString, tndNode> &places);

private:
    QAction *addTool(const QString &name, const QString &icon, const QString &text,
                     void (ResultsPane::*slot)());
    /// In the order on show, as rows of the model.
    QModelIndexList selectedRows() const;
    QModelIndexList wantedAgain() const;
    void importAgain();
    void copy();
    void saveAs();
    void showRow(const QModelIndex &shown);
    void updateActions();

    const Scene &m_scene;
    ResultsModel *m_model; ///< this and the next two owned as QObject children
    QSortFilterProxyModel *m_order;
    QTreeView *m_view;
    QAction *m_again = nullptr;
    QAction *m_copy = nullptr;
    QAction *m_save = nullptr;
};

} // namespace tnhost
