#pragma once

#include "platform/tnModuleBase.h"
#include "platform/tndNode.h"

#include <QtCore/QList>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <functional>

/// The CAD import module: registers the commands importCAD and reloadCAD and decides which of their
/// files go straight to the host's file service and which are the user's to look over first. One
/// object per process; GUI thread only.
class tnCAD : public tnModuleBase {
    Q_OBJECT

public:
    /// The workflow that a command asks for; see "loadState" in docs/host-integration.md.
    enum LoadState { DirectLoad = -1, AddFiles = 0, AddFolder = 1, Run = 2, Reload = 3 };

    /// Takes the files into the import dialog. Gives true when the dialog is in charge of them.
    using DialogHandOver =
        std::function<bool(const QStringList &files, const tndNode &parent, int state, bool show)>;

    tnCAD();
    ~tnCAD() override;

    /// The one module object, null before its construction.
    static tnCAD *instance() { return s_instance; }

    void *moduleQuery() override;
    void moduleNotify() override;
    int message(tnMessage &message) override;

    /// Opens what of the files can be imported, under the parent (null: the host decides). Gives
    /// true when the dialog holds the files and is in charge, false when there was nothing to open
    /// or the file service has taken the one file directly.
    bool openFiles(const QStringList &files, const tndNode &parent, int loadState, bool show);
    /// The same for files and folders; folders are searched, with events being processed meanwhile.
    bool openUrls(const QList<QUrl> &urls, const tndNode &parent, int loadState, bool show);

    /// The one way from here to the dialog.
    void setDialogHandOver(DialogHandOver handOver);

Q_SIGNALS:
    /// The host has begun a new scene.
    void onNewScene();

private:
    bool tryDirectLoad(const QString &file, const tndNode &parent, int loadState);
    bool handOverToDialog(const QStringList &files, const tndNode &parent, int state, bool show);

    static tnCAD *s_instance;

    DialogHandOver m_dialogHandOver;
};
