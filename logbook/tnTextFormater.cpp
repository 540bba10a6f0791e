#include "logbook/tnTextFormater.h"

QString tnTextFormater::format(const tnLogTable &table) const
{
    std::string text;
    for (auto entry = table.begin(); entry != table.end();) {
        const std::string &key = entry->first;
        if (!key.empty())
            text.append("file: ").append(key) += '\n';
        do {
            const auto &[time, message] = entry->second;
            if (!time.empty())
                text.append(time).append(": ");
            text.append(message) += '\n';
            ++entry;
        } while (entry != table.end() && entry->first == key);
        text += '\n';
    }
    return text.empty() ? QString() : QString::fromStdString(text);
}
