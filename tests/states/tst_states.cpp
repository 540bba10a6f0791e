#include "dialog/tnCADImportDialog.h"
#include "platform/tnPlatform.h"
#include "states/tnCADImportAddFolderState.h"
#include "states/tnCADImportReloadState.h"
#include "states/tnCADImportRunState.h"
#include "tests/support/ScriptedServices.h"

#include <QtTest/QtTest>

namespace {

const QString newImport = QStringLiteral(
    "_applyMaterialsLabel _applyMaterials _assetManager frame_7 _modeLabel _cbMode frame_10 "
    "_lbOutputDir _output_dir _tbOutputPath _globalReferenceBehaviorFrame _line1 ");
const QString merge = QStringLiteral(
    "_materialAssignmentLabel _materialAssignment _assetManager2 frame_13 _preserveTransformations "
    "_preserveAnimations _preserveTouchSensors _preserveRenderLayerSettings _line2 ");
const QString type = QStringLiteral("_fileTypeFrame ");
const QString buttons = QStringLiteral("frame_4 _pbDefaults _pbImport _pbClose ");
const QString addRemove = QStringLiteral("_pbAdd _pbRemove ");
const QString search = QStringLiteral("_lbDirectory _pbAbort ");
const QString progress = QStringLiteral("_progress _abort ");
const QString reloadButtons = QStringLiteral("frame_9 _pbReloadOk _pbReloadCancel ");
const QStringList all =
    (newImport + merge + type + buttons + addRemove + search + progress + reloadButtons)
        .split(' ', Qt::SkipEmptyParts);

template <typename State, bool... options>
void enter(tnCADImportDialog *dialog)
{
    State(dialog, options...).enter();
}
constexpr auto *addFiles = &enter<tnCADImportAddFilesState>;
constexpr auto *addFolder = &enter<tnCADImportAddFolderState>;
constexpr auto *reloadOne = &enter<tnCADImportReloadState, false>;
constexpr auto *reloadMany = &enter<tnCADImportReloadState, true>;
constexpr auto *run = &enter<tnCADImportRunState>;

} // namespace

class tst_States : public QObject {
    Q_OBJECT

    ScriptedServices m_services;

private Q_SLOTS:
    void init() { QSettings().clear(); }

    void look()
    {
        const QStringList importing{"Ready to import. Drag and drop to add more files and folders.",
                                    "Global Scene Options", "Import File(s)"};
        const QStringList running{"Convert file(s)", importing[1], importing[2]};
        const QStringList again{"Ready to re-import.", "Re-import Options", "Re-import File"};
        const struct {
            const char *state;
            void (*enter)(tnCADImportDialog *);
            QString shown, hidden;
            bool hasSettings, isLocked;
            QStringList texts;
        } rows[] = {
            {"addFiles", addFiles, newImport + type + buttons + addRemove,
             merge + search + progress + reloadButtons, true, false, importing},
            {"addFolder", addFolder, newImport + type + search, merge + buttons + progress, false,
             false, importing},
            {"reloadOne", reloadOne, merge + buttons,
             newImport + type + search + progress + reloadButtons + addRemove, true, true, again},
            {"reloadMany", reloadMany, merge + buttons + type,
             newImport + search + progress + reloadButtons + addRemove, true, true, again},
            {"run", run, progress, buttons + search + reloadButtons + addRemove, false, false,
             running},
        };
        for (const auto &[state, enter, shown, hidden, hasSettings, isLocked, texts] : rows) {
            tnCADImportDialog dialog(nullptr);
            for (const bool before : {true, false}) {
                for (const QString &name : all)
                    dialog.findChild<QWidget *>(name)->setVisible(before);
                enter(&dialog);
                for (const QString &name : all) {
                    const bool expected =
                        shown.contains(name + ' ') || (before && !hidden.contains(name + ' '));
                    QVERIFY2(dialog.findChild<QWidget *>(name)->isHidden() != expected,
                             qPrintable(QString(state) + name));
                }
            }
            QCOMPARE(dialog._settings->isEnabled(), hasSettings);
            QCOMPARE(!dialog.acceptDrops(), isLocked);
            QCOMPARE(dialog.tableView->editTriggers() == QAbstractItemView::NoEditTriggers,
                     isLocked);
            const QStringList written{dialog._result->text(), dialog._scene_settings->caption(),
                                      dialog.windowTitle()};
            QCOMPARE(written, texts);
        }
    }

    void assetManagerOfAReload()
    {
        tnCADImportDialog dialog(nullptr);
        reloadOne(&dialog);
        QVERIFY(!dialog._assetManager2->isHidden()); // not on screen: as listed
        dialog.show();
        for (const int index : {0, 2, 1}) {
            const QSignalBlocker quiet(dialog._materialAssignment);
            dialog._materialAssignment->setCurrentIndex(index);
            reloadOne(&dialog);
            QCOMPARE(dialog._assetManager2->isVisible(), index == 2);
        }
        dialog._materialAssignment->setCurrentIndex(2);
        addFiles(&dialog);
        QVERIFY(!dialog._assetManager2->isVisible());
    }

    void sizeFollowsTheScreen()
    {
        tnPlatform::setDpiScale(1.333, 2);
        const tnCADImportDialog dialog(nullptr);
        tnPlatform::setDpiScale(0, 0);
        QCOMPARE(dialog.size(), QSize(1079, 1200));
    }
};

QTEST_MAIN(tst_States)
#include "tst_states.moc"
