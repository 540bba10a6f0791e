#include "platform/tnTesselationSettings.h"

#include "platform/QTNCollapsibleFrame.h"
#include "platform/QTNDoubleSpinBox.h"
#include "platform/QTNSeparator.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QVBoxLayout>

namespace {

// As many decimals as options are stored with, so that showing a value does not change it.
constexpr int storedDecimals = 4;
constexpr double smallestLength = 0.0001;
constexpr double largestTolerance = 9999.9999;
constexpr double largestLength = 99999.9999;
// The narrowest editor; the same as that of the boxes that stand above and below.
constexpr int editorWidth = 130;

enum Column { LabelColumn, EditorColumn, FillerColumn, ColumnCount };

QTNCollapsibleFrame *addFrame(QWidget *parent, const QString &name, const QString &caption)
{
    auto *const frame = new QTNCollapsibleFrame(parent);
    frame->setObjectName(name);
    frame->setCaption(caption);
    parent->layout()->addWidget(frame);
    return frame;
}

QGridLayout *addPage(QTNCollapsibleFrame *frame)
{
    auto *const page = new QWidget;
    auto *const grid = new QGridLayout(page);
    grid->setColumnStretch(FillerColumn, 1);
    frame->addPage(page);
    return grid;
}

// With a condition, the box and its label are enabled as long as that is checked.
QDoubleSpinBox *addSpinBox(QGridLayout *grid, const QString &name, const QString &text,
                           const QString &toolTip, const QCheckBox *condition = nullptr)
{
    auto *const box = new QTNDoubleSpinBox;
    box->setObjectName(name);
    box->setToolTip(toolTip);
    box->setDecimals(storedDecimals);
    box->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
    box->setMinimumWidth(editorWidth);

    auto *const label = new QLabel(text);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setToolTip(toolTip);
    label->setBuddy(box);

    if (condition) {
        for (QWidget *widget : {static_cast<QWidget *>(box), static_cast<QWidget *>(label)}) {
            widget->setEnabled(condition->isChecked());
            QObject::connect(condition, &QCheckBox::toggled, widget, &QWidget::setEnabled);
        }
    }

    const int row = grid->rowCount();
    grid->addWidget(label, row, LabelColumn);
    grid->addWidget(box, row, EditorColumn);
    return box;
}

QCheckBox *addCheckBox(QGridLayout *grid, const QString &name, const QString &text,
                       const QString &toolTip)
{
    auto *const box = new QCheckBox(text);
    box->setObjectName(name);
    box->setToolTip(toolTip);
    grid->addWidget(box, grid->rowCount(), EditorColumn, 1, ColumnCount - EditorColumn);
    return box;
}

} // namespace

tnTesselationSettings::tnTesselationSettings(QWidget *parent)
    : QFrame(parent)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto *const stack = new QVBoxLayout(this);
    // In line with the frames that stand above and below.
    stack->setContentsMargins(0, 0, 0, 0);

    tessellationFrame = addFrame(this, QStringLiteral("tessellationFrame"), tr("Tessellation"));
    fillTessellationPage(addPage(tessellationFrame));
    advancedFrame = addFrame(this, QStringLiteral("advancedFrame"), tr("Advanced Options"));
    fillAdvancedPage(addPage(advancedFrame));
}

