#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "logbook/logbookPath.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QTimer>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QDesktopServices>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>

class tst_TableMenu : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void openInBrowser(const QUrl &url) { m_opened << url.toLocalFile(); }

private Q_SLOTS:
    void init()
    {
        m_opened.clear();
        QDesktopServices::setUrlHandler("file", this, "openInBrowser");
        m_dialog.prepareImport({"/p/part.step", "/b/robot.step", "/c/c.step", "/a/a.step"}, {}, 0);
        m_model->addChildFiles({"/b/arm.step"}, "/b/robot.step");
        m_model->setFileNode("/b/robot.step", tndNode(7));
        m_model->setFileState("/b/robot.step", ImportState::Incomplete);
        m_model->setFileState("/a/a.step", ImportState::Succeeded);
        m_dialog.show();
        m_view->sortByColumn(tnCADImportFileModel::FileColumn, Qt::AscendingOrder);
        QCOMPARE(shown(), QString("a c part robot arm"));
    }
    void cleanup() { QDesktopServices::unsetUrlHandler("file"); }

    void offersWhatTheSelectionAllows_data()
    {
        QTest::addColumn<std::vector<int>>("rows"); // as shown
        QTest::addColumn<QString>("entries"); // those offered, by their first words
        QTest::newRow("none") << std::vector<int>{} << "Add Clear";
        QTest::newRow("one") << std::vector<int>{1} << "Add Remove Clear File";
        QTest::newRow("incomplete") << std::vector<int>{3} << "Reimport Add Remove Clear File";
        QTest::newRow("incomplete and other") << std::vector<int>{1, 3} << "Add Remove Clear";
    }
    void offersWhatTheSelectionAllows()
    {
        QFETCH(std::vector<int>, rows);
        QFETCH(QString, entries);
        select(rows);
        QCOMPARE(openMenu(), entries);
        m_model->setFileState("/a/a.step", ImportState::Failed);
        emit m_services.files.fileConversionStarted(1, "/a/a.step");
        QCOMPARE(openMenu(),
                 entries.remove(" Clear")
                     .replace("Add Remove", "Add Remove Log")
                     .replace(QRegularExpression("Add$"), "Add Log"));
    }

    void actsOnTheRowThatIsSeenSelected()
    {
        select({3});
        openMenu("Show File in Explorer");
        openMenu("Reimport Missing Components");
        QCOMPARE(m_services.files.reimports.size(), std::size_t(1));
        QCOMPARE(m_services.files.reimports.at(0).node, tndNode(7));
        m_view->setLocked(true);
        m_view->onRemoveImported();
        m_view->setLocked(false);
        QCOMPARE(m_model->rowCount(), 5);
        m_view->onShowLog();
        select({});
        m_view->onShowFiles();
        QCOMPARE(m_opened, QStringList({"/b", defaultOutputDirectory(), "/p"}));
        openMenu("Clear Imported Files");
        QCOMPARE(shown(), QString("c part robot arm"));
    }

    void deleteKeyWaitsForTheMenu()
    {
        const auto press = [this](QWidget *field) {
            QApplication::setActiveWindow(&m_dialog);
            field->setFocus();
            QTRY_VERIFY(field->hasFocus());
            QTest::keyClick(field, Qt::Key_Delete);
        };
        openMenu();
        select({3});
        press(m_view);
        QCOMPARE(m_model->rowCount(), 5);
        openMenu();
        press(m_dialog._cbMode);
        QCOMPARE(m_model->rowCount(), 5);
        press(m_view);
        QCOMPARE(shown(), QString("a c part"));
    }

private:
    QString shown() const
    {
        QStringList names;
        for (int row : m_view->sortedRows())
            names << QFileInfo(m_model->fileNames(false).at(row)).baseName();
        return names.join(' ');
    }
    void select(const std::vector<int> &rows)
    {
        m_view->clearSelection();
        for (int row : rows)
            m_view->selectionModel()->select(m_view->model()->index(row, 0),
                                             QItemSelectionModel::Select
                                                 | QItemSelectionModel::Rows);
    }
    /// Opens the menu, triggers the entry of that text and gives what was offered.
    QString openMenu(const QString &text = {})
    {
        QStringList offered;
        QTimer::singleShot(0, this, [&] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            for (QAction *action : menu->actions()) {
                if (!action->isSeparator() && action->isVisible() && action->isEnabled())
                    offered << action->text();
            }
            menu->close();
            for (QAction *action : menu->actions()) {
                if (action->text() == text && !text.isEmpty())
                    action->trigger();
            }
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, m_view->mapToGlobal({5, 5}));
        QApplication::sendEvent(m_view->viewport(), &event);
        return offered.replaceInStrings(QRegularExpression("^Show (Import )?"), QString())
            .replaceInStrings(QRegularExpression(" .*"), QString())
            .join(' ');
    }

    ScriptedServices m_services;
    tnCADImportDialog m_dialog{nullptr};
    tnCADImportTableView *m_view = m_dialog.tableView;
    tnCADImportFileModel *m_model = m_view->fileModel();
    QStringList m_opened;
};

QTEST_MAIN(tst_TableMenu)
#include "tst_tablemenu.moc"
