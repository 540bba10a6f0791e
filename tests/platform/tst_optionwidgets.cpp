#include "platform/QTNCollapsibleFrame.h"
#include "platform/QTNComboBox.h"
#include "platform/QTNDoubleSpinBox.h"
#include "platform/QTNPushButton.h"
#include "platform/tnTesselationSettings.h"

#include <QtTest/QtTest>
#include <QtTest/qtestspontaneevent.h>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyleFactory>
#include <QtWidgets/QVBoxLayout>

class tst_OptionWidgets : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void wheelScrollsUnlessFocused_data();
    void wheelScrollsUnlessFocused();
    void iconButtonIsFlat();
    void valuesSurvive_data();
    void valuesSurvive();
    void childrenAreNamedAndExplained();
    void stitchingToleranceFollowsItsBox();
    void groupsAndSingleWidgets();
};

void tst_OptionWidgets::initTestCase()
{
    QLocale::setDefault(QLocale::c());
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
}

void tst_OptionWidgets::wheelScrollsUnlessFocused_data()
{
    QTest::addColumn<bool>("combo");
    QTest::newRow("combo box") << true;
    QTest::newRow("spin box") << false;
}

void tst_OptionWidgets::wheelScrollsUnlessFocused()
{
    QFETCH(bool, combo);

    QScrollArea area;
    auto *const content = new QWidget;
    auto *const stack = new QVBoxLayout(content);
    auto *const comboBox = new QTNComboBox;
    comboBox->addItems({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    auto *const spinBox = new QTNDoubleSpinBox;
    spinBox->setValue(5.0);
    QWidget *const box = combo ? static_cast<QWidget *>(comboBox) : spinBox;
    stack->addWidget(box);
    (combo ? static_cast<QWidget *>(spinBox) : comboBox)->setParent(content);
    content->setFixedSize(200, 1000);
    area.setWidget(content);
    area.resize(220, 200);
    area.show();
    QVERIFY(QTest::qWaitForWindowActive(&area));
    area.setFocus();

    const auto value = [&] { return combo ? comboBox->currentIndex() : spinBox->value(); };
    const double before = value();
    const auto turnDown = [box] {
        const QPoint at = box->rect().center();
        QWheelEvent event(at, box->mapToGlobal(at), QPoint(), QPoint(0, -120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        // As from the window system: only then it travels upwards and may bring the focus.
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(box, &event);
    };
    turnDown();
    QVERIFY(!box->hasFocus());
    QCOMPARE(value(), before);
    const int scrolled = area.verticalScrollBar()->value();
    QVERIFY(scrolled > 0);

    box->setFocus();
    turnDown();
    QVERIFY(!qFuzzyCompare(1.0 + value(), 1.0 + before));
    QCOMPARE(area.verticalScrollBar()->value(), scrolled);
}

void tst_OptionWidgets::iconButtonIsFlat()
{
    QWidget window;
    window.resize(200, 60);
    auto *const button = new QTNPushButton(&window);
    button->setIconSize(QSize(24, 24));
    QCOMPARE(button->sizeHint().width(), button->sizeHint().height());
    QVERIFY(button->sizeHint().width() < 40);
    button->setGeometry(10, 10, 30, 30);

    const QImage empty = window.grab(button->geometry()).toImage();
    QCOMPARE(empty.pixelColor(15, 3), window.palette().color(QPalette::Window));
    button->setDown(true);
    QVERIFY(window.grab(button->geometry()).toImage() != empty);
    button->setDown(false);
    QCOMPARE(window.grab(button->geometry()).toImage(), empty);

    button->setText(QStringLiteral("Choose"));
    QVERIFY(window.grab(button->geometry()).toImage() != empty);
    QVERIFY(button->sizeHint().width() > 40);
}

void tst_OptionWidgets::valuesSurvive_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QLocale>("locale");

    const QLocale c = QLocale::c();
    const QLocale german(QLocale::German);
    QTest::newRow("finest") << "chordDeviationSpinBox" << 0.0001 << "0.0001 mm" << c;
    QTest::newRow("all digits") << "chordDeviationSpinBox" << 1234.5678 << "1234.5678 mm" << c;
    QTest::newRow("comma") << "chordDeviationSpinBox" << 0.25 << "0,25 mm" << german;
    QTest::newRow("comma, whole") << "chordDeviationSpinBox" << 10.0 << "10 mm" << german;
    QTest::newRow("no bound") << "maxChordLengthSpinBox" << 0.0 << "Unlimited" << c;
    QTest::newRow("long") << "maxChordLengthSpinBox" << 50000.0001 << "50000.0001 mm" << c;
    QTest::newRow("angle") << "normalToleranceSpinBox" << 7.1257 << u8"7.1257\u00b0" << c;
    QTest::newRow("widest") << "normalToleranceSpinBox" << 180.0 << u8"180\u00b0" << c;
    QTest::newRow("stitching") << "stitchingToleranceSpinBox" << 0.0333 << "0.0333 mm" << c;
}

void tst_OptionWidgets::valuesSurvive()
{
    QFETCH(QString, name);
    QFETCH(double, value);
    QFETCH(QString, text);
    QFETCH(QLocale, locale);

    tnTesselationSettings settings;
    auto *const box = settings.findChild<QDoubleSpinBox *>(name);
    QVERIFY(box);
    box->setLocale(locale);
    box->setValue(value);
    // To the last bit, since a record that was only shown must stay equal to itself.
    QVERIFY(box->value() == value);
    QCOMPARE(box->text(), text);
}

void tst_OptionWidgets::childrenAreNamedAndExplained()
{
    const tnTesselationSettings settings;
#define NAMED(member)                                                                              \
    {                                                                                              \
#member, settings.member                                                                   \
    }
    const std::vector<std::pair<const char *, QWidget *>> children{
        NAMED(chordDeviationSpinBox),       NAMED(maxChordLengthSpinBox),
        NAMED(normalToleranceSpinBox),      NAMED(useStitchingCheckBox),
        NAMED(stitchingToleranceSpinBox),   NAMED(keepNurbsCheckBox),
        NAMED(fixOrientationCheckBox),      NAMED(surfaceOptionsExtra),
        NAMED(mergeGeometriesCheckBox),     NAMED(createLayerGroupsCheckBox),
        NAMED(removeEmptyGroupsCheckBox),   NAMED(unshareNodesCheckBox),
        NAMED(flushTransformationsCheckBox)};
#undef NAMED
    for (const auto &[name, widget] : children) {
        QCOMPARE(widget->objectName(), QLatin1String(name));
        QVERIFY2(!widget->toolTip().isEmpty(), name);
    }
    QCOMPARE(settings.tessellationFrame->objectName(), QStringLiteral("tessellationFrame"));
    QCOMPARE(settings.advancedFrame->objectName(), QStringLiteral("advancedFrame"));
}

void tst_OptionWidgets::stitchingToleranceFollowsItsBox()
{
    tnTesselationSettings settings;
    QWidget *const tolerance = settings.stitchingToleranceSpinBox;
    QVERIFY(!tolerance->isEnabled());
    settings.useStitchingCheckBox->setChecked(true);
    QVERIFY(tolerance->isEnabled());

    // The owner disables the frame as a whole, and options may change meanwhile.
    settings.tessellationFrame->setEnabled(false);
    QVERIFY(!tolerance->isEnabled());
    settings.useStitchingCheckBox->setChecked(false);
    settings.tessellationFrame->setEnabled(true);
    QVERIFY(!tolerance->isEnabled());
    settings.tessellationFrame->setEnabled(false);
    settings.useStitchingCheckBox->setChecked(true);
    QVERIFY(!tolerance->isEnabled());
    settings.tessellationFrame->setEnabled(true);
    QVERIFY(tolerance->isEnabled());
}

void tst_OptionWidgets::groupsAndSingleWidgets()
{
    tnTesselationSettings settings;
    settings.show();
    QVERIFY(settings.tessellationFrame->isVisible());

    settings.keepNurbsCheckBox->hide();
    settings.surfaceOptionsExtra->hide();
    settings.fixOrientationCheckBox->setEnabled(false);
    const int withGroup = settings.sizeHint().height();
    settings.enableGroups(tnTesselationSettings::NoGroup);
    QVERIFY(!settings.chordDeviationSpinBox->isVisible());
    QVERIFY(settings.sizeHint().height() < withGroup);
    QVERIFY(settings.advancedFrame->isVisible());
    QVERIFY(settings.fixOrientationCheckBox->isVisible());

    // Nothing but enableGroups brings the group back.
    settings.tessellationFrame->setCollapsed(true);
    settings.tessellationFrame->setCollapsed(false);
    settings.useStitchingCheckBox->setChecked(true);
    settings.hide();
    settings.show();
    settings.enableGroups(0x1);
    QVERIFY(settings.tessellationFrame->isHidden());

    settings.tessellationFrame->setCollapsed(true);
    settings.enableGroups(2);
    QVERIFY(settings.tessellationFrame->isVisible());
    QVERIFY(settings.tessellationFrame->isCollapsed());
    QVERIFY(settings.keepNurbsCheckBox->isHidden());
    QVERIFY(settings.surfaceOptionsExtra->isHidden());
    QVERIFY(!settings.fixOrientationCheckBox->isEnabled());
}

QTEST_MAIN(tst_OptionWidgets)
#include "tst_optionwidgets.moc"
