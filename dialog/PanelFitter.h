#pragma once

#include <QtCore/QObject>

class QScrollArea;

/// Keeps a scroll area as wide as its contents need, so that it does without a horizontal scroll
/// bar whatever the font, and the window so wide that its other side does not pay for it.
class PanelFitter : public QObject {
    Q_OBJECT

public:
    /// The panel becomes the parent and has its contents already. The other side of the window is
    /// given its width, in pixels, where the panel grows beyond its own minimum.
    PanelFitter(QScrollArea *panel, int otherSide);

    bool eventFilter(QObject *contents, QEvent *event) override;

private:
    QScrollArea *m_panel;
    int m_otherSide;
};
