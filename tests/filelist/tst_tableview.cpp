#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnFileImportDialog.h"
#include "logbook/logbookPath.h"
#include "platform/tnHeaderViewBase.h"
#include "tests/support/ScriptedServices.h"

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

using Model = tnCADImportFileModel;

class tst_TableView : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void openInBrowser(const QUrl &url) { m_opened << url.toLocalFile(); }

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName("tests");
        QDesktopServices::setUrlHandler("file", this, "openInBrowser");
    }

    void init()
    {
        m_dialog = std::make_unique<tnCADImportDialog>(nullptr);
        m_view = m_dialog->tableView;
        m_model = m_view->fileModel();
        m_dialog->prepareImport({"/p/part.step", "/b/robot.step", "/c/c.step", "/a/a.step"}, {}, 0);
        m_model->addChildFiles({"/b/arm.step"}, "/b/robot.step");
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
    }

    void standsAsItCameUntilSorted()
    {
        QCOMPARE(shown(), QString("part robot arm c a"));
        m_view->setSortingEnabled(true);
        QCOMPARE(shown(), QString("part robot arm c a"));
        for (const char *expected :
             {"a c part robot arm", "robot arm part c a", "a c part robot arm"}) {
            doubleClickHeader(Model::FileColumn);
            QCOMPARE(shown(), QString(expected));
        }
    }

    void rowsMoveAtOnceAndPartsAlong()
    {
        m_view->sortByColumn(Model::StateColumn, Qt::AscendingOrder);
        m_model->addChildFiles({"/b/hand.prt"}, "/b/robot.step");
        QCOMPARE(shown(), QString("part robot hand arm c a"));
        m_view->selectRow(5);
        m_model->setFileState("/c/c.step", ImportState::Succeeded);
        m_model->setFileState("/b/robot.step", ImportState::Succeeded);
        QCOMPARE(shown(), QString("part a robot hand arm c"));
        QCOMPARE(m_view->selectionModel()->selectedRows().size(), 1);
        QVERIFY(m_view->selectionModel()->isRowSelected(1, {}));
        m_model->setFileState("/b/robot.step", ImportState::Aborted);
        QCOMPARE(shown(), QString("part a c robot hand arm"));
        m_model->setFileState("/b/robot.step", ImportState::Importing);
        QCOMPARE(shown(), QString("part a robot hand arm c"));
        m_view->sortByColumn(Model::StateColumn, Qt::DescendingOrder);
        QCOMPARE(shown(), QString("c robot hand arm part a"));
        m_model->setFileState("/b/robot.step", ImportState::Pending);
        QCOMPARE(shown(), QString("c part robot hand arm a"));

        const QSignalSpy layout(m_view->model(), &QAbstractItemModel::layoutChanged);
        m_model->setFileProgress("/b/robot.step", 50, "half way");
        QCOMPARE(layout.size(), 0);
    }

    void manyRowsAtOnce_data()
    {
        QTest::addColumn<int>("column");
        QTest::newRow("unsorted") << -1;
        QTest::newRow("sorted, alike") << int(Model::SizeColumn);
        QTest::newRow("sorted by name") << int(Model::FileColumn);
    }
    /// Who asks in the middle gets the rows of that moment, and what the user sees in the list
    /// stays as it is, as far as the rows do.
    void manyRowsAtOnce()
    {
        QFETCH(const int, column);
        QStringList files;
        for (int i = 0; i < 3000; ++i)
            files << QString("/p/%1.step").arg(i * 7 % 3000, 4, 10, QLatin1Char('0'));
        m_model->clear();
        m_model->addFiles(files.mid(0, 1000));
        m_view->sortByColumn(column, Qt::DescendingOrder);
        m_view->horizontalHeader()->resizeSection(1, 77);
        m_view->setColumnHidden(2, true);
        select({3, 4, 698, 699, 900});
        m_view->selectionModel()->setCurrentIndex(m_view->model()->index(699, 1),
                                                  QItemSelectionModel::NoUpdate);
        m_view->verticalScrollBar()->setValue(690);

        int questions = 0;
        const auto ask = [&](auto, int row) {
            if (m_model->isEmpty() || (row % 150 != 0 && row < 2998))
                return;
            ++questions;
            QCOMPARE(m_view->fileModel(), m_model);
            QStringList expected = m_model->fileNames(false);
            if (column == Model::FileColumn)
                std::sort(expected.begin(), expected.end(), std::greater<>());
            QCOMPARE(shownPaths(), expected);
            const QModelIndex last = m_view->model()->index(expected.size() - 1, 0);
            QCOMPARE(last.data().toString(), QFileInfo(expected.last()).fileName());
        };
        connect(m_model, &Model::rowsInserted, this, ask);
        connect(m_model, &Model::rowsRemoved, this, ask);
        const auto selectedNames = [&] {
            QStringList names;
            for (const QModelIndex &index : m_view->selectionModel()->selectedRows())
                names << index.data().toString();
            names.sort();
            return names;
        };
        const auto check = [&](int rows, const QStringList &selected, const QString &current) {
            QCOMPARE(m_model->rowCount(), rows);
            ask(QModelIndex(), 0);
            QCOMPARE(selectedNames(), selected);
            QCOMPARE(m_view->currentIndex().siblingAtColumn(0).data().toString(), current);
            QCOMPARE(m_dialog->_pbRemove->isEnabled(), !selected.isEmpty());
            QCOMPARE(m_view->verticalScrollBar()->value(), 690);
            QCOMPARE(m_view->columnWidth(1), 77);
            QVERIFY(m_view->isColumnHidden(2));
        };
        const QStringList selected = selectedNames();
        const QString current = m_view->model()->index(699, 0).data().toString();
        m_model->addFiles(files);
        check(3000, selected, current);
        QCOMPARE(m_view->currentIndex().column(), 1);
        const QSignalSpy resets(m_view->model(), &QAbstractItemModel::modelReset);
        m_model->addFiles(files);
        QCOMPARE(resets.size(), 0);

        std::set<int> odd;
        QStringList evenSelected;
        for (int row = 1; row < 3000; row += 2)
            odd.insert(row);
        for (const QString &name : selected) {
            if (files.indexOf("/p/" + name) % 2 == 0)
                evenSelected << name;
        }
        const int row = m_view->currentIndex().row();
        m_model->removeFiles(odd);
        const QString next = m_view->model()->index(row, 0).data().toString();
        check(1500, evenSelected, evenSelected.contains(current) ? current : next);
        QVERIFY(questions > 15);

        m_view->selectionModel()->setCurrentIndex(m_view->model()->index(1499, 1),
                                                  QItemSelectionModel::NoUpdate);
        const std::vector<int> rows = m_view->sortedRows();
        std::set<int> tail(rows.begin() + 600, rows.end());
        m_model->removeFiles(tail);
        QCOMPARE(m_view->currentIndex().row(), 599);

        m_view->selectAll();
        m_view->onRemove();
        QVERIFY(m_model->isEmpty() && !m_dialog->_pbRemove->isEnabled());
    }

    void removesSelectedRowsUnlessLocked()
    {
        m_view->sortByColumn(Model::FileColumn, Qt::DescendingOrder);
        m_model->setFileState("/a/a.step", ImportState::Succeeded);
        const QSignalSpy changed(m_model, &Model::changed);
        QVERIFY(!m_dialog->_pbRemove->isEnabled());
        m_view->onRemove();
        m_view->selectRow(1); // a part, which goes with its assembly only
        m_view->onRemove();
        m_view->selectRow(0);
        m_view->setLocked(true);
        QCOMPARE(m_view->contextMenuPolicy(), Qt::PreventContextMenu);
        m_view->onRemove();
        m_view->onRemoveImported();
        QTimer::singleShot(0, this, [] {
            if (QWidget *chooser = QApplication::activeModalWidget())
                QVERIFY(!chooser->close());
        });
        m_view->onAdd();
        QCoreApplication::processEvents();
        QCOMPARE(changed.size(), 0);
        m_view->setLocked(false);
        QCOMPARE(m_view->contextMenuPolicy(), Qt::DefaultContextMenu);
        m_view->onRemove();
        QCOMPARE(shown(), QString("part c a"));
        QCOMPARE(changed.size(), 1);
    }

    void headerHidesColumns()
    {
        auto *header = qobject_cast<tnHeaderViewBase *>(m_view->horizontalHeader());
        for (const bool visible : {false, true}) {
            header->setSectionVisible(Model::SizeColumn, visible);
            QCOMPARE(m_view->isColumnHidden(Model::SizeColumn), !visible);
            QCOMPARE(header->isSectionVisible(Model::SizeColumn), visible);
        }
    }

    void menuOffersWhatTheSelectionAllows()
    {
        fillForMenu();
        const std::pair<std::vector<int>, QString> cases[] = {
            {{}, "Add Clear"},
            {{1}, "Add Remove Clear File"},
            {{3}, "Reimport Add Remove Clear File"}, // incomplete
            {{1, 3}, "Add Remove Clear"},
        };
        for (const auto &[rows, entries] : cases) {
            select(rows);
            QCOMPARE(openMenu(), entries);
        }
        m_model->setFileState("/a/a.step", ImportState::Failed);
        emit m_services.files.fileConversionStarted(1, "/a/a.step");
        QCOMPARE(openMenu(), QString("Add Remove Log"));
    }

    void menuActsOnTheRowThatIsSeenSelected()
    {
        fillForMenu();
        select({3});
        openMenu("Show File in Explorer");
        openMenu("Reimport Missing Components");
        QCOMPARE(m_services.files.reimports.size(), std::size_t(1));
        QCOMPARE(m_services.files.reimports.at(0).node, tndNode(7));
        m_view->onShowLog();
        select({});
        m_view->onShowFiles();
        QCOMPARE(m_opened, QStringList({"/b", defaultOutputDirectory(), "/p"}));
        openMenu("Clear Imported Files");
        QCOMPARE(shown(), QString("c part robot arm"));
    }

    void deleteKeyWaitsForTheMenu()
    {
        fillForMenu();
        const auto press = [this](QWidget *field) {
            QApplication::setActiveWindow(m_dialog.get());
            field->setFocus();
            QTRY_VERIFY(field->hasFocus());
            QTest::keyClick(field, Qt::Key_Delete);
        };
        select({});
        openMenu();
        select({3});
        press(m_view);
        QCOMPARE(m_model->rowCount(), 5);
        openMenu();
        press(m_dialog->_cbMode);
        QCOMPARE(m_model->rowCount(), 5);
        press(m_view);
        QCOMPARE(shown(), QString("a c part"));
    }

    void addTakesWhatCanBeImportedAndRemembersWhere()
    {
        const QTemporaryDir dir;
        const QString first = dir.filePath("b.step");
        const QString second = dir.filePath("a.stl");
        for (const QString &path : {first, second, dir.filePath("notes.txt")})
            QVERIFY(QFile(path).open(QIODevice::WriteOnly));
        m_model->clear();

        // What the user types into the chooser and presses, and where the chooser had opened.
        const auto add = [&](const QString &typed, QDialogButtonBox::StandardButton pressed) {
            QString opened;
            QTimer::singleShot(0, this, [&] {
                auto *chooser =
                    qobject_cast<tnFileImportDialog *>(QApplication::activeModalWidget());
                QVERIFY(chooser);
                opened = chooser->directory().path();
                emit m_services.files.importFinished(1, 1); // closes no window that is asking
                QVERIFY(m_dialog->isVisible());
                chooser->findChild<QLineEdit *>("fileNameEdit")->setText(typed);
                chooser->findChild<QDialogButtonBox *>()->button(pressed)->click();
            });
            m_view->onAdd();
            return opened;
        };
        const QString usual = QFileDialog().directory().path();
        const QString all = '"' + first + "\" \"" + dir.filePath("notes.txt") + "\" \"" + second;
        QCOMPARE(add(all + '"', QDialogButtonBox::Cancel), usual);
        QVERIFY(m_model->isEmpty());
        QCOMPARE(add(all + '"', QDialogButtonBox::Open), usual);
        QCOMPARE(m_model->fileNames(false), QStringList({first, second}));
        tnFileImportDialog().storeLastDirectory(QString());
        QCOMPARE(QSettings().value("importDialog/lastDirectory").toString(), dir.path());
        QCOMPARE(add("a.stl", QDialogButtonBox::Open), dir.path());
        QCOMPARE(m_model->rowCount(), 2);
    }

