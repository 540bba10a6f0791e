#include "platform/QTNCollapsibleFrame.h"
#include "platform/tnPlatform.h"

#include <QtGui/QAccessible>
#include <QtTest/QtTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

namespace {

/// A page with a field; with a grid when asked for.
QWidget *makePage(bool grid = true)
{
    auto *const page = new QWidget;
    if (grid)
        (new QGridLayout(page))->addWidget(new QLineEdit, 0, 1);
    else
        (new QVBoxLayout(page))->addWidget(new QLineEdit);
    return page;
}

QWidget *captionOf(QTNCollapsibleFrame *frame)
{
    return frame->findChild<QAbstractButton *>(QString(), Qt::FindDirectChildrenOnly);
}

QGridLayout *gridOf(QWidget *page)
{
    return qobject_cast<QGridLayout *>(page->layout());
}

} // namespace

class tst_CollapsibleFrame : public QObject {
    Q_OBJECT

private slots:
    void foldsByMouse();
    void foldsByKeyboard_data();
    void foldsByKeyboard();
    void scrollAreaShrinks();
    void visibilityOfOthersStays();
    void focusAndTabOrder();
    void speaksToAssistiveTools();
    void fixesLayouts();
};

void tst_CollapsibleFrame::foldsByMouse()
{
    QTNCollapsibleFrame frame;
    frame.setCaption(QStringLiteral("Options"));
    QWidget *const page = makePage();
    frame.addPage(page);
    frame.addPage(nullptr);
    frame.resize(300, 200);
    frame.show();
    QVERIFY(!frame.isCollapsed());
    QVERIFY(page->isVisible());

    QSignalSpy changed(&frame, &QTNCollapsibleFrame::collapsedChanged);
    bool collapsed = false;
    for (const int x : {2, 150, 297}) {
        collapsed = !collapsed;
        QTest::mouseClick(frame.childAt(x, 4), Qt::LeftButton);
        QCOMPARE(frame.isCollapsed(), collapsed);
        QCOMPARE(page->isVisible(), !collapsed);
        QCOMPARE(changed.takeFirst().at(0).toBool(), collapsed);
    }
    frame.setCollapsed(true);
    QCOMPARE(changed.count(), 0);
}

void tst_CollapsibleFrame::foldsByKeyboard_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<bool>("rightToLeft");
    QTest::addColumn<bool>("before");
    QTest::addColumn<bool>("after");

    QTest::newRow("space folds") << Qt::Key_Space << false << false << true;
    QTest::newRow("space unfolds") << Qt::Key_Space << false << true << false;
    QTest::newRow("return") << Qt::Key_Return << false << false << true;
    QTest::newRow("enter") << Qt::Key_Enter << false << true << false;
    QTest::newRow("left") << Qt::Key_Left << false << false << true;
    QTest::newRow("left again") << Qt::Key_Left << false << true << true;
    QTest::newRow("right") << Qt::Key_Right << false << true << false;
    QTest::newRow("right again") << Qt::Key_Right << false << false << false;
    QTest::newRow("left, right to left") << Qt::Key_Left << true << true << false;
    QTest::newRow("right, right to left") << Qt::Key_Right << true << false << true;
}

void tst_CollapsibleFrame::foldsByKeyboard()
{
    QFETCH(Qt::Key, key);
    QFETCH(bool, rightToLeft);
    QFETCH(bool, before);
    QFETCH(bool, after);

    QTNCollapsibleFrame frame;
    frame.setLayoutDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    frame.addPage(makePage());
    frame.setCollapsed(before);
    frame.show();
    QVERIFY(QTest::qWaitForWindowActive(&frame));
    captionOf(&frame)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(captionOf(&frame), key);
    QCOMPARE(frame.isCollapsed(), after);
    QVERIFY(captionOf(&frame)->hasFocus());
}

void tst_CollapsibleFrame::scrollAreaShrinks()
{
    QScrollArea area;
    area.setWidgetResizable(true);
    auto *const content = new QWidget;
    auto *const stack = new QVBoxLayout(content);
    auto *const outer = new QTNCollapsibleFrame;
    auto *const inner = new QTNCollapsibleFrame;
    auto *const innerPage = new QWidget;
    innerPage->setFixedHeight(300);
    inner->addPage(innerPage);
    outer->addPage(makePage());
    outer->addPage(inner);
    stack->addWidget(outer);
    area.setWidget(content);
    area.resize(300, 80);

    const int unfolded = content->sizeHint().height();
    inner->setCollapsed(true);
    QCOMPARE(unfolded - content->sizeHint().height(), 300);
    inner->setCollapsed(false);

    area.show();
    QTRY_COMPARE(content->height(), unfolded);
    inner->setCollapsed(true);
    QTRY_COMPARE(content->height(), unfolded - 300);
    outer->setCollapsed(true);
    const int captionHeight = captionOf(outer)->height();
    QTRY_COMPARE(outer->height(), captionHeight);
    QTRY_COMPARE(content->height(), area.viewport()->height());
    outer->setCollapsed(false);
    inner->setCollapsed(false);
    QTRY_COMPARE(content->height(), unfolded);
}

