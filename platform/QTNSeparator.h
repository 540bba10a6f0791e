#pragma once

#include <QtWidgets/QWidget>

/// A faint horizontal line between options. Its colour comes from the text's, since a sunken frame
/// glares where a dark palette leaves the roles for bevels as they were.
class QTNSeparator : public QWidget {
    Q_OBJECT

public:
    explicit QTNSeparator(QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
