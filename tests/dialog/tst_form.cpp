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
    void groups_data();
    void groups();
    void groupsAreUnsignedAndListed();
    void comboItems_data();
    void comboItems();
    void retranslating();
    void framesStandOpen();
    void widgetsOfOneCell_data();
    void widgetsOfOneCell();
    void buddiesAndTabOrder();
    void buttons();
    void fileList();
};

void tst_Form::groups_data()
{
    QTest::addColumn<unsigned int>("group");
    QTest::addColumn<QString>("widgets");

    const auto row = [](unsigned int group, const char *widgets) {
        QTest::addRow("0x%06X", group) << group << QString::fromLatin1(widgets);
    };
    row(0x000000, "m_healStitch m_healStitchLabel m_importerVersion m_importerVersionLabel");
    row(0x000001, "_general_settings");
    row(0x000002, "_advanced_settings");
    row(0x000004, "_file_specific_options");
    row(0x000008, "_scene_settings");
    row(0x000010, "m_associativeMeshesEnabled m_associativeMeshesLabel");
    row(0x000020, "m_invisibleInstancesEnabled m_invisibleInstancesLabel");
    row(0x000040,
        "m_camerasEnabled m_heronLabel m_lightsEnabled m_templateGeometriesEnabled "
        "m_variantsEnabled");
    row(0x000080, "frame_5 m_jtToolkit m_jtToolkitLabel m_meshLODs m_meshLODsLabel");
    row(0x000100, "_tesselation");
    row(0x000200, "_cbImportSurfaces frame label_8");
    row(0x000400, "_cbImportMeshes frame_2 label_9");
    row(0x000800, "_cbImportCurves frame_3 label_10");
    row(0x001000, "_project_settings");
    row(0x002000, "_importAnimations m_associativeMeshesLabel_2");
    row(0x004000, "m_emptyLayersEnabled m_layerFoldersEnabled");
    row(0x008000, "m_reduceKeyframes");
    row(0x010000, "m_importReferencedFiles m_optimizeMaterials");
    row(0x020000, "m_coordSystemsEnabled");
    row(0x040000, "m_importAsSmartCheckBox");
    row(0x080000, "m_referenceBehaviorComboBox m_referenceBehaviorLabel");
    row(0x100000, "_globalReferenceBehavior _globalReferenceBehaviorLabel _line1 frame_15");
    row(0x200000, "m_importGroupMaterials");
    row(0x400000, "m_importMetadata");
}

void tst_Form::groups()
{
    QFETCH(unsigned int, group);
    QFETCH(QString, widgets);

    const Form form;
    QStringList found;
    for (const QWidget *w : form._settings->findChildren<QWidget *>()) {
        const QVariant value = w->property(groupProperty);
        if (value.isValid() && value.toUInt() == group)
            found << w->objectName();
    }
    found.sort();
    QCOMPARE(found.join(QLatin1Char(' ')), widgets);
}

void tst_Form::groupsAreUnsignedAndListed()
{
    const Form form;
    int grouped = 0;
    for (const QWidget *w : form.findChildren<QWidget *>()) {
        const QVariant value = w->property(groupProperty);
        if (!value.isValid())
            continue;
        ++grouped;
        QVERIFY2(value.userType() == QMetaType::UInt, qPrintable(w->objectName()));
        // Outside the panel nobody would ever look at it.
        QVERIFY2(form._settings->isAncestorOf(w), qPrintable(w->objectName()));
    }
    // No value but those of the rows above.
    QCOMPARE(grouped, 50);
}

void tst_Form::comboItems_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QStringList>("texts");

    const auto row = [](const char *box, const char *texts) {
        QTest::newRow(box) << QString(box) << QString(texts).split('|', Qt::SkipEmptyParts);
    };
    row("_cbFileType", "");
    row("_cbMode", "Import|Import & Keep Files|Convert");
    row("_cbImportSurfaces", "Import none|Import visible|Import all");
    row("_cbImportMeshes", "Import none|Import visible|Import all");
    row("_cbImportCurves", "Import none|Import visible|Import all");
    row("m_referenceBehaviorComboBox", "Keep References|Remove References");
    row("m_meshLODs", "All|Lowest|Highest");
    row("m_importerVersion", "Lightweight|Legacy");
    row("m_healStitch", "Heal stitch|Stitch and merge");
    row("m_jtToolkit", "Parasolid|Jt Open (Experimental)");
    row("_environmentOption", "Use From Scene|Use From File|Add From File|Merge");
    row("_materialAssignment", "Use from File|Preserve from Scene|Apply from Asset Manager");
    row("_globalReferenceBehavior", "None|Source Reference");
}

