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

class tst_OptionWidgets : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale::c());
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
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

    void iconButtonIsFlat()
    {
        QWidget window;
        auto *const button = new QTNPushButton(&window);
        QVERIFY(button->sizeHint().width() < 40);
        button->setGeometry(10, 10, 30, 30);
        const QImage empty = window.grab(button->geometry()).toImage();
        QCOMPARE(empty.pixelColor(15, 3), window.palette().color(QPalette::Window));
        button->setDown(true);
        QVERIFY(window.grab(button->geometry()).toImage() != empty);

        button->setText(QStringLiteral("Choose"));
        QVERIFY(button->sizeHint().width() > 40);
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
    }

    void stitchingToleranceFollowsItsBox()
    {
        tnTesselationSettings settings;
        QWidget *const tolerance = settings.stitchingToleranceSpinBox;
        QVERIFY(!tolerance->isEnabled());
        // The owner disables the frame as a whole, and options may change meanwhile.
        for (const bool checked : {true, false}) {
            settings.tessellationFrame->setEnabled(false);
            settings.useStitchingCheckBox->setChecked(checked);
            QVERIFY(!tolerance->isEnabled());
            settings.tessellationFrame->setEnabled(true);
            QCOMPARE(tolerance->isEnabled(), checked);
        }
    }

    void groupsAndSingleWidgets()
    {
        tnTesselationSettings settings;
        settings.show();
        settings.keepNurbsCheckBox->hide();
        const int withGroup = settings.sizeHint().height();
        settings.enableGroups(tnTesselationSettings::NoGroup);
        QVERIFY(settings.sizeHint().height() < withGroup);
        QVERIFY(settings.fixOrientationCheckBox->isVisible());

        // Nothing but enableGroups brings the group back, and it brings back nothing else.
        settings.tessellationFrame->setCollapsed(true);
        settings.hide();
        settings.show();
        settings.enableGroups(0x1);
        QVERIFY(settings.tessellationFrame->isHidden());
        settings.enableGroups(2);
        QVERIFY(settings.tessellationFrame->isVisible());
        QVERIFY(settings.tessellationFrame->isCollapsed());
        QVERIFY(settings.keepNurbsCheckBox->isHidden());
    }
};

QTEST_MAIN(tst_OptionWidgets)
#include "tst_optionwidgets.moc"
