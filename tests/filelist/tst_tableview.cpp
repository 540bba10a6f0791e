#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnCADImportTableView.h"
#include "filelist/tnHeaderView.h"
#include "platform/tnPlatform.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QSortFilterProxyModel>
#include <QtGui/QContextMenuEvent>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QVBoxLayout>

namespace {

/// The view with the slots that its own class keeps to itself.
class OpenTableView : public tnCADImportTableView {
public:
    using tnCADImportTableView::sort;
    using tnCADImportTableView::tnCADImportTableView;
};

/// The list as the dialog puts it together: the view set up by the form, then its models.
struct FileList {
    QWidget window;
    OpenTableView view{&window};
    QSortFilterProxyModel proxy;
    tnCADImportFileModel model;

    explicit FileList(bool modelsFirst = false)
    {
        (new QVBoxLayout(&window))->addWidget(&view);
        if (modelsFirst)
            attachModels();
        view.setSelectionBehavior(QAbstractItemView::SelectRows);
        view.setSortingEnabled(true);
        view.horizontalHeader()->setStretchLastSection(true);
        view.verticalHeader()->hide();
        if (!modelsFirst)
            attachModels();
    }
    ~FileList() { view.setModel(nullptr); }
    Q_DISABLE_COPY_MOVE(FileList)

    void attachModels()
    {
        proxy.setSourceModel(&model);
        view.setModel(&proxy);
        proxy.setSortRole(tnCADImportFileModel::SortRole);
    }

    QString shown() const
    {
        QStringList names;
        for (int row : view.sortedRows())
            names << model.index(row, 0).data().toString().trimmed();
        return names.join(' ');
    }

    void select(const QStringList &names)
    {
        view.clearSelection();
        for (int row = 0; row < proxy.rowCount(); ++row) {
            const QModelIndex index = proxy.index(row, 0);
            if (names.contains(index.data().toString().trimmed()))
                view.selectionModel()->select(
                    index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }

    /// As the window system reports it: with both clicks that a double click is made of.
    void doubleClickHeader(int section)
    {
        const QHeaderView *header = view.horizontalHeader();
        const QPoint middle(header->sectionViewportPosition(section)
                                + header->sectionSize(section) / 2,
                            header->height() / 2);
        QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {},
                           header->viewport()->mapTo(&window, middle));
    }
};

const QStringList files{"/x/b.step", "/x/c.stl", "/x/a.step"};

} // namespace

class tst_TableView : public QObject {
    Q_OBJECT

private:
    ScriptedServices m_services;

private Q_SLOTS:
    void freshListStandsInOrderOfArrival_data()
    {
        QTest::addColumn<bool>("modelsFirst");
        QTest::newRow("as the dialog does it") << false;
        QTest::newRow("sorting enabled on a filled view") << true;
    }

    void freshListStandsInOrderOfArrival()
    {
        QFETCH(bool, modelsFirst);
        FileList list(modelsFirst);
        QCOMPARE(list.view.fileModel(), &list.model);
        list.model.addFiles(files);
        QCOMPARE(list.shown(), QString("b.step c.stl a.step"));
        QCOMPARE(list.view.sortedRows(), (std::vector<int>{0, 1, 2}));
    }

    void doubleClickFlipsTheOrder()
    {
        FileList list;
        list.model.addFiles(files);
        list.window.resize(500, 300);
        list.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list.window));

        const QString ascending("a.step b.step c.stl");
        const QString descending("c.stl b.step a.step");
        for (const QString &expected : {ascending, descending, ascending}) {
            list.doubleClickHeader(tnCADImportFileModel::FileColumn);
            QCOMPARE(list.shown(), expected);
        }
        // Another column takes over the opposite of the order that is shown.
        list.doubleClickHeader(tnCADImportFileModel::StateColumn);
        QCOMPARE(list.view.horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
        list.doubleClickHeader(tnCADImportFileModel::FileColumn);
        QCOMPARE(list.shown(), ascending);
        list.model.addFiles({"/x/0.step"});
        QCOMPARE(list.shown(), "0.step " + ascending);
    }

