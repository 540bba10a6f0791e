#pragma once

#include "platform/tnPlatformExport.h"

#include <QtWidgets/QPushButton>

/// A push button that, as long as it has no text, is a small flat icon: its face comes up only
/// under the mouse, while pressed and while checked.
class TNPLATFORM_EXPORT QTNPushButton : public QPushButton {
    Q_OBJECT

public:
    explicit QTNPushButton(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