void tst_Form::comboItems()
{
    QFETCH(QString, box);
    QFETCH(QStringList, texts);

    Form form;
    auto *const combo = form.findChild<QComboBox *>(box);
    QVERIFY(combo);
    QCOMPARE(items(combo), texts);

    // The texts change with the language; what stands at an index does not.
    combo->setCurrentIndex(combo->count() - 1);
    Marker marker;
    QCoreApplication::installTranslator(&marker);
    form.retranslateUi(&form);
    QCOMPARE(items(combo), texts.replaceInStrings(QRegularExpression("^"), "#"));
    QCOMPARE(combo->currentIndex(), combo->count() - 1);
}

void tst_Form::retranslating()
{
    Form form;
    form._cbFileType->addItem(QStringLiteral("Step"), 28);
    form._output_dir->setText(QStringLiteral("somewhere"));
    form._result->setText(QStringLiteral("status"));
    Marker marker;
    QCoreApplication::installTranslator(&marker);
    form.retranslateUi(&form);

    QCOMPARE(form._output_dir->text(), QString());
    // Set at run time, so not the form's to take back.
    QCOMPARE(form._result->text(), QStringLiteral("status"));
    QCOMPARE(items(form._cbFileType), QStringList("Step"));
    QCOMPARE(form.windowTitle(), QStringLiteral("#Import File(s)"));
    QCOMPARE(form._scene_settings->caption(), QStringLiteral("#Global Scene Options"));
    QCOMPARE(form._lbDirectory->accessibleName(), form._lbDirectory->toolTip());
    QCOMPARE(form._assetManager2->toolTip(),
             QStringLiteral("#Opens the Asset Manager.\nPlease select the materials directory "
                            "that should be applied."));
}

void tst_Form::framesStandOpen()
{
    const Form form;
    const QTNCollapsibleFrame *const frames[] = {form._general_settings, form._advanced_settings,
                                                 form._file_specific_options,
                                                 form._project_settings, form._scene_settings};
    const QWidget *const pages[] = {form.page, form.advanced_page_1, form.advanced_page_4,
                                    form.page_3, form.page_2};
    for (int i = 0; i < 5; ++i) {
        QVERIFY2(!frames[i]->isCollapsed(), qPrintable(frames[i]->caption()));
        // Folding takes the page along only if the frame was given it.
        const_cast<QTNCollapsibleFrame *>(frames[i])->setCollapsed(true);
        QVERIFY2(!pages[i]->isVisibleTo(frames[i]), qPrintable(frames[i]->caption()));
    }
}

void tst_Form::widgetsOfOneCell_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("widgets");

    QTest::newRow("labels 20") << 20 << 0 << "m_meshLODsLabel m_importerVersionLabel";
    QTest::newRow("fields 20") << 20 << 1 << "m_meshLODs m_importerVersion m_healStitch";
    QTest::newRow("labels 21") << 21 << 0 << "m_jtToolkitLabel m_healStitchLabel";
    QTest::newRow("fields 21") << 21 << 1 << "m_jtToolkit";
}

void tst_Form::widgetsOfOneCell()
{
    QFETCH(int, row);
    QFETCH(int, column);
    QFETCH(QString, widgets);

    const Form form;
    QStringList found;
    for (int i = 0; i < form.gridLayout_6->count(); ++i) {
        int r, c, rows, columns;
        form.gridLayout_6->getItemPosition(i, &r, &c, &rows, &columns);
        if (r == row && c == column)
            found << form.gridLayout_6->itemAt(i)->widget()->objectName();
    }
    QCOMPARE(found.join(QLatin1Char(' ')), widgets);
}

void tst_Form::buddiesAndTabOrder()
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

void tst_Form::buttons()
{
    Form form;
    form.show();
    for (const QPushButton *button : form.findChildren<QPushButton *>())
        QCOMPARE(button->isDefault(), button == form._pbImport);
    QVERIFY(!form._pbRemove->isEnabled());
    // Its maximum lies below its minimum, which wins.
    QCOMPARE(form._abort->width(), 130);
}

void tst_Form::fileList()
{
    const Form form;
    QVERIFY(form.acceptDrops());
    QCOMPARE(form.tableView->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(form.tableView->selectionMode(), QAbstractItemView::ExtendedSelection);
    QVERIFY(form.tableView->isSortingEnabled());
    QVERIFY(form.tableView->horizontalHeader()->stretchLastSection());
    QVERIFY(form.tableView->verticalHeader()->isHidden());
}

QTEST_MAIN(tst_Form)
#include "tst_form.moc"
