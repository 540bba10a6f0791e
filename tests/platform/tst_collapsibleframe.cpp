#include "platform/QTNCollapsibleFrame.h"
#include "platform/tnPlatform.h"

#include <QtGui/QAccessible>
#include <QtTest/QtTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

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

} // namespace

class tst_CollapsibleFrame : public QObject {
    Q_OBJECT

private slots:
    void foldsByMouseAndKeyboard()
    {
        Frame frame;
        frame.show();
        QVERIFY(QTest::qWaitForWindowActive(&frame));
        QSignalSpy changed(&frame, &QTNCollapsibleFrame::collapsedChanged);
        const auto isNow = [&](bool collapsed) {
            return frame.isCollapsed() == collapsed && frame.page->isVisible() != collapsed;
        };

        QVERIFY(isNow(false));
        QTest::mouseClick(frame.childAt(frame.width() - 3, 4), Qt::LeftButton);
        QVERIFY(isNow(true));
        QTest::mouseClick(frame.childAt(2, 4), Qt::LeftButton);
        QVERIFY(isNow(false));
        QCOMPARE(changed.count(), 2);

        const std::tuple<Qt::Key, Qt::LayoutDirection, bool> steps[] = {
            {Qt::Key_Space, Qt::LeftToRight, true},  {Qt::Key_Space, Qt::LeftToRight, false},
            {Qt::Key_Return, Qt::LeftToRight, true}, {Qt::Key_Enter, Qt::LeftToRight, false},
            {Qt::Key_Right, Qt::LeftToRight, false}, {Qt::Key_Left, Qt::LeftToRight, true},
            {Qt::Key_Left, Qt::LeftToRight, true},   {Qt::Key_Right, Qt::LeftToRight, false},
            {Qt::Key_Right, Qt::RightToLeft, true},  {Qt::Key_Left, Qt::RightToLeft, false}};
        frame.bar->setFocus();
        for (const auto &[key, direction, collapsed] : steps) {
            frame.setLayoutDirection(direction);
            QTest::keyClick(frame.bar, key);
            QVERIFY2(isNow(collapsed), QByteArray::number(key, 16));
        }
        QCOMPARE(changed.count(), 10);
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

    void visibilityOfOthersStays()
    {
        Window window;
        Frame *const frame = window.outer;
        auto *const hidden = new QLineEdit(frame->page);
        hidden->hide();
        frame->field->hide();
        window.show();

        frame->setCollapsed(true);
        frame->field->show();
        frame->hide();
        frame->show();
        QVERIFY(!frame->page->isVisible());

        frame->hide();
        frame->setCollapsed(false);
        QVERIFY(frame->isHidden());
        frame->show();
        QVERIFY(frame->field->isVisible());
        QVERIFY(!hidden->isVisible());
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
        QVERIFY(frame.isCollapsed());
        QVERIFY(caption->state().collapsed && !caption->state().expanded);
    }

    void fixesLayouts()
    {
        tnPlatform::setDpiScale(1.5, 1.5);
        Window window;
        auto *const loose = new QWidget;
        auto *const looseGrid = new QGridLayout(loose);
        window.stack->addWidget(loose);

        QGridLayout present;
        std::vector<QGridLayout *> layouts{&present};
        QTNCollapsibleFrame::fixLayouts(&window, 130, &layouts);
        QCOMPARE(layouts, (std::vector{&present, window.outer->grid, window.inner->grid}));
        QCOMPARE(window.outer->grid->columnMinimumWidth(0), 195);
        QCOMPARE(window.inner->grid->columnMinimumWidth(0), 195);
        QCOMPARE(looseGrid->columnMinimumWidth(0), 0);

        QTNCollapsibleFrame::fixLayouts(&window, 130, nullptr);
        QTNCollapsibleFrame::fixLayouts(nullptr, 130, nullptr);
        QTNCollapsibleFrame::fixLayout(nullptr, 130);
        QTNCollapsibleFrame::fixLayout(loose, 130);
        QCOMPARE(looseGrid->columnMinimumWidth(0), 195);
        tnPlatform::setDpiScale(0.0, 0.0);
    }
};

QTEST_MAIN(tst_CollapsibleFrame)
#include "tst_collapsibleframe.moc"
