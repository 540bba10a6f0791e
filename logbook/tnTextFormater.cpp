#include "logbook/tnTextFormater.h"

#include <QtCore/QTextStream>

void tnTextFormater::write(const tnLogbook::Table &table, QTextStream &stream) const
{
    std::string block;
    for (auto entry = table.begin(); entry != table.end();) {
        const std::string &key = entry->first;
        block.clear();
        if (!key.empty())
            block.append("file: ").append(key) += '\n';
        do {
            const auto &[time, message] = entry->second;
            if (!time.empty())
                block.append(time).append(": ");
            block.append(message) += '\n';
            ++entry;
        } while (entry != table.end() && entry->first == key);
        block += '\n';
        stream << QString::fromStdString(block);
    }
}
