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

/// The names in the order in which the Tab key reaches them, those of parts of the widgets left
/// out.
QStringList tabOrder(QWidget *window, const QStringList &names)
{
    QStringList order;
    for (QWidget *w = window->nextInFocusChain(); w != window; w = w->nextInFocusChain()) {
        if ((w->focusPolicy() & Qt::TabFocus) && names.contains(w->objectName()))
            order << w->objectName();
    }
    return order;
}

const char *const groupProperty = "importDialogGroup";

} // namespace

class tst_Form : public QObject {
    Q_OBJECT

private slots:
    void groups()
    {
        const QMap<unsigned int, QString> expected{
            {0x000000, "m_healStitch m_healStitchLabel m_importerVersion m_importerVersionLabel"},
            {0x000001, "_general_settings"},
            {0x000002, "_advanced_settings"},
            {0x000004, "_file_specific_options"},
            {0x000008, "_scene_settings"},
            {0x000010, "m_associativeMeshesEnabled m_associativeMeshesLabel"},
            {0x000020, "m_invisibleInstancesEnabled m_invisibleInstancesLabel"},
            {0x000040,
             "m_camerasEnabled m_heronLabel m_lightsEnabled m_templateGeometriesEnabled "
             "m_variantsEnabled"},
            {0x000080, "frame_5 m_jtToolkit m_jtToolkitLabel m_meshLODs m_meshLODsLabel"},
            {0x000100, "_tesselation"},
            {0x000200, "_cbImportSurfaces frame label_8"},
            {0x000400, "_cbImportMeshes frame_2 label_9"},
            {0x000800, "_cbImportCurves frame_3 label_10"},
            {0x001000, "_project_settings"},
            {0x002000, "_importAnimations m_associativeMeshesLabel_2"},
            {0x004000, "m_emptyLayersEnabled m_layerFoldersEnabled"},
            {0x008000, "m_reduceKeyframes"},
            {0x010000, "m_importReferencedFiles m_optimizeMaterials"},
            {0x020000, "m_coordSystemsEnabled"},
            {0x040000, "m_importAsSmartCheckBox"},
            {0x080000, "m_referenceBehaviorComboBox m_referenceBehaviorLabel"},
            {0x100000, "_globalReferenceBehavior _globalReferenceBehaviorLabel _line1 frame_15"},
            {0x200000, "m_importGroupMaterials"},
            {0x400000, "m_importMetadata"}};

        const Form form;
        QMap<unsigned int, QStringList> found;
        for (const QWidget *w : form.findChildren<QWidget *>()) {
            const QVariant value = w->property(groupProperty);
            if (!value.isValid())
                continue;
            found[value.toUInt()] << w->objectName();
            QVERIFY2(value.userType() == QMetaType::UInt, qPrintable(w->objectName()));
            // Outside the panel nobody would ever look at it.
            QVERIFY2(form._settings->isAncestorOf(w), qPrintable(w->objectName()));
        }
        QCOMPARE(found.keys(), expected.keys());
        for (auto it = found.begin(); it != found.end(); ++it) {
            it->sort();
            QCOMPARE(it->join(' '), expected[it.key()]);
        }
    }

    void retranslating()
    {
        // The texts change with the language; what stands at an index does not.
        const QMap<QString, QString> boxes{
            {"_cbFileType", ""},
            {"_cbMode", "Import|Import & Keep Files|Convert"},
            {"_cbImportSurfaces", "Import none|Import visible|Import all"},
            {"_cbImportMeshes", "Import none|Import visible|Import all"},
            {"_cbImportCurves", "Import none|Import visible|Import all"},
            {"m_referenceBehaviorComboBox", "Keep References|Remove References"},
            {"m_meshLODs", "All|Lowest|Highest"},
            {"m_importerVersion", "Lightweight|Legacy"},
            {"m_healStitch", "Heal stitch|Stitch and merge"},
            {"m_jtToolkit", "Parasolid|Jt Open (Experimental)"},
            {"_environmentOption", "Use From Scene|Use From File|Add From File|Merge"},
            {"_materialAssignment", "Use from File|Preserve from Scene|Apply from Asset Manager"},
            {"_globalReferenceBehavior", "None|Source Reference"}};
        Form form;
        form._output_dir->setText(QStringLiteral("somewhere"));
        form._result->setText(QStringLiteral("status"));
        const auto check = [&](const QString &mark) {
            for (const QString &name : boxes.keys()) {
                auto *const box = form.findChild<QComboBox *>(name);
                QStringList texts = boxes[name].split('|', Qt::SkipEmptyParts);
                QCOMPARE(items(box), texts.replaceInStrings(QRegularExpression("^"), mark));
                if (mark.isEmpty())
                    box->setCurrentIndex(box->count() - 1);
                QCOMPARE(box->currentIndex(), box->count() - 1);
            }
        };
        check(QString());
        form._cbFileType->addItem(QStringLiteral("Step"), 28);
        Marker marker;
        QCoreApplication::installTranslator(&marker);
        form.retranslateUi(&form);
        QCOMPARE(items(form._cbFileType), QStringList("Step"));
        form._cbFileType->clear();
        check(QStringLiteral("#"));

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
        const std::pair<QTNCollapsibleFrame *, QWidget *> frames[] = {
            {form._general_settings, form.page},
            {form._advanced_settings, form.advanced_page_1},
            {form._file_specific_options, form.advanced_page_4},
            {form._project_settings, form.page_3},
            {form._scene_settings, form.page_2}};
        for (const auto &[frame, page] : frames) {
            QVERIFY2(!frame->isCollapsed(), qPrintable(frame->caption()));
            // Folding takes the page along only if the frame was given it.
            frame->setCollapsed(true);
            QVERIFY2(!page->isVisibleTo(frame), qPrintable(frame->caption()));
        }
    }

    void buddiesAndTabOrder()
    {
        Form form;
        QCOMPARE(form.label_2->buddy(), form._cbFileType);
        QCOMPARE(form._modeLabel->buddy(), form._cbMode);
        QCOMPARE(form.textLabel5->buddy(), form._max_procs);
        QCOMPARE(form._lbOutputDir->buddy(), form._output_dir);

        const QStringList order{"_cbFileType",      "_cbMode",         "_max_procs",
                                "_output_dir",      "_tbOutputPath",   "_cbImportSurfaces",
                                "m_camerasEnabled", "m_meshLODs",      "_import_variants",
                                "_assetManager",    "_centerInOrigin", "_importAnimations",
                                "_abort",           "_pbReloadOk",     "_pbReloadCancel",
                                "_pbAbort",         "_pbDefaults",     "_pbImport",
                                "_pbClose",         "tableView",       "_settings"};
        QCOMPARE(tabOrder(&form, order), order);
    }

    void buttonsAndFileList()
    {
        Form form;
        form.show();
        for (const QPushButton *button : form.findChildren<QPushButton *>())
            QCOMPARE(button->isDefault(), button == form._pbImport);
        QVERIFY(!form._pbRemove->isEnabled());
        // Its maximum lies below its minimum, which wins.
        QCOMPARE(form._abort->width(), 130);

        QVERIFY(form.acceptDrops());
        QCOMPARE(form.tableView->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(form.tableView->selectionMode(), QAbstractItemView::ExtendedSelection);
        QVERIFY(form.tableView->isSortingEnabled());
    }
};

QTEST_MAIN(tst_Form)
#include "tst_form.moc"
