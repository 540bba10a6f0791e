#include "logbook/tnTextFormater.h"

QString tnTextFormater::format(const tnLogTable &table) const
{
    if (table.empty())
        return {};
    QString text = textWithRoom(table, 20);
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
        text += QString::fromStdString(block);
    }
    return text;
}
