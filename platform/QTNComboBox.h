#pragma once

#include "platform/tnPlatformExport.h"

#include <QtWidgets/QComboBox>

/// A combo box for scrolling panels: the wheel changes its value only while it has the focus, and
/// scrolls the panel otherwise.
class TNPLATFORM_EXPORT QTNComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit QTNComboBox(QWidget *parent = nullptr);

protected:
    void wheelEvent(QWheelEvent *event) override;
};
