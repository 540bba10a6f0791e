#include "logbook/tnLogFormater.h"

tnLogFormater::~tnLogFormater() = default;

QString tnLogFormater::textWithRoom(const tnLogTable &table, std::size_t aroundEntry)
{
    std::size_t size = 0;
    for (const auto &row : table)
        size += aroundEntry + row.second.first.size() + row.second.second.size();
    QString text;
    text.reserve(static_cast<int>(size));
    return text;
}
