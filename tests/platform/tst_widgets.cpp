#include "platform/QTNCollapsibleFrame.h"
#include "platform/QTNComboBox.h"
#include "platform/QTNDoubleSpinBox.h"
#include "platform/tnHeaderViewBase.h"
#include "platform/tnPlatform.h"
#include "platform/tnTesselationSettings.h"

#include <QtTest/QtTest>
#include <QtTest/qtestspontaneevent.h>
#include <QtWidgets/QtWidgets>

namespace {

/// A frame with one page, whose grid has one field.
struct Frame : QTNCollapsibleFrame {
    QWidget *const page = new QWidget;
    QGridLayout *const grid = new QGridLayout(page);
    QLineEdit *const field = new QLineEdit;
    QWidget *const bar = findChild<QAbstractButton *>();

    Frame()
    {
        grid->addWidget(field, 0, 1);
        addPage(page);
    }
};

/// A window with an outer frame, which a second one stands in.
struct Window : QWidget {
    Frame *const outer = new Frame;
    Frame *const inner = new Frame;
    QVBoxLayout *const stack = new QVBoxLayout(this);

    Window()
    {
        outer->addPage(inner);
        stack->addWidget(outer);
    }
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

} // namespace

class tst_Widgets : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale::c());
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    }

    void foldsByMouseAndKeyboard()
    {
        Frame frame;
        frame.show();
        QVERIFY(QTest::qWaitForWindowActive(&frame));
        QSignalSpy changed(&frame, &QTNCollapsibleFrame::collapsedChanged);
        const auto isNow = [&](bool collapsed) {
            return frame.isCollapsed() == collapsed && frame.page->isVisible() != collapsed;
        };

        for (const int x : {frame.width() - 3, 2}) {
            QTest::mouseClick(frame.childAt(x, 4), Qt::LeftButton);
            QVERIFY(isNow(x != 2));
        }
        QCOMPARE(changed.count(), 2);

        const std::tuple<Qt::Key, Qt::LayoutDirection, bool> steps[] = {
            {Qt::Key_Space, Qt::LeftToRight, true},  {Qt::Key_Return, Qt::LeftToRight, false},
            {Qt::Key_Enter, Qt::LeftToRight, true},  {Qt::Key_Right, Qt::LeftToRight, false},
            {Qt::Key_Right, Qt::LeftToRight, false}, {Qt::Key_Left, Qt::LeftToRight, true},
            {Qt::Key_Left, Qt::RightToLeft, false},  {Qt::Key_Right, Qt::RightToLeft, true}};
        frame.bar->setFocus();
        for (const auto &[key, direction, collapsed] : steps) {
            frame.setLayoutDirection(direction);
            QTest::keyClick(frame.bar, key);
            QVERIFY2(isNow(collapsed), QByteArray::number(key, 16));
        }
        QCOMPARE(changed.count(), 9);
    }

    void sizeFollows()
    {
        Window window;
        window.inner->page->setFixedHeight(300);
        // Before the window is shown, too.
        const int unfolded = window.sizeHint().height();
        window.inner->setCollapsed(true);
        QCOMPARE(unfolded - window.sizeHint().height(), 300);
        window.inner->setCollapsed(false);

        window.stack->setSizeConstraint(QLayout::SetFixedSize);
        window.show();
        QTRY_COMPARE(window.height(), unfolded);
        window.inner->setCollapsed(true);
        QTRY_COMPARE(window.height(), unfolded - 300);
        window.outer->setCollapsed(true);
        QTRY_COMPARE(window.outer->height(), window.outer->bar->height());
    }

    void focusAndTabOrder()
    {
        QWidget window;
        auto *const stack = new QVBoxLayout(&window);
        auto *const upper = new Frame;
        auto *const lower = new Frame;
        stack->addWidget(upper);
        stack->addWidget(lower);
        // As a form does it: the fields alone, and here the other way round.
        QWidget::setTabOrder(lower->field, upper->field);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        lower->bar->setFocus();
        const QList<QWidget *> order{lower->field, upper->bar, upper->field, lower->bar};
        for (QWidget *next : order) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
        }

        lower->field->setFocus();
        upper->setCollapsed(true);
        QVERIFY(lower->field->hasFocus());
        lower->setCollapsed(true);
        QVERIFY(lower->bar->hasFocus());
    }

    void speaksToAssistiveTools()
    {
        Frame frame;
        frame.setCaption(QStringLiteral("Import & Merge"));
        QAccessibleInterface *const group = QAccessible::queryAccessibleInterface(&frame);
        QAccessibleInterface *const caption = QAccessible::queryAccessibleInterface(frame.bar);
        QCOMPARE(group->role(), QAccessible::Grouping);
        QCOMPARE(group->text(QAccessible::Name), frame.bar->accessibleName());
        QCOMPARE(caption->role(), QAccessible::Button);
        QCOMPARE(caption->text(QAccessible::Name), QStringLiteral("Import & Merge"));
        QVERIFY(caption->state().expandable && caption->state().expanded);
        caption->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QVERIFY(frame.isCollapsed() && caption->state().collapsed && !caption->state().expanded);
    }

    void fixesLayouts()
    {
        tnPlatform::setDpiScale(1.5, 1.5);
        Window window;
        QWidget loose;
        QGridLayout looseGrid(&loose);
        window.stack->addWidget(&loose);
        std::vector<QGridLayout *> layouts{&looseGrid};
        QTNCollapsibleFrame::fixLayouts(&window, 130, &layouts);
        QCOMPARE(layouts, (std::vector{&looseGrid, window.outer->grid, window.inner->grid}));
        QCOMPARE(window.outer->grid->columnMinimumWidth(0), 195);
        QCOMPARE(window.inner->grid->columnMinimumWidth(0), 195);
        QCOMPARE(looseGrid.columnMinimumWidth(0), 0);
        QTNCollapsibleFrame::fixLayouts(nullptr, 130, nullptr);
        QTNCollapsibleFrame::fixLayout(nullptr, 130);
        QTNCollapsibleFrame::fixLayout(&loose, 130);
        QCOMPARE(looseGrid.columnMinimumWidth(0), 195);
        tnPlatform::setDpiScale(0.0, 0.0);
    }

    void headerMenuShowsAndHides()
    {
        QStandardItemModel model(1, 3);
        model.setHorizontalHeaderLabels({"Name", "Save & Load", ""});
        QTableView table;
        auto *const header = new tnHeaderViewBase(nullptr, &table);
        table.setHorizontalHeader(header);
        QVERIFY(!openMenu(header));
        table.setModel(&model);
        table.setColumnHidden(2, true);
        table.show();
        QMenu *menu = openMenu(header);
        QVERIFY(menu);
        const QList<QAction *> actions = menu->actions();
        QCOMPARE(actions.count(), 3);
        QCOMPARE(actions.at(1)->text(), QStringLiteral("Save && Load"));
        QVERIFY(!actions.at(2)->text().isEmpty());
        QVERIFY(actions.at(1)->isChecked() && !actions.at(2)->isChecked());
        // The second of the two is the last one by the time that it is chosen.
        actions.at(0)->trigger();
        actions.at(1)->trigger();
        QVERIFY(table.isColumnHidden(0) && !table.isColumnHidden(1));

        const QPointer<QMenu> old = menu;
        menu->close();
        QTRY_VERIFY(!old);
        menu = openMenu(header, QContextMenuEvent::Keyboard);
        QVERIFY(menu);
        QCOMPARE(menu->pos(), header->mapToGlobal(header->rect().bottomLeft()));
        QVERIFY(menu->actions().at(0)->isEnabled() && !menu->actions().at(1)->isEnabled());
        menu->close();
    }

    void wheelScrollsUnlessFocused()
    {
        QScrollArea area;
        auto *const content = new QWidget;
        auto *const comboBox = new QTNComboBox(content);
        comboBox->addItems({"a", "b", "c"});
        auto *const spinBox = new QTNDoubleSpinBox(content);
        spinBox->setValue(5.0);
        content->setFixedSize(200, 1000);
        area.setWidget(content);
        area.resize(220, 200);
        area.show();
        QVERIFY(QTest::qWaitForWindowActive(&area));
        area.setFocus();

        const auto values = [&] { return QPointF(comboBox->currentIndex(), spinBox->value()); };
        const auto turnDown = [](QWidget *box) {
            const QPoint at = box->rect().center();
            QWheelEvent event(at, box->mapToGlobal(at), QPoint(), QPoint(0, -120), Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            // As from the window system: only then it travels upwards and may bring the focus.
            QSpontaneKeyEvent::setSpontaneous(&event);
            qApp->notify(box, &event);
        };
        for (QWidget *box : {static_cast<QWidget *>(comboBox), static_cast<QWidget *>(spinBox)}) {
            const QPointF before = values();
            int scrolled = area.verticalScrollBar()->value();
            turnDown(box);
            QVERIFY(!box->hasFocus());
            QCOMPARE(values(), before);
            QVERIFY(area.verticalScrollBar()->value() > scrolled);

            scrolled = area.verticalScrollBar()->value();
            box->setFocus();
            turnDown(box);
            QVERIFY(values() != before);
            QCOMPARE(area.verticalScrollBar()->value(), scrolled);
        }
    }

    void valuesSurvive()
    {
        tnTesselationSettings settings;
        const std::tuple<QDoubleSpinBox *, QLocale::Language, double, QString> cases[] = {
            {settings.chordDeviationSpinBox, QLocale::C, 0.0001, "0.0001 mm"},
            {settings.chordDeviationSpinBox, QLocale::German, 0.25, "0,25 mm"},
            {settings.chordDeviationSpinBox, QLocale::German, 10.0, "10 mm"},
            {settings.maxChordLengthSpinBox, QLocale::C, 0.0, "Unlimited"},
            {settings.maxChordLengthSpinBox, QLocale::C, 50000.0001, "50000.0001 mm"},
            {settings.normalToleranceSpinBox, QLocale::C, 7.1257, QStringLiteral("7.1257\u00b0")},
            {settings.normalToleranceSpinBox, QLocale::C, 180.0, QStringLiteral("180\u00b0")},
            {settings.stitchingToleranceSpinBox, QLocale::C, 0.0333, "0.0333 mm"}};
        for (const auto &[box, language, value, text] : cases) {
            box->setLocale(language);
            box->setValue(value);
            // To the last bit, since a record that was only shown must stay equal to itself.
            QVERIFY2(box->value() == value, qPrintable(text));
            QCOMPARE(box->text(), text);
        }
        QDoubleSpinBox *const typed = settings.chordDeviationSpinBox;
        for (const QLocale::Language language : {QLocale::C, QLocale::German, QLocale::French}) {
            typed->setLocale(language);
            for (const char *const text : {"0.5", "0,5"}) {
                typed->setValue(1);
                typed->selectAll();
                QTest::keyClicks(typed, text);
                QCOMPARE(typed->value(), 0.5);
            }
        }
    }

    void stitchingToleranceFollowsItsBox()
    {
        tnTesselationSettings settings;
        for (const bool checked : {false, true, false}) {
            settings.useStitchingCheckBox->setChecked(checked);
            QCOMPARE(settings.stitchingToleranceSpinBox->isEnabled(), checked);
        }
    }
};

QTEST_MAIN(tst_Widgets)
#include "tst_widgets.moc"
