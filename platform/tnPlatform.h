#pragma once

#include "platform/tnPlatformExport.h"

/// The screen's scale and the sizes that follow from it.
class TNPLATFORM_EXPORT tnPlatform {
public:
    tnPlatform() = delete;

    /// 1.0 on a screen of 96 dots per inch, and without a screen.
    static double getDpiScaleX();
    static double getDpiScaleY();

    /// Size in pixels of the icons on tool buttons.
    static int getMediumIconSizeX();
    static int getMediumIconSizeY();
    /// Height in pixels of a row in lists and trees.
    static unsigned int getTreeViewIconSizeY();

    /// Overrides the screen's own scale, for users who want larger windows; 0 gives it back.
    static void setDpiScale(double x, double y);
};
