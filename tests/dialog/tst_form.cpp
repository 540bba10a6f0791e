#include "ui_tnImportDialog.h"

#include <QtCore/QTranslator>
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
    void groups()
    {
        // One after the other: the unmarked one, then bit by bit.
        const QStringList expected =
            QString(
                "m_healStitch m_healStitchLabel m_importerVersion m_importerVersionLabel|"
                "_general_settings|_advanced_settings|_file_specific_options|_scene_settings|"
                "m_associativeMeshesEnabled m_associativeMeshesLabel|"
                "m_invisibleInstancesEnabled m_invisibleInstancesLabel|"
                "m_camerasEnabled m_heronLabel m_lightsEnabled m_templateGeometriesEnabled "
                "m_variantsEnabled|frame_5 m_jtToolkit m_jtToolkitLabel m_meshLODs m_meshLODsLabel|"
                "_tesselation|_cbImportSurfaces frame label_8|_cbImportMeshes frame_2 label_9|"
                "_cbImportCurves frame_3 label_10|_project_settings|"
                "_importAnimations m_associativeMeshesLabel_2|"
                "m_emptyLayersEnabled m_layerFoldersEnabled|m_reduceKeyframes|"
                "m_importReferencedFiles m_optimizeMaterials|m_coordSystemsEnabled|"
                "m_importAsSmartCheckBox|m_referenceBehaviorComboBox m_referenceBehaviorLabel|"
                "_globalReferenceBehavior _globalReferenceBehaviorLabel _line1 frame_15|"
                "m_importGroupMaterials|m_importMetadata")
                .split('|');
        const Form form;
        QMap<unsigned int, QStringList> found;
        for (const QWidget *w : form.findChildren<QWidget *>()) {
            const QVariant value = w->property("importDialogGroup");
            if (!value.isValid())
                continue;
            found[value.toUInt()] << w->objectName();
            QVERIFY2(value.userType() == QMetaType::UInt, qPrintable(w->objectName()));
            // Outside the panel nobody would ever look at it.
            QVERIFY2(form._settings->isAncestorOf(w), qPrintable(w->objectName()));
        }
        QCOMPARE(found.size(), expected.size());
        for (int i = 0; i < expected.size(); ++i) {
            QStringList &names = found[(1U << i) / 2];
            names.sort();
            QCOMPARE(names.join(' '), expected[i]);
        }
    }

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

    void tabOrder()
    {
        const QStringList expected{"_cbFileType",      "_cbMode",         "_max_procs",
                                   "_output_dir",      "_tbOutputPath",   "_cbImportSurfaces",
                                   "m_camerasEnabled", "m_meshLODs",      "_import_variants",
                                   "_assetManager",    "_centerInOrigin", "_importAnimations",
                                   "_abort",           "_pbReloadOk",     "_pbReloadCancel",
                                   "_pbAbort",         "_pbDefaults",     "_pbImport",
                                   "_pbClose",         "tableView",       "_settings"};
        const Form form;
        QStringList order;
        for (const QWidget *w = form.nextInFocusChain(); w != &form; w = w->nextInFocusChain()) {
            if ((w->focusPolicy() & Qt::TabFocus) && expected.contains(w->objectName()))
                order << w->objectName();
        }
        QCOMPARE(order, expected);
    }

    void buttonsAndFileList()
    {
        Form form;
        form.show();
        for (const QPushButton *button : form.findChildren<QPushButton *>())
            QCOMPARE(button->isDefault(), button == form._pbImport);
        QVERIFY(!form._pbRemove->isEnabled());
        QCOMPARE(form.tableView->selectionMode(), QAbstractItemView::ExtendedSelection);
    }
};

QTEST_MAIN(tst_Form)
#include "tst_form.moc"
