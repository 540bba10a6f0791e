#pragma once

#include <QtWidgets/QToolBar>

class QAction;
class QComboBox;
class QSlider;

namespace tnhost {

class SceneDisplay;

/// Cuts what the view shows: across which axis, where, and which side stays.
class SectionBar : public QToolBar {
    Q_OBJECT

public:
    /// Disabled without a display, which must outlive the bar.
    explicit SectionBar(SceneDisplay *display, QWidget *parent = nullptr);

private:
    void apply();

    SceneDisplay *const m_display;
    QComboBox *m_axis; ///< none, x, y, z
    QSlider *m_place;
    QAction *m_flip;
};

} // namespace tnhost
