#include "ui_tnImportDialog.h"

#include <QtTest/QtTest>

// What the rest of the dialog takes for granted about its form.

namespace {

struct Form : QDialog, Ui::tnImportDialog {
    Form() { setupUi(this); }
};

/// Marks what is translated in the form's context.
class Marker : public QTranslator {
public:
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return qstrcmp(context, "tnImportDialog") ? QString() : QLatin1Char('#') + QString(text);
    }
    bool isEmpty() const override { return false; }
};

QStringList items(const QComboBox *box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts << box->itemText(i);
    return texts;
}

} // namespace

class tst_Form : public QObject {
    Q_OBJECT

private slots:
    void retranslating()
    {
        // The texts change with the language; what stands at an index does not.
        Form form;
        form._output_dir->setText(QStringLiteral("somewhere"));
        form._result->setText(QStringLiteral("status"));
        form._cbFileType->addItem(QStringLiteral("Step"), 28); // at run time
        QMap<QComboBox *, QStringList> expected;
        for (QComboBox *box : form.findChildren<QComboBox *>()) {
            QVERIFY2(box->count() > 0 && !items(box).contains(QString()),
                     qPrintable(box->objectName()));
            box->setCurrentIndex(box->count() - 1);
            expected[box] = items(box);
            if (box != form._cbFileType)
                expected[box].replaceInStrings(QRegularExpression("^"), QStringLiteral("#"));
        }
        Marker marker;
        QCoreApplication::installTranslator(&marker);
        form.retranslateUi(&form);
        for (auto box = expected.cbegin(); box != expected.cend(); ++box) {
            QCOMPARE(items(box.key()), box.value());
            QCOMPARE(box.key()->currentIndex(), box.key()->count() - 1);
        }

        QCOMPARE(form._output_dir->text(), QString());
        // Set at run time, so not the form's to take back.
        QCOMPARE(form._result->text(), QStringLiteral("status"));
        QCOMPARE(form.windowTitle(), QStringLiteral("#Import File(s)"));
        QCOMPARE(form._scene_settings->caption(), QStringLiteral("#Global Scene Options"));
        QCOMPARE(form._lbDirectory->accessibleName(), form._lbDirectory->toolTip());
    }

    void framesStandOpen()
    {
        const Form form;
        const auto frames = form._settings->findChildren<QTNCollapsibleFrame *>(
            QRegularExpression("_settings$|_file_specific_options"));
        QCOMPARE(frames.size(), 5);
        for (QTNCollapsibleFrame *frame : frames) {
            QVERIFY2(!frame->isCollapsed(), qPrintable(frame->caption()));
            // Folding takes the page along only if the frame was given it.
            frame->setCollapsed(true);
            for (const QWidget *page : frame->findChildren<QWidget *>(QRegularExpression("page")))
                QVERIFY2(!page->isVisibleTo(frame), qPrintable(frame->caption()));
        }
    }
};

QTEST_MAIN(tst_Form)
#include "tst_form.moc"
