#pragma once

#include "platform/tnPlatformExport.h"

#include <QtWidgets/QDoubleSpinBox>

/// A spin box for scrolling panels, which leaves the wheel to the panel while it has no focus. It
/// keeps all its decimals, but shows no zeros at their end. Point and comma both begin the
/// decimals, whatever the locale: taken for a separator of thousands, they would make 5 of 0.5.
class TNPLATFORM_EXPORT QTNDoubleSpinBox : public QDoubleSpinBox {
    Q_OBJECT

public:
    explicit QTNDoubleSpinBox(QWidget *parent = nullptr);

    QString textFromValue(double value) const override;
    QValidator::State validate(QString &text, int &position) const override;

protected:
    void wheelEvent(QWheelEvent *event) override;
};