    void equalRowsKeepTheOrderOfArrival()
    {
        FileList list;
        list.model.addFiles(files);
        list.view.sort(tnCADImportFileModel::FileColumn);
        QCOMPARE(list.shown(), QString("a.step b.step c.stl"));
        // All sizes are equal, and parts go with their assembly.
        list.model.addChildFiles({"/x/z.prt"}, "/x/b.step");
        for (int i = 0; i < 2; ++i) {
            list.view.sort(tnCADImportFileModel::SizeColumn);
            QCOMPARE(list.shown(), QString("b.step z.prt c.stl a.step"));
        }
    }

    void removesTheSelectedRowsOfASortedList()
    {
        FileList list;
        list.model.addFiles({"/x/b.step", "/x/d.step", "/x/a.step", "/x/c.step"});
        list.model.addChildFiles({"/x/part.prt"}, "/x/b.step");
        list.view.sort(tnCADImportFileModel::FileColumn);
        QCOMPARE(list.shown(), QString("a.step b.step part.prt c.step d.step"));

        QSignalSpy changed(&list.model, &tnCADImportFileModel::changed);
        list.view.onRemove();
        list.select({"part.prt"});
        list.view.onRemove();
        QCOMPARE(changed.size(), 0);

        list.select({"b.step", "d.step"});
        list.view.onRemove();
        QCOMPARE(list.shown(), QString("a.step c.step"));
        QCOMPARE(changed.size(), 1);

        list.view.selectAll();
        list.view.onRemove();
        QVERIFY(list.model.isEmpty());
    }

    void lockedViewKeepsItsRows()
    {
        FileList list;
        list.model.addFiles(files);
        list.select({"b.step"});
        list.view.setLocked(true);
        list.view.onRemove();
        QCOMPARE(list.model.rowCount(), 3);
        QCOMPARE(list.view.contextMenuPolicy(), Qt::PreventContextMenu);
        QCOMPARE(int(list.view.editTriggers()), 0);

        list.view.setLocked(false);
        QCOMPARE(list.view.contextMenuPolicy(), Qt::DefaultContextMenu);
        QCOMPARE(int(list.view.editTriggers()), 26);
        list.view.onRemove();
        QCOMPARE(list.shown(), QString("c.stl a.step"));
    }

    void viewWithoutModelsIsEmpty()
    {
        OpenTableView view;
        view.setSortingEnabled(true);
        view.sort(0);
        view.onRemove();
        QVERIFY(!view.fileModel());
        QVERIFY(view.sortedRows().empty());
    }

    void rowsFollowTheScale()
    {
        tnPlatform::setDpiScale(1.5, 1.5);
        FileList list;
        tnPlatform::setDpiScale(0.0, 0.0);
        list.model.addFiles(files);
        QCOMPARE(list.view.rowHeight(1), 36);
        QVERIFY(!list.view.wordWrap());
    }

    void headerMenuShowsAndHidesColumns()
    {
        FileList list;
        list.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list.window));
        QHeaderView *header = list.view.horizontalHeader();
        const QPoint inside(5, 5);
        QContextMenuEvent event(QContextMenuEvent::Mouse, inside, header->mapToGlobal(inside));
        QApplication::sendEvent(header->viewport(), &event);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QStringList titles;
        for (const QAction *action : menu->actions())
            titles << action->text();
        QCOMPARE(titles, QStringList({"File", "Type", "Size", "State"}));
        QAction *const size = menu->actions().at(tnCADImportFileModel::SizeColumn);
        QVERIFY(size->isChecked());
        size->trigger();
        QVERIFY(list.view.isColumnHidden(tnCADImportFileModel::SizeColumn));
        size->trigger();
        QVERIFY(!list.view.isColumnHidden(tnCADImportFileModel::SizeColumn));
        menu->close();
    }

    void headerWithoutViewHasNoColumns()
    {
        tnCADImportFileModel model;
        tnHeaderView<tnCADImportTableView> header(&model, nullptr, nullptr);
        header.setSectionVisible(0, false);
        QVERIFY(!header.isSectionHidden(0));
        QVERIFY(!header.isSectionVisible(0));
        QVERIFY(!header.viewModel());
    }
};

QTEST_MAIN(tst_TableView)
#include "tst_tableview.moc"
