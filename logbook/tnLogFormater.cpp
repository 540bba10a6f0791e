#include "logbook/tnLogFormater.h"

#include <QtCore/QTextStream>

tnLogFormater::~tnLogFormater() = default;

QString tnLogFormater::format(const tnLogbook::Table &table) const
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    write(table, stream);
    stream.flush();
    return text;
}
