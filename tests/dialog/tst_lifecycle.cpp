#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "platform/tnPlatform.h"
#include "records/tnFileTyp.h"
#include "tests/support/ScriptedServices.h"
#include "tests/support/duringSearch.h"

#include <QtGui/QWindow>
#include <QtTest/QtTest>
#include <QtWidgets/QScrollBar>

#include <optional>

namespace {

const QStringList keys =
    QString("advancedOptionsCollapseState fileSpecificOptionsCollapseState geometry "
            "globalSceneOptionsCollapseState importOptionsCollapseState "
            "projectMergeOptionsCollapseState sharedCadOptionsCollapseState splitterState "
            "tessellationCollapseState")
        .split(' ')
        .replaceInStrings(QRegularExpression("^"), "importDialog/");

/// In the order of the collapse states among the keys.
std::vector<QTNCollapsibleFrame *> frames(const tnCADImportDialog &d)
{
    const tnTesselationSettings &t = *d._tesselation;
    return {t.advancedFrame,     d._file_specific_options, d._scene_settings,  d._advanced_settings,
            d._project_settings, d._general_settings,      t.tessellationFrame};
}

/// Importable files: one in the folder, one in a folder of it.
struct Folder {
    QTemporaryDir dir;
    QString top = dir.filePath("a.step");
    QString deep = dir.filePath("sub/b.igs");
    QList<QUrl> urls{QUrl::fromLocalFile(dir.path())};

    Folder()
    {
        QDir(dir.path()).mkdir("sub");
        for (const QString &path : {top, deep, dir.filePath("notes.txt")})
            QVERIFY(QFile(path).open(QIODevice::WriteOnly));
    }
};

bool drop(tnCADImportDialog &dialog, const QList<QUrl> &urls)
{
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent enter({1, 1}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&dialog, &enter); // makes the dialog the target
    QDropEvent event({1, 1}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.ignore();
    QCoreApplication::sendEvent(&dialog, &event);
    return event.isAccepted();
}

QSet<QString> listed(const tnCADImportDialog &dialog)
{
    const QStringList files = dialog.tableView->fileModel()->fileNames(false);
    return {files.begin(), files.end()};
}

bool isShowingSearch(const tnCADImportDialog &dialog)
{
    return !dialog._lbDirectory->isHidden() && !dialog._pbAbort->isHidden();
}

struct Form : QDialog, Ui::tnImportDialog {
    Form() { setupUi(this); }
};

/// Marks what is translated in the form's context.
class Marker : public QTranslator {
public:
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return qstrcmp(context, "tnImportDialog") ? QString() : QLatin1Char('#') + QString(text);
    }
    bool isEmpty() const override { return false; }
};

QStringList items(const QComboBox *box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts << box->itemText(i);
    return texts;
}

} // namespace

class tst_Lifecycle : public QObject {
    Q_OBJECT

private:
    std::optional<ScriptedServices> m_services;

private Q_SLOTS:
    void init()
    {
        QSettings().clear();
        m_services.emplace();
    }

    void theLanguageChanges()
    {
        // The texts change with the language; what stands at an index does not.
        Form form;
        form._output_dir->setText(QStringLiteral("somewhere"));
        form._result->setText(QStringLiteral("status"));
        form._cbFileType->addItem(QStringLiteral("Step"), 28); // at run time
        QMap<QComboBox *, QStringList> expected;
        for (QComboBox *box : form.findChildren<QComboBox *>()) {
            QVERIFY2(box->count() > 0 && !items(box).contains(QString()),
                     qPrintable(box->objectName()));
            box->setCurrentIndex(box->count() - 1);
            expected[box] = items(box);
            if (box != form._cbFileType)
                expected[box].replaceInStrings(QRegularExpression("^"), QStringLiteral("#"));
        }
        Marker marker;
        QCoreApplication::installTranslator(&marker);
        form.retranslateUi(&form);
        for (auto box = expected.cbegin(); box != expected.cend(); ++box) {
            QCOMPARE(items(box.key()), box.value());
            QCOMPARE(box.key()->currentIndex(), box.key()->count() - 1);
        }

        QCOMPARE(form._output_dir->text(), QString());
        // Set at run time, so not the form's to take back.
        QCOMPARE(form._result->text(), QStringLiteral("status"));
        QCOMPARE(form.windowTitle(), QStringLiteral("#Import File(s)"));
        QCOMPARE(form._scene_settings->caption(), QStringLiteral("#Global Scene Options"));
    }

