#pragma once

#include <QtWidgets/QAbstractButton>

/// The bar on top of a QTNCollapsibleFrame: an arrow and the caption. It asks for folding and shows
/// the state, but decides nothing.
class QTNCaptionBar : public QAbstractButton {
    Q_OBJECT

public:
    explicit QTNCaptionBar(QWidget *parent);

    /// Plain text; an ampersand is one.
    QString caption() const { return m_caption; }
    void setCaption(const QString &caption);

    bool isCollapsed() const { return m_collapsed; }
    void setCollapsed(bool collapsed);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void collapseRequested(bool collapse);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    int padding() const;
    int arrowSize() const;

    QString m_caption;
    bool m_collapsed = false;
};
