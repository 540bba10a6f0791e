#include "platform/QTNDoubleSpinBox.h"

#include <QtGui/QWheelEvent>

QTNDoubleSpinBox::QTNDoubleSpinBox(QWidget *parent)
    : QDoubleSpinBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
}

QString QTNDoubleSpinBox::textFromValue(double value) const
{
    QString text = QDoubleSpinBox::textFromValue(value);
    if (text.contains(locale().decimalPoint())) {
        while (text.endsWith(locale().zeroDigit()))
            text.chop(1);
        if (text.endsWith(locale().decimalPoint()))
            text.chop(1);
    }
    return text;
}

QValidator::State QTNDoubleSpinBox::validate(QString &text, int &position) const
{
    for (const char separator : {'.', ','})
        text.replace(QLatin1Char(separator), locale().decimalPoint());
    return QDoubleSpinBox::validate(text, position);
}

void QTNDoubleSpinBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QDoubleSpinBox::wheelEvent(event);
    else
        event->ignore();
}