    void framesStandOpen()
    {
        const Form form;
        const auto frames = form._settings->findChildren<QTNCollapsibleFrame *>(
            QRegularExpression("_settings$|_file_specific_options"));
        QCOMPARE(frames.size(), 5);
        for (QTNCollapsibleFrame *frame : frames) {
            QVERIFY2(!frame->isCollapsed(), qPrintable(frame->caption()));
            // Folding takes the page along only if the frame was given it.
            frame->setCollapsed(true);
            for (const QWidget *page : frame->findChildren<QWidget *>(QRegularExpression("page")))
                QVERIFY2(!page->isVisibleTo(frame), qPrintable(frame->caption()));
        }
    }

    void windowSettingsComeBack()
    {
        for (const unsigned int pattern : {0x55u, 0x2au, 0x33u}) {
            {
                tnCADImportDialog dialog(nullptr);
                for (std::size_t i = 0; i < 7; ++i)
                    frames(dialog)[i]->setCollapsed((pattern >> i & 1) != 0);
                dialog.resize(740, 500 + int(pattern));
                dialog._pbReloadOk->click();
                QVERIFY(QSettings().allKeys().isEmpty());
            }
            QCOMPARE(QSettings().allKeys(), keys);
            QCOMPARE(QSettings().value(keys[0]).toBool(), (pattern & 1) != 0);
            {
                const tnCADImportDialog dialog(nullptr);
                for (std::size_t i = 0; i < 7; ++i)
                    QCOMPARE(frames(dialog)[i]->isCollapsed(), (pattern >> i & 1) != 0);
                QCOMPARE(dialog.height(), 500 + int(pattern));
            }
            QSettings().clear();
        }
    }

    void theWindowStaysWhereItWasMoved()
    {
        tnCADImportDialog dialog(nullptr);
        dialog.prepareImport({}, {}, 0);
        dialog.show();
        dialog.windowHandle()->setPosition(17, 29); // as the window manager does it
        QTRY_COMPARE(dialog.geometry().topLeft(), QPoint(17, 29));
        dialog._pbClose->click();
        dialog.show();
        QCOMPARE(dialog.geometry().topLeft(), QPoint(17, 29));
    }

    void damagedSettingsDoNoHarm()
    {
        const QByteArray upright = QSplitter(Qt::Vertical).saveState();
        const QByteArray cut = QWidget().saveGeometry().left(20);
        for (const QVariant &value : {QVariant("\x01 garbage"), QVariant(QStringList{"a", "b"}),
                                      QVariant(-7), QVariant(cut), QVariant(upright)}) {
            for (const QString &key : keys)
                QSettings().setValue(key, value);
            tnCADImportDialog dialog(nullptr);
            dialog.show();
            QCOMPARE(dialog._splitter->orientation(), Qt::Horizontal);
            QVERIFY(dialog._settings->width() >= 440 && dialog.tableView->width() > 200);
        }
    }