void tst_CollapsibleFrame::visibilityOfOthersStays()
{
    QWidget window;
    auto *const stack = new QVBoxLayout(&window);
    auto *const frame = new QTNCollapsibleFrame;
    stack->addWidget(frame);
    QWidget *const page = makePage();
    auto *const hidden = new QLineEdit(page);
    hidden->hide();
    auto *const shownLater = new QLineEdit(page);
    shownLater->hide();
    frame->addPage(page);
    window.show();

    frame->setCollapsed(true);
    shownLater->setVisible(true);
    QVERIFY(!shownLater->isVisible());
    frame->hide();
    frame->show();
    QVERIFY(frame->isCollapsed());
    QVERIFY(!page->isVisible());

    frame->hide();
    frame->setCollapsed(false);
    QVERIFY(frame->isHidden());
    frame->show();
    QVERIFY(page->isVisible());
    QVERIFY(shownLater->isVisible());
    QVERIFY(!hidden->isVisible());
}

void tst_CollapsibleFrame::focusAndTabOrder()
{
    QWidget window;
    auto *const stack = new QVBoxLayout(&window);
    QList<QTNCollapsibleFrame *> frames;
    QList<QLineEdit *> fields;
    for (int i = 0; i < 2; ++i) {
        frames << new QTNCollapsibleFrame;
        QWidget *const page = makePage();
        fields << page->findChild<QLineEdit *>();
        frames.last()->addPage(page);
        stack->addWidget(frames.last());
    }
    // As a form does it: the fields alone, and here the other way round.
    QWidget::setTabOrder(fields.at(1), fields.at(0));
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));

    captionOf(frames.at(1))->setFocus();
    for (QWidget *next : {static_cast<QWidget *>(fields.at(1)), captionOf(frames.at(0)),
                          static_cast<QWidget *>(fields.at(0)), captionOf(frames.at(1))}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), next);
    }

    fields.at(1)->setFocus();
    frames.at(0)->setCollapsed(true);
    QVERIFY(fields.at(1)->hasFocus());
    frames.at(1)->setCollapsed(true);
    QVERIFY(captionOf(frames.at(1))->hasFocus());
}

void tst_CollapsibleFrame::speaksToAssistiveTools()
{
    QTNCollapsibleFrame frame;
    frame.setCaption(QStringLiteral("Import & Merge"));
    frame.addPage(makePage());
    QCOMPARE(frame.caption(), QStringLiteral("Import & Merge"));

    QAccessibleInterface *const group = QAccessible::queryAccessibleInterface(&frame);
    QVERIFY(group);
    QCOMPARE(group->role(), QAccessible::Grouping);
    QCOMPARE(group->text(QAccessible::Name), frame.caption());

    QAccessibleInterface *const caption = QAccessible::queryAccessibleInterface(captionOf(&frame));
    QVERIFY(caption);
    QCOMPARE(caption->role(), QAccessible::Button);
    QCOMPARE(caption->text(QAccessible::Name), frame.caption());
    QVERIFY(caption->state().expandable && caption->state().expanded);
    caption->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(frame.isCollapsed());
    QVERIFY(caption->state().collapsed && !caption->state().expanded);
}

void tst_CollapsibleFrame::fixesLayouts()
{
    tnPlatform::setDpiScale(1.0, 1.0);
    QWidget panel;
    auto *const stack = new QVBoxLayout(&panel);
    auto *const outer = new QTNCollapsibleFrame;
    auto *const inner = new QTNCollapsibleFrame;
    QWidget *const first = makePage();
    QWidget *const innerPage = makePage();
    QWidget *const loose = makePage();
    inner->addPage(innerPage);
    outer->addPage(first);
    outer->addPage(makePage(false));
    outer->addPage(inner);
    stack->addWidget(outer);
    stack->addWidget(loose);

    QGridLayout present;
    std::vector<QGridLayout *> layouts{&present};
    QTNCollapsibleFrame::fixLayouts(&panel, 130, &layouts);
    const std::vector<QGridLayout *> expected{&present, gridOf(first), gridOf(innerPage)};
    QCOMPARE(layouts, expected);
    QCOMPARE(gridOf(first)->columnMinimumWidth(0), 130);
    QCOMPARE(gridOf(innerPage)->columnMinimumWidth(0), 130);
    QCOMPARE(gridOf(loose)->columnMinimumWidth(0), 0);

    tnPlatform::setDpiScale(1.5, 1.5);
    QTNCollapsibleFrame::fixLayouts(&panel, 130, nullptr);
    QTNCollapsibleFrame::fixLayouts(nullptr, 130, nullptr);
    QTNCollapsibleFrame::fixLayout(loose, 130);
    QTNCollapsibleFrame::fixLayout(&panel, 130);
    QTNCollapsibleFrame::fixLayout(nullptr, 130);
    QCOMPARE(gridOf(first)->columnMinimumWidth(0), 195);
    QCOMPARE(gridOf(loose)->columnMinimumWidth(0), 195);
    tnPlatform::setDpiScale(0.0, 0.0);
}

QTEST_MAIN(tst_CollapsibleFrame)
#include "tst_collapsibleframe.moc"
