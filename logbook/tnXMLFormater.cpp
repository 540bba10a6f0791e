#include "logbook/tnXMLFormater.h"

#include <QtCore/QStringBuilder>

namespace {

QString trimmed(const std::string &text)
{
    return QString::fromStdString(text).trimmed();
}

} // namespace

QString tnXMLFormater::format(const tnLogbook::Table &table) const
{
    if (table.empty())
        return {};
    QString text = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                  "<LOGBOOK>\n");
    for (auto group = table.begin(); group != table.end();) {
        const std::string &key = group->first;
        const auto end = table.upper_bound(key);
        text += QLatin1String("\t<CHAPTER>\n");
        if (!key.empty())
            text += QLatin1String("\t\t<FILE>\n") + QString::fromStdString(key)
                + QLatin1String("\t\t</FILE>\n");
        for (; group != end; ++group) {
            const auto &[time, message] = group->second;
            if (message.empty())
                continue;
            text += QLatin1String("\t\t<ENTRY>\n");
            if (!time.empty())
                text += QLatin1String("\t\t\t<TIME>\n") % trimmed(time)
                    % QLatin1String("\t\t\t</TIME>\n");
            text += QLatin1String("\t\t\t<MESSAGE>\n") % trimmed(message)
                % QLatin1String("\t\t\t</MESSAGE>\n\t\t</ENTRY>\n");
        }
        text += QLatin1String("\t</CHAPTER>\n");
    }
    return text + QLatin1String("</LOGBOOK>\n\n");
}