    void theWindowHoldsItsContents_data()
    {
        QTest::addColumn<int>("pointSize");
        QTest::addColumn<bool>("isWider");
        QTest::newRow("usual font") << 9 << false;
        QTest::newRow("large font") << 12 << true;
        QTest::newRow("very large font") << 14 << true;
    }
    void theWindowHoldsItsContents()
    {
        QFETCH(const int, pointSize);
        const QFont usual = QApplication::font();
        const auto restore = qScopeGuard([&usual] { QApplication::setFont(usual); });
        QApplication::setFont(QFont(usual.family(), pointSize));
        tnPlatform::setDpiScale(1, 1);
        tnCADImportDialog dialog(nullptr);
        tnPlatform::setDpiScale(0, 0);
        dialog.prepareImport({"/cad/a.step"}, {}, 0);
        emit m_services->files.fileTypeReceived("/cad/a.step", tnCADFileTypes::Step);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QCoreApplication::processEvents(); // what is not laid out yet overflows nowhere
        QVERIFY(dialog._settings->verticalScrollBar()->maximum() > 0);
        QCOMPARE(dialog._settings->horizontalScrollBar()->maximum(), 0);
        QCOMPARE(dialog.tableView->horizontalScrollBar()->maximum(), 0);
        QTEST(dialog.width() > 810, "isWider");
        QVERIFY(dialog.width() >= 810 && dialog.height() == 600);
        const QWidget *stop = dialog.nextInFocusChain();
        while (!stop->isVisible() || !(stop->focusPolicy() & Qt::TabFocus))
            stop = stop->nextInFocusChain();
        QCOMPARE(stop->objectName(), QString("_cbFileType"));
    }

    void aReloadReplacesWhatWasThere()
    {
        tnCADImportDialog dialog(nullptr);
        dialog._cbMode->setCurrentIndex(2);
        dialog.prepareImport({"/cad/a.step"}, tndNode(5), 0);
        dialog.prepareImport({"/cad/b.igs", "/cad/no.txt"}, tndNode(6), 3);
        QCOMPARE(listed(dialog), QSet<QString>{"/cad/b.igs"});
        QVERIFY(dialog._cbMode->currentIndex() == 0 && !dialog._cbMode->signalsBlocked());
        QCOMPARE(dialog._globalReferenceBehavior->currentIndex(), 1);
        dialog.onImport();
        QVERIFY(m_services->files.loads.at(0).load); // not the mode that converts only
        QCOMPARE(m_services->files.loads.at(0).target, tndNode(6));
    }

    void endsOfTheDialog()
    {
        tnCADImportDialog dialog(nullptr);
        dialog.prepareImport({"/cad/a.step", "/cad/b.igs"}, {}, 0);
        dialog._globalReferenceBehavior->setCurrentIndex(1);
        dialog._globalReferenceBehavior->setCurrentIndex(0);
        QVERIFY(dialog._globalReferenceBehavior->toolTip().contains("combines all references"));
        dialog._centerInOrigin->setChecked(true);

        dialog._abort->setEnabled(false);
        dialog.reject(); // as Escape does: nothing but hiding
        QVERIFY(listed(dialog).size() == 2 && !dialog._abort->isEnabled());
        QVERIFY(!m_services->files.sceneSettings.getCenterInOrigin());
        dialog._pbReloadOk->click();
        QVERIFY(m_services->files.sceneSettings.getCenterInOrigin());
        QVERIFY(dialog.result() == QDialog::Accepted && listed(dialog).isEmpty());
    }

    void dropsAreSearched()
    {
        Folder folder;
        tnCADImportDialog dialog(nullptr);
        int visits = 0;
        bool stop = false;
        connect(&tnFileTyp::instance(), &tnFileTyp::enterDirectory, &dialog, [&] {
            ++visits;
            QVERIFY(isShowingSearch(dialog) && dialog._pbImport->isHidden());
            QVERIFY(QGuiApplication::overrideCursor());
            if (stop)
                dialog._pbAbort->click();
        });
        dialog.prepareImport({}, {}, 0);
        QVERIFY(!drop(dialog, {}));
        QVERIFY(drop(dialog, folder.urls) && visits > 1);
        QCOMPARE(listed(dialog), (QSet<QString>{folder.top, folder.deep}));
        QVERIFY(!isShowingSearch(dialog) && !dialog._pbImport->isHidden());
        QVERIFY(!QGuiApplication::overrideCursor());

        dialog.prepareImport({}, {}, 0);
        visits = 1;
        stop = true;
        QVERIFY(drop(dialog, QList<QUrl>{QUrl::fromLocalFile(folder.top)} + folder.urls));
        QVERIFY(visits == 2 && listed(dialog).contains(folder.top));

        stop = false;
        dialog.onImport();
        drop(dialog, folder.urls);
        QVERIFY(!dialog._abort->isHidden() && dialog._pbImport->isHidden());
        emit m_services->files.importFinished(1, 1);
        QVERIFY(dialog._abort->isHidden() && !dialog._pbImport->isHidden());
    }

