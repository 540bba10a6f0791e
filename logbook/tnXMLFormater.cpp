#include "logbook/tnXMLFormater.h"

namespace {

bool isPlain(char character)
{
    return character > ' ' && character < '\x7f';
}

/// As QString::trimmed, whose blanks are those of Unicode.
void appendTrimmed(std::string &text, const std::string &value)
{
    if (!value.empty() && isPlain(value.front()) && isPlain(value.back()))
        text.append(value);
    else
        text.append(QString::fromStdString(value).trimmed().toStdString());
}

void appendEntry(std::string &text, const std::pair<std::string, std::string> &entry)
{
    const auto &[time, message] = entry;
    if (message.empty())
        return;
    text.append("\t\t<ENTRY>\n");
    if (!time.empty()) {
        text.append("\t\t\t<TIME>\n");
        appendTrimmed(text, time);
        text.append("\t\t\t</TIME>\n");
    }
    text.append("\t\t\t<MESSAGE>\n");
    appendTrimmed(text, message);
    text.append("\t\t\t</MESSAGE>\n"
                "\t\t</ENTRY>\n");
}

} // namespace

QString tnXMLFormater::format(const tnLogTable &table) const
{
    if (table.empty())
        return {};
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<LOGBOOK>\n";
    for (auto entry = table.begin(); entry != table.end();) {
        const std::string &key = entry->first;
        text.append("\t<CHAPTER>\n");
        if (!key.empty())
            text.append("\t\t<FILE>\n").append(key).append("\t\t</FILE>\n");
        do {
            appendEntry(text, entry->second);
            ++entry;
        } while (entry != table.end() && entry->first == key);
        text.append("\t</CHAPTER>\n");
    }
    text.append("</LOGBOOK>\n\n");
    return QString::fromStdString(text);
}
