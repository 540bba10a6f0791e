#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnCADImportTableView.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QSortFilterProxyModel>
#include <QtGui/QContextMenuEvent>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMenu>

namespace {

/// The list as the dialog puts it together: the view, set up by the form, then its models.
struct FileList {
    ScriptedServices services;
    tnCADImportFileModel model;
    QSortFilterProxyModel proxy;
    tnCADImportTableView view;

    FileList()
    {
        view.setSelectionBehavior(QAbstractItemView::SelectRows);
        view.setSortingEnabled(true);
        view.horizontalHeader()->setStretchLastSection(true);
        proxy.setSourceModel(&model);
        view.setModel(&proxy);
        proxy.setSortRole(tnCADImportFileModel::SortRole);
        model.addFiles({"/b.step", "/c.stl", "/a.step"});
    }

    QString shown() const
    {
        QStringList names;
        for (int row : view.sortedRows())
            names << model.index(row, 0).data().toString().trimmed();
        return names.join(' ');
    }

    /// With both clicks that the window system makes a double click of.
    void doubleClickHeader(int section)
    {
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const QHeaderView *header = view.horizontalHeader();
        const QPoint inside(header->sectionViewportPosition(section) + 20, header->height() / 2);
        QTest::mouseDClick(view.windowHandle(), Qt::LeftButton, {},
                           header->viewport()->mapTo(&view, inside));
    }
};

} // namespace

class tst_TableView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void standsAsItCameUntilSorted()
    {
        FileList list;
        QCOMPARE(list.shown(), QString("b.step c.stl a.step"));
        list.view.setSortingEnabled(true);
        QCOMPARE(list.shown(), QString("b.step c.stl a.step"));
        for (const char *expected :
             {"a.step b.step c.stl", "c.stl b.step a.step", "a.step b.step c.stl"}) {
            list.doubleClickHeader(tnCADImportFileModel::FileColumn);
            QCOMPARE(list.shown(), QString(expected));
        }
        // All sizes are equal: such rows stand as they came, parts below their assembly.
        list.model.addChildFiles({"/z.prt"}, "/b.step");
        for (int i = 0; i < 2; ++i) {
            list.doubleClickHeader(tnCADImportFileModel::SizeColumn);
            QCOMPARE(list.shown(), QString("b.step z.prt c.stl a.step"));
        }
    }

    void partsStayBelowTheirAssembly()
    {
        FileList list;
        list.view.sortByColumn(tnCADImportFileModel::StateColumn, Qt::AscendingOrder);
        list.model.addChildFiles({"/z.prt"}, "/b.step");
        QTRY_COMPARE(list.shown(), QString("b.step z.prt c.stl a.step"));
        list.model.setFileState("/b.step", ImportState::Loading);
        QTRY_COMPARE(list.shown(), QString("c.stl a.step b.step z.prt"));
    }

    void sortsAgainOnlyForRowsOutOfOrder()
    {
        FileList list;
        list.view.sortByColumn(tnCADImportFileModel::StateColumn, Qt::AscendingOrder);
        list.view.selectRow(2);
        list.model.setFileState("/c.stl", ImportState::Succeeded);
        list.model.setFileState("/b.step", ImportState::Succeeded);
        QTRY_COMPARE(list.shown(), QString("a.step b.step c.stl"));
        QCOMPARE(list.view.selectionModel()->selectedRows().size(), 1);
        QVERIFY(list.view.selectionModel()->isRowSelected(0, {}));

        QSignalSpy layout(list.view.model(), &QAbstractItemModel::layoutChanged);
        list.model.setFileProgress("/b.step", 50, "half way");
        QTest::qWait(200);
        QCOMPARE(layout.size(), 0);
    }

    void removesSelectedRowsUnlessLocked()
    {
        FileList list;
        list.model.addChildFiles({"/z.prt"}, "/b.step");
        list.view.sortByColumn(0, Qt::DescendingOrder);
        QCOMPARE(list.shown(), QString("c.stl b.step z.prt a.step"));
        QSignalSpy changed(&list.model, &tnCADImportFileModel::changed);
        list.view.onRemove();
        list.view.selectRow(2);
        list.view.onRemove();
        QCOMPARE(changed.size(), 0);

        list.view.selectRow(1);
        list.view.setLocked(true);
        list.view.onRemove();
        QCOMPARE(changed.size(), 0);
        QCOMPARE(list.view.contextMenuPolicy(), Qt::PreventContextMenu);
        QCOMPARE(int(list.view.editTriggers()), 0);
        list.view.setLocked(false);
        QCOMPARE(list.view.contextMenuPolicy(), Qt::DefaultContextMenu);
        QCOMPARE(int(list.view.editTriggers()), 26);
        list.view.onRemove();
        QCOMPARE(list.shown(), QString("c.stl a.step"));
        QCOMPARE(changed.size(), 1);
    }

    void headerMenuHidesColumns()
    {
        FileList list;
        list.view.show();
        QHeaderView *header = list.view.horizontalHeader();
        QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, header->mapToGlobal({5, 5}));
        QApplication::sendEvent(header->viewport(), &event);
        const auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QAction *const size = menu->actions().at(tnCADImportFileModel::SizeColumn);
        QCOMPARE(size->text(), QString("Size"));
        for (bool hidden : {true, false}) {
            size->trigger();
            QCOMPARE(list.view.isColumnHidden(tnCADImportFileModel::SizeColumn), hidden);
            QCOMPARE(size->isChecked(), !hidden);
        }
    }
};

QTEST_MAIN(tst_TableView)
#include "tst_tableview.moc"