    void theLabelFollowsTheSearch()
    {
        tnCADImportDialog dialog(nullptr);
        const auto enter = [](const QString &path) {
            emit tnFileTyp::instance().enterDirectory(path);
        };
        for (const char *path : {"/first", "/second", "/last"})
            enter(path);
        QCOMPARE(dialog._lbDirectory->text(), QString("/first"));
        QTRY_COMPARE(dialog._lbDirectory->text(), QString("/last"));
    }

    void anythingMayHappenDuringASearch()
    {
        Folder folder;
        QTemporaryDir other;
        QVERIFY(QFile(other.filePath("other.stl")).open(QIODevice::WriteOnly));
        const QList<QUrl> otherUrl{QUrl::fromLocalFile(other.path())};
        QPointer<tnCADImportDialog> dialog;
        const auto finish = [&](const QString &path) {
            dialog->tableView->fileModel()->setFileState(path, ImportState::Succeeded);
            emit m_services->files.importFinished(1, 1);
        };
        const struct {
            QByteArray what;
            bool isOpen;
            QString left;
            std::function<void()> happens;
        } rows[] = {
            {"drop", true, "old.step other.stl a.step b.igs",
             [&] {
                 drop(*dialog, otherUrl);
                 QVERIFY(isShowingSearch(*dialog) && dialog->_pbImport->isHidden());
             }},
            {"drop, closed", false, "old.step",
             [&] { duringSearch([&] { drop(*dialog, otherUrl); }, [&] { dialog->reject(); }); }},
            {"command without finds", true, "old.step a.step b.igs",
             [&] {
                 dialog->searchUrls({QUrl::fromLocalFile(QDir(other.path()).filePath("none"))});
                 QVERIFY(isShowingSearch(*dialog));
             }},
            {"end of a batch", true, "old.step a.step b.igs",
             [&] {
                 finish("/cad/old.step");
                 QVERIFY(isShowingSearch(*dialog) && dialog->_pbImport->isHidden());
             }},
            {"close", false, "", [&] { dialog->_pbClose->click(); }},
            {"escape", false, "old.step", [&] { dialog->reject(); }},
            {"prepare", true, "new.step", [&] { dialog->prepareImport({"/cad/new.step"}, {}, 3); }},
            {"batch", false, "",
             [&] {
                 dialog->prepareImport({"/cad/new.step"}, {}, 0);
                 finish("/cad/new.step");
             }},
            {"search", true, "other.stl",
             [&] { dialog->prepareImport(dialog->searchUrls(otherUrl), {}, 0); }},
            {"delete", false, "", [&] { delete dialog; }},
        };
        for (const auto &row : rows) {
            dialog = new tnCADImportDialog(nullptr);
            dialog->prepareImport({"/cad/old.step"}, {}, 0);
            dialog->show();
            const QSignalSpy visits(&tnFileTyp::instance(), &tnFileTyp::enterDirectory);
            QVERIFY2(duringSearch([&] { dialog->addDroppedUrls(folder.urls); }, row.happens),
                     row.what);
            // Nobody waits for the rest of a search whose finds are dropped.
            QVERIFY2(row.left.contains("a.step") || visits.size() < 6, row.what);
            QVERIFY2(!QGuiApplication::overrideCursor(), row.what);
            QVERIFY2(!dialog == (row.what == "delete"), row.what);
            if (!dialog)
                continue;
            QString files = dialog->tableView->fileModel()->fileNames(false).join(' ');
            files.remove(QRegularExpression("[^ ]*/"));
            QVERIFY2(files == row.left, row.what + ' ' + files.toUtf8());
            QVERIFY2(dialog->isVisible() == row.isOpen && !isShowingSearch(*dialog), row.what);
            QVERIFY2((dialog->windowTitle() == "Re-import File") == (row.what == "prepare"),
                     row.what);
            delete dialog;
        }
    }
};

QTEST_MAIN(tst_Lifecycle)
#include "tst_lifecycle.moc"
