#pragma once

#include "platform/tnPlatformExport.h"

#include <QtWidgets/QFrame>

class QCheckBox;
class QDoubleSpinBox;
class QGridLayout;
class QTNCollapsibleFrame;

/// The options that turn surfaces into triangles and tidy up what comes out. The owner fills and
/// reads the widgets, and enables, shows and hides them one by one; this class only ties the
/// stitching tolerance to its check box and shows whole groups.
class TNPLATFORM_EXPORT tnTesselationSettings : public QFrame {
    Q_OBJECT

public:
    /// What enableGroups takes; bits, which may be combined.
    enum Group : unsigned int {
        NoGroup = 0x0,
        SurfaceTessellation = 0x2, ///< tessellationFrame, for files that have surfaces
    };

    explicit tnTesselationSettings(QWidget *parent = nullptr);

    /// Shows the groups whose bits are set and hides the others. Bits without a group do nothing.
    void enableGroups(unsigned int groups);

    // Object names are the names of the members.
    QTNCollapsibleFrame *tessellationFrame;
    QTNCollapsibleFrame *advancedFrame;

    QDoubleSpinBox *chordDeviationSpinBox; ///< mm
    QDoubleSpinBox *maxChordLengthSpinBox; ///< mm, 0 for no bound
    QDoubleSpinBox *normalToleranceSpinBox; ///< degrees
    QCheckBox *useStitchingCheckBox;
    QDoubleSpinBox *stitchingToleranceSpinBox; ///< mm

    QCheckBox *keepNurbsCheckBox;
    QCheckBox *fixOrientationCheckBox;
    /// Parts the options of surfaces from those of the scene's structure.
    QWidget *surfaceOptionsExtra;
    QCheckBox *mergeGeometriesCheckBox;
    QCheckBox *createLayerGroupsCheckBox;
    QCheckBox *removeEmptyGroupsCheckBox;
    QCheckBox *unshareNodesCheckBox;
    QCheckBox *flushTransformationsCheckBox;

private:
    void fillTessellationPage(QGridLayout *grid);
    void fillAdvancedPage(QGridLayout *grid);
};