void tnTesselationSettings::fillTessellationPage(QGridLayout *grid)
{
    const QString millimetres = tr(" mm");

    chordDeviationSpinBox =
        addSpinBox(grid, QStringLiteral("chordDeviationSpinBox"), tr("Chord Deviation"),
                   tr("The largest distance between a surface and the triangles that stand for "
                      "it. Smaller values give more triangles."));
    chordDeviationSpinBox->setRange(smallestLength, largestTolerance);
    chordDeviationSpinBox->setSuffix(millimetres);
    chordDeviationSpinBox->setValue(0.1);

    maxChordLengthSpinBox = addSpinBox(
        grid, QStringLiteral("maxChordLengthSpinBox"), tr("Max Chord Length"),
        tr("The longest edge that a triangle may have. At 0 edges may have any length."));
    maxChordLengthSpinBox->setRange(0.0, largestLength);
    maxChordLengthSpinBox->setSuffix(millimetres);
    maxChordLengthSpinBox->setSpecialValueText(tr("Unlimited"));

    normalToleranceSpinBox =
        addSpinBox(grid, QStringLiteral("normalToleranceSpinBox"), tr("Normal Tolerance"),
                   tr("The largest angle between the normals at neighboring corners of a "
                      "triangle. Smaller values give smoother curvature and more triangles."));
    normalToleranceSpinBox->setRange(0.1, 180.0);
    normalToleranceSpinBox->setSuffix(tr("\u00b0"));
    normalToleranceSpinBox->setValue(15.0);

    useStitchingCheckBox = addCheckBox(
        grid, QStringLiteral("useStitchingCheckBox"), tr("Stitch Surfaces"),
        tr("Joins neighboring surfaces before the tessellation, so that no gaps show between "
           "them."));

    stitchingToleranceSpinBox = addSpinBox(
        grid, QStringLiteral("stitchingToleranceSpinBox"), tr("Stitching Tolerance"),
        tr("The widest gap between two surfaces that stitching closes."), useStitchingCheckBox);
    stitchingToleranceSpinBox->setRange(smallestLength, largestTolerance);
    stitchingToleranceSpinBox->setSuffix(millimetres);
    stitchingToleranceSpinBox->setValue(0.1);
}

void tnTesselationSettings::fillAdvancedPage(QGridLayout *grid)
{
    keepNurbsCheckBox =
        addCheckBox(grid, QStringLiteral("keepNurbsCheckBox"), tr("Keep NURBS"),
                    tr("Keeps the exact surfaces beside their triangles, so that they can be "
                       "tessellated again later. Needs more memory."));
    fixOrientationCheckBox = addCheckBox(
        grid, QStringLiteral("fixOrientationCheckBox"), tr("Fix Surface Orientation"),
        tr("Turns surfaces over where needed, so that neighboring ones face the same side."));

    surfaceOptionsExtra = new QTNSeparator;
    surfaceOptionsExtra->setObjectName(QStringLiteral("surfaceOptionsExtra"));
    surfaceOptionsExtra->setToolTip(
        tr("The options above apply to surfaces, those below to the scene's nodes."));
    grid->addWidget(surfaceOptionsExtra, grid->rowCount(), LabelColumn, 1, ColumnCount);

    mergeGeometriesCheckBox =
        addCheckBox(grid, QStringLiteral("mergeGeometriesCheckBox"), tr("Merge Geometries"),
                    tr("Makes one geometry of all those in a group that have the same material."));
    createLayerGroupsCheckBox =
        addCheckBox(grid, QStringLiteral("createLayerGroupsCheckBox"), tr("Create Layer Groups"),
                    tr("Adds a group for each layer of the file and sorts the geometries into "
                       "these groups."));
    removeEmptyGroupsCheckBox =
        addCheckBox(grid, QStringLiteral("removeEmptyGroupsCheckBox"), tr("Remove Empty Groups"),
                    tr("Leaves out groups that contain no geometry."));
    unshareNodesCheckBox = addCheckBox(
        grid, QStringLiteral("unshareNodesCheckBox"), tr("Unshare Nodes"),
        tr("Gives each occurrence of a shared part a copy of its own, which can be changed without "
           "changing the others. Needs more memory."));
    flushTransformationsCheckBox = addCheckBox(
        grid, QStringLiteral("flushTransformationsCheckBox"), tr("Flush Transformations"),
        tr("Applies the transformations of groups to the geometries below them, and "
           "resets those of the groups."));
}

void tnTesselationSettings::enableGroups(unsigned int groups)
{
    tessellationFrame->setVisible((groups & SurfaceTessellation) != 0);
}
