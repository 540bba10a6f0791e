#include "platform/tnPlatform.h"

#include <QtCore/QtMath>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>

namespace {

// Unscaled sizes in pixels.
constexpr double mediumIconSize = 24.0;
constexpr double treeViewRowHeight = 24.0;
constexpr qreal standardDotsPerInch = 96.0;

struct Scale {
    double x = 0.0;
    double y = 0.0;
};
Scale userScale;

double screenScale(qreal (QScreen::*dotsPerInch)() const)
{
    const QScreen *screen = qGuiApp ? QGuiApplication::primaryScreen() : nullptr;
    return screen ? (screen->*dotsPerInch)() / standardDotsPerInch : 1.0;
}

} // namespace

double tnPlatform::getDpiScaleX()
{
    return userScale.x > 0.0 ? userScale.x : screenScale(&QScreen::logicalDotsPerInchX);
}

double tnPlatform::getDpiScaleY()
{
    return userScale.y > 0.0 ? userScale.y : screenScale(&QScreen::logicalDotsPerInchY);
}

int tnPlatform::getMediumIconSizeX()
{
    return qRound(mediumIconSize * getDpiScaleX());
}

int tnPlatform::getMediumIconSizeY()
{
    return qRound(mediumIconSize * getDpiScaleY());
}

unsigned int tnPlatform::getTreeViewIconSizeY()
{
    return static_cast<unsigned int>(qRound(treeViewRowHeight * getDpiScaleY()));
}

void tnPlatform::setDpiScale(double x, double y)
{
    userScale = {x, y};
}
