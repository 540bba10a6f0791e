#pragma once

#include "platform/tnModuleBase.h"
#include "platform/tndNode.h"

#include <QtCore/QList>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

class tnCADImportDialog;

/// The CAD import module: registers the commands importCAD and reloadCAD and decides which of their
/// files go straight to the host's file service and which are the user's to look over first. One
/// object per process; GUI thread only. It ends the import dialog when it goes.
class tnCAD : public tnModuleBase {
    Q_OBJECT

public:
    tnCAD();
    ~tnCAD() override;

    /// The one module object, null before its construction.
    static tnCAD *instance() { return s_instance; }

    void *moduleQuery() override;
    void moduleNotify() override;
    int message(tnMessage &message) override;

    /// The import dialog, null as long as nothing has needed one. Events may delete it.
    tnCADImportDialog *dialog() const;

    /// Opens what of the files can be imported, under the parent (null: the host decides). The load
    /// state is one of tnCADImportDialog::Entry, or -1: see "loadState" in
    /// docs/host-integration.md. Gives true when the dialog holds the files and is in charge, false
    /// when there was nothing to open, the file service has taken the one file directly, or a
    /// dialog can't be made, which the log tells.
    bool openFiles(const QStringList &files, const tndNode &parent, int loadState, bool show);
    /// The same for files and folders. Folders are searched, with events being processed meanwhile:
    /// an aborted search opens what it has found, but nothing opens when the user closes the dialog
    /// that shows the search, or the application quits.
    bool openUrls(const QList<QUrl> &urls, const tndNode &parent, int loadState, bool show);
    /// The same for what the user chooses, modally, to be added to the scene.
    bool openWithChooser();

Q_SIGNALS:
    /// The host has begun a new scene.
    void onNewScene();

private:
    bool tryDirectLoad(const QString &file, const tndNode &parent, int loadState);

    static tnCAD *s_instance;
};
