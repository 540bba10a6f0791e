#include "logbook/tnTextFormater.h"

QString tnTextFormater::format(const tnLogbook::Table &table) const
{
    std::string text;
    for (auto group = table.begin(); group != table.end();) {
        const std::string &key = group->first;
        const auto end = table.upper_bound(key);
        if (!key.empty())
            text += "file: " + key + '\n';
        for (; group != end; ++group) {
            const auto &[time, message] = group->second;
            if (!time.empty())
                text += time + ": ";
            text += message + '\n';
        }
        text += '\n';
    }
    return table.empty() ? QString() : QString::fromStdString(text);
}