private:
    QStringList shownPaths() const
    {
        QStringList paths;
        const QStringList all = m_model->fileNames(false);
        for (const int row : m_view->sortedRows())
            paths << all.at(row);
        return paths;
    }
    QString shown() const
    {
        QStringList names;
        for (const QString &path : shownPaths())
            names << QFileInfo(path).baseName();
        return names.join(' ');
    }
    /// With both clicks that the window system makes a double click of.
    void doubleClickHeader(int section)
    {
        const QHeaderView *header = m_view->horizontalHeader();
        const QPoint inside(header->sectionViewportPosition(section) + 20, header->height() / 2);
        QTest::mouseDClick(m_dialog->windowHandle(), Qt::LeftButton, {},
                           header->viewport()->mapTo(m_dialog.get(), inside));
    }
    void fillForMenu()
    {
        m_model->setFileNode("/b/robot.step", tndNode(7));
        m_model->setFileState("/b/robot.step", ImportState::Incomplete);
        m_model->setFileState("/a/a.step", ImportState::Succeeded);
        m_view->sortByColumn(Model::FileColumn, Qt::AscendingOrder);
        QCOMPARE(shown(), QString("a c part robot arm"));
    }
    void select(const std::vector<int> &rows)
    {
        m_view->clearSelection();
        for (const int row : rows)
            m_view->selectionModel()->select(m_view->model()->index(row, 0),
                                             QItemSelectionModel::Select
                                                 | QItemSelectionModel::Rows);
    }
    /// Opens the menu, triggers the entry of that text and gives the first words of what was
    /// offered.
    QString openMenu(const QString &text = {})
    {
        QStringList offered;
        QTimer::singleShot(0, this, [&] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            QList<QAction *> chosen;
            for (QAction *action : menu->actions()) {
                if (!action->isSeparator() && action->isVisible() && action->isEnabled())
                    offered << action->text();
                if (action->text() == text && !text.isEmpty())
                    chosen << action;
            }
            menu->close();
            for (QAction *action : chosen)
                action->trigger();
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, m_view->mapToGlobal({5, 5}));
        QApplication::sendEvent(m_view->viewport(), &event);
        return offered.replaceInStrings(QRegularExpression("^Show (Import )?| .*"), QString())
            .join(' ');
    }

    ScriptedServices m_services;
    std::unique_ptr<tnCADImportDialog> m_dialog;
    tnCADImportTableView *m_view = nullptr;
    Model *m_model = nullptr;
    QStringList m_opened;
};

QTEST_MAIN(tst_TableView)
#include "tst_tableview.moc"
