#include "platform/tnHeaderViewBase.h"

#include <QtCore/QSortFilterProxyModel>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QStandardItemModel>
#include <QtTest/QtTest>
#include <QtWidgets/QMenu>
#include <QtWidgets/QTableView>

namespace {

/// A header whose columns belong to the table, as lists of plug-ins have it.
class TableHeader : public tnHeaderViewBase {
public:
    explicit TableHeader(QTableView *table)
        : tnHeaderViewBase(nullptr, table)
        , m_table(table)
    {
    }

    void setSectionVisible(int column, bool visible) override
    {
        m_table->setColumnHidden(column, !visible);
    }
    bool isSectionVisible(int column) override { return !m_table->isColumnHidden(column); }
    QAbstractItemModel *viewModel() override { return m_table->model(); }

private:
    QTableView *m_table;
};

QMenu *openMenu(tnHeaderViewBase *header,
                QContextMenuEvent::Reason reason = QContextMenuEvent::Mouse)
{
    // The mouse is over the viewport, while keys go to what has the focus.
    QWidget *const receiver =
        reason == QContextMenuEvent::Mouse ? header->viewport() : static_cast<QWidget *>(header);
    const QPoint at(5, 5);
    QContextMenuEvent event(reason, at, receiver->mapToGlobal(at));
    QCoreApplication::sendEvent(receiver, &event);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QList<bool> checked(const QMenu *menu)
{
    QList<bool> states;
    for (const QAction *action : menu->actions())
        states << (action->isCheckable() && action->isChecked());
    return states;
}

} // namespace

class tst_HeaderView : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void menuShowsAndHides();
    void lastColumnStays();
    void noModelNoMenu();
    void sortsByClick();

private:
    QStringList names() const;

    QScopedPointer<QStandardItemModel> m_model;
    QScopedPointer<QSortFilterProxyModel> m_proxy;
    QScopedPointer<QTableView> m_table;
    TableHeader *m_header = nullptr;
};

void tst_HeaderView::init()
{
    m_model.reset(new QStandardItemModel(0, 3));
    m_model->setHorizontalHeaderLabels({"Name", "Save & Load", ""});
    for (const char *name : {"b", "c", "a"})
        m_model->appendRow({new QStandardItem(name), new QStandardItem, new QStandardItem});
    m_proxy.reset(new QSortFilterProxyModel);
    m_proxy->setSourceModel(m_model.data());
    m_table.reset(new QTableView);
    m_header = new TableHeader(m_table.data());
    m_table->setHorizontalHeader(m_header);
    m_table->setSortingEnabled(true);
    m_table->setModel(m_proxy.data());
    m_table->resize(400, 200);
    m_table->show();
    QVERIFY(QTest::qWaitForWindowActive(m_table.data()));
}

void tst_HeaderView::cleanup()
{
    if (QWidget *popup = QApplication::activePopupWidget())
        popup->close();
    m_table.reset();
}

QStringList tst_HeaderView::names() const
{
    QStringList shown;
    for (int row = 0; row < m_proxy->rowCount(); ++row)
        shown << m_proxy->index(row, 0).data().toString();
    return shown;
}

void tst_HeaderView::menuShowsAndHides()
{
    m_table->setColumnHidden(2, true);
    QMenu *menu = openMenu(m_header);
    QVERIFY(menu);
    QCOMPARE(menu->actions().count(), 3);
    QCOMPARE(menu->actions().at(0)->text(), QStringLiteral("Name"));
    QCOMPARE(menu->actions().at(1)->text(), QStringLiteral("Save && Load"));
    QVERIFY(!menu->actions().at(2)->text().isEmpty());
    QCOMPARE(checked(menu), (QList<bool>{true, true, false}));
    menu->actions().at(0)->trigger();
    menu->actions().at(2)->trigger();
    QVERIFY(m_table->isColumnHidden(0));
    QVERIFY(!m_table->isColumnHidden(2));

    QPointer<QMenu> old = menu;
    menu->close();
    QTRY_VERIFY(!old);
    QVERIFY(m_header->focusPolicy() & Qt::TabFocus);
    menu = openMenu(m_header, QContextMenuEvent::Keyboard);
    QVERIFY(menu);
    QCOMPARE(checked(menu), (QList<bool>{false, true, true}));
    QCOMPARE(menu->pos(), m_header->mapToGlobal(m_header->rect().bottomLeft()));
}

void tst_HeaderView::lastColumnStays()
{
    m_table->setColumnHidden(0, true);
    QMenu *const menu = openMenu(m_header);
    QVERIFY(menu);
    for (const QAction *action : menu->actions())
        QVERIFY(action->isEnabled());
    // The second of the two is the last one by the time that it is chosen.
    menu->actions().at(1)->trigger();
    menu->actions().at(2)->trigger();
    QVERIFY(m_table->isColumnHidden(1));
    QVERIFY(!m_table->isColumnHidden(2));
    menu->close();

    QMenu *const next = openMenu(m_header);
    QVERIFY(next);
    QVERIFY(next->actions().at(0)->isEnabled());
    QVERIFY(!next->actions().at(2)->isEnabled());
}

void tst_HeaderView::noModelNoMenu()
{
    m_table->setModel(nullptr);
    QVERIFY(!openMenu(m_header));

    // On its own, a header shows and hides its own sections.
    tnHeaderViewBase alone(m_model.data(), nullptr);
    alone.show();
    QMenu *const menu = openMenu(&alone);
    QVERIFY(menu);
    menu->actions().at(1)->trigger();
    QVERIFY(alone.isSectionHidden(1));
    menu->close();
}

void tst_HeaderView::sortsByClick()
{
    QVERIFY(m_header->isSortIndicatorShown());
    QCOMPARE(m_header->sortIndicatorSection(), -1); // no arrow before the rows are sorted
    QCOMPARE(names(), QStringList({"b", "c", "a"}));

    const QPoint first(m_header->sectionViewportPosition(0) + 20, m_header->height() / 2);
    const auto click = [&] { QTest::mouseClick(m_header->viewport(), Qt::LeftButton, {}, first); };
    click();
    QCOMPARE(names(), QStringList({"a", "b", "c"}));
    click();
    QCOMPARE(names(), QStringList({"c", "b", "a"}));

    // A list that turns the order at double clicks turns it once for each, although the first
    // click of the two sorts as well.
    connect(m_header, &QHeaderView::sectionDoubleClicked, m_table.data(), [this](int column) {
        m_table->sortByColumn(column,
                              m_header->sortIndicatorOrder() == Qt::AscendingOrder
                                  ? Qt::DescendingOrder
                                  : Qt::AscendingOrder);
    });
    for (const QStringList &expected : {QStringList{"a", "b", "c"}, QStringList{"c", "b", "a"}}) {
        click();
        QTest::mouseDClick(m_header->viewport(), Qt::LeftButton, {}, first);
        QCOMPARE(names(), expected);
    }
}

QTEST_MAIN(tst_HeaderView)
#include "tst_headerview.moc"
