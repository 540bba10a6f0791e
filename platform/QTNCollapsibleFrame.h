#pragma once

#include "platform/tnPlatformExport.h"

#include <QtWidgets/QFrame>

#include <vector>

class QGridLayout;
class QTNCaptionBar;

/// A frame with a caption that can fold away its pages. It starts unfolded. Folding leaves the
/// visibility that others gave to the frame, its pages and their children untouched.
class TNPLATFORM_EXPORT QTNCollapsibleFrame : public QFrame {
    Q_OBJECT
    Q_PROPERTY(QString caption READ caption WRITE setCaption)
    Q_PROPERTY(bool collapsed READ isCollapsed WRITE setCollapsed NOTIFY collapsedChanged)

public:
    explicit QTNCollapsibleFrame(QWidget *parent = nullptr);

    QString caption() const;
    void setCaption(const QString &caption);

    /// Takes the page over, in a smaller font and with its grids drawn together; further pages
    /// stand below the first. Null is ignored.
    void addPage(QWidget *page);

    bool isCollapsed() const;
    void setCollapsed(bool collapsed);

    /// Gives column 0 of the widget's grid layout that minimum width, so that the labels of several
    /// widgets line up. The width is that on an unscaled screen and grows as the labels do. Nothing
    /// happens to a widget without a grid.
    static void fixLayout(QWidget *widget, int width);
    /// fixLayout for the pages of all collapsible frames below the widget, at any depth. With
    /// layouts, appends the grids that were touched.
    static void fixLayouts(QWidget *widget, int width, std::vector<QGridLayout *> *layouts);

signals:
    void collapsedChanged(bool collapsed);

protected:
    void showEvent(QShowEvent *event) override;

private:
    QTNCaptionBar *m_captionBar;
    QWidget *m_content;
};
