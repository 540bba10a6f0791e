#include "platform/tnHeaderViewBase.h"

#include <QtGui/QContextMenuEvent>
#include <QtGui/QStandardItemModel>
#include <QtTest/QtTest>
#include <QtWidgets/QMenu>
#include <QtWidgets/QTableView>

namespace {

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

} // namespace

class tst_HeaderView : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_model.reset(new QStandardItemModel(0, 3));
        m_model->setHorizontalHeaderLabels({"Name", "Save & Load", ""});
        for (const char *name : {"b", "c", "a"})
            m_model->appendRow(new QStandardItem(name));
        m_table.reset(new QTableView);
        m_header = new tnHeaderViewBase(nullptr, m_table.data());
        m_table->setHorizontalHeader(m_header);
        m_table->setModel(m_model.data());
        m_table->show();
    }

    void cleanup()
    {
        if (QWidget *popup = QApplication::activePopupWidget())
            popup->close();
        m_table.reset();
    }

    void menuShowsAndHides()
    {
        m_table->setColumnHidden(2, true);
        QMenu *menu = openMenu(m_header);
        QVERIFY(menu);
        QList<QAction *> actions = menu->actions();
        QCOMPARE(actions.count(), 3);
        QCOMPARE(actions.at(1)->text(), QStringLiteral("Save && Load"));
        QVERIFY(!actions.at(2)->text().isEmpty());
        QVERIFY(actions.at(0)->isChecked() && actions.at(1)->isChecked());
        QVERIFY(!actions.at(2)->isChecked());
        // The second of the two is the last one by the time that it is chosen.
        actions.at(0)->trigger();
        actions.at(1)->trigger();
        QVERIFY(m_table->isColumnHidden(0) && !m_table->isColumnHidden(1));
        actions.at(2)->trigger();
        QVERIFY(!m_table->isColumnHidden(2));
        m_table->setColumnHidden(1, true);

        QPointer<QMenu> old = menu;
        menu->close();
        QTRY_VERIFY(!old);
        QVERIFY(m_header->focusPolicy() & Qt::TabFocus);
        menu = openMenu(m_header, QContextMenuEvent::Keyboard);
        QVERIFY(menu);
        QCOMPARE(menu->pos(), m_header->mapToGlobal(m_header->rect().bottomLeft()));
        actions = menu->actions();
        QVERIFY(actions.at(0)->isEnabled() && actions.at(1)->isEnabled());
        QVERIFY(!actions.at(2)->isEnabled());
    }

    void noModelNoMenu()
    {
        m_table->setModel(nullptr);
        QVERIFY(!openMenu(m_header));
    }

    void sortsByClick()
    {
        m_table->setSortingEnabled(true);
        const auto names = [this] {
            QString shown;
            for (int row = 0; row < m_model->rowCount(); ++row)
                shown += m_model->item(row)->text();
            return shown;
        };
        const QPoint first(m_header->sectionViewportPosition(0) + 20, m_header->height() / 2);
        const auto click = [&] {
            QTest::mouseClick(m_header->viewport(), Qt::LeftButton, {}, first);
        };
        QVERIFY(m_header->isSortIndicatorShown());
        QCOMPARE(m_header->sortIndicatorSection(), -1); // no arrow before the rows are sorted
        QCOMPARE(names(), QStringLiteral("bca"));
        click();
        QCOMPARE(names(), QStringLiteral("abc"));
        click();
        QCOMPARE(names(), QStringLiteral("cba"));

        // A list that turns the order at double clicks turns it once for each, although the first
        // click of the two sorts as well.
        connect(m_header, &QHeaderView::sectionDoubleClicked, m_table.data(), [this](int column) {
            const bool ascending = m_header->sortIndicatorOrder() == Qt::AscendingOrder;
            m_table->sortByColumn(column, ascending ? Qt::DescendingOrder : Qt::AscendingOrder);
        });
        for (const QString expected : {"abc", "cba"}) {
            click();
            QTest::mouseDClick(m_header->viewport(), Qt::LeftButton, {}, first);
            QCOMPARE(names(), expected);
        }
    }

private:
    QScopedPointer<QStandardItemModel> m_model;
    QScopedPointer<QTableView> m_table;
    tnHeaderViewBase *m_header = nullptr;
};

QTEST_MAIN(tst_HeaderView)
#include "tst_headerview.moc"
