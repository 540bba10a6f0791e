#include "logbook/tnTextFormater.h"

QString tnTextFormater::format(const tnLogTable &table) const
{
    // Piece by piece: each copy of the whole text would take as long as all else, as the system
    // has to find the memory for it.
    QString text;
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
